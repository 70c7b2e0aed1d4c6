// Modes 9, 11 and 12: training, its samples and their order.
#include "driver/modes.h"
#include "platform/console.h"

namespace norv {
namespace {

// What mode 9 is asked for.
struct TrainingRequest {
  int32_t iters;
  float nu0, nuf;
  int32_t costSelection, alternate;
  float clip, momentum;
  int32_t threads, sound;
};

TrainingRequest DecodeTrainingRequest(const Arguments& a) {
  return {a.Integer(2), a.Float(3), a.Float(4),   a.Integer(5), a.Integer(6),
          a.Float(7),   a.Float(8), a.Integer(9), a.Integer(10)};
}

void SayTrainingRequest(const TrainingRequest& r) {
  Say("\niters = %d, nu0 = %f, nuf = %f, CostSelection = %d, Alternate = %d,\n"
      "Clip = %f, Momentum = %f, Number of Threads = %d\nSoundNotification = %d\n",
      r.iters, Printable(r.nu0), Printable(r.nuf), r.costSelection, r.alternate, Printable(r.clip),
      Printable(r.momentum), r.threads, r.sound);
}

}  // namespace

Ending RunTraining(const Request& request) {
  SayTrainingRequest(DecodeTrainingRequest(request.arguments));
  return Ending::unavailable;
}

Ending AddTrainingPairs(const Request& request) {
  const Arguments& arguments = request.arguments;
  // The index may be any number, the largest included: the next one is formed without overflow.
  Say("\n%d of %d", static_cast<int32_t>(static_cast<uint32_t>(arguments.Integer(2)) + 1), arguments.Integer(3));
  Say("\nShrinkOrder = %d", arguments.Integer(6));
  return Ending::unavailable;
}

Ending ShuffleTrainingSet(const Request&) {
  Say("\nShuffling Data");
  return Ending::unavailable;
}

}  // namespace norv
