#include "platform/threads/stages.h"

#include <atomic>
#include <utility>

#include "platform/clock.h"

namespace norv {
namespace {

std::atomic<double> sums[3];
thread_local Stage current = Stage::working;
thread_local double since = 0;

// Returns the stage before.
Stage Enter(Stage stage) {
  const double now = ThreadSeconds();
  sums[static_cast<int>(current)] += now - std::exchange(since, now);
  return std::exchange(current, stage);
}

}  // namespace

InStage::InStage(Stage stage) : before_(Enter(stage)) {}
InStage::~InStage() { Enter(before_); }

StageSeconds SecondsOfStages() {
  const double decoding = sums[static_cast<int>(Stage::decoding)], encoding = sums[static_cast<int>(Stage::encoding)];
  return {decoding, encoding, ProcessorSeconds() - decoding - encoding};
}

}  // namespace norv
