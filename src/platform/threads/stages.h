// Where a run's processor time goes.
#pragma once

#include <cstdint>

namespace norv {

enum class Stage { working, decoding, encoding };

// As long as it lives its thread's time counts for that stage; they nest. Elsewhere threads are working.
class InStage {
 public:
  explicit InStage(Stage stage);
  ~InStage();
  InStage(const InStage&) = delete;
  InStage& operator=(const InStage&) = delete;

 private:
  Stage before_;
};

// Processor seconds of the run that went to decoding and to encoding, as far as those have ended, and to all else.
struct StageSeconds {
  double decoding = 0, encoding = 0, working = 0;
};
StageSeconds SecondsOfStages();

}  // namespace norv
