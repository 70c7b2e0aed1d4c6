// One sample after another into a network: what both forms of a network under training can do.
#pragma once

#include <cstdint>
#include <memory>

#include "net/neural_net.h"

namespace norv {

class Trainer {
 public:
  virtual ~Trainer() = default;

  // The rate and the bound on delta (0: none) of the samples that follow.
  virtual void SetRate(float nu, float bound) = 0;
  // One sample: evaluation, errors, update. SampleCost of the network is set, Cost grows by it. The input must stay
  // where it is until the next call of any of these.
  virtual void Learn(const float* input, const float* target) = 0;
  // What is still pending of the last sample is done; its input may go then.
  virtual void Settle() = 0;
  virtual void ForgetVelocities() = 0;
  // Everything that was computed stands in the network's record when this returns.
  virtual void Finish() = 0;
};

// The plain form: ForwardPass, BackPropagate and UpdateWeights on the record itself.
std::unique_ptr<Trainer> MakeRecordTrainer(NeuralNet& net, int32_t costSelection, float momentum, int32_t threads);

}  // namespace norv
