// A network laid out for training, sample by sample: each layer's weights in one block of padded rows.
#pragma once

#include <cstdint>
#include <vector>

#include "net/neural_net.h"
#include "platform/memory.h"
#include "platform/team.h"
#include "simd/train/kernels.h"
#include "train/trainer.h"

namespace norv {

// Built from the record, which it updates only when it finishes; results are the very bits of ForwardPass,
// BackPropagate and UpdateWeights with one thread: the order of additions is part of the contract with the graphical
// program. Weights of the first layer lie input by input: a vector holds one input's weights of neighbouring units, and
// no sum runs across a vector. Those of later layers lie unit by unit, in the order of the backward sums. Memory is
// what costs, so each weight is touched once a sample: a first layer's step waits for the sweep that evaluates the next
// sample, a later layer's is taken while the backward sums pass through its weights. The slope df(z) is kept in double
// from the evaluation.
class RowNet : public Trainer {
 public:
  // Units without activation are a broken promise. More than one thread is used only where every member of the team has
  // a processor and a layer is so large that a team pays: no thread count makes training slower.
  RowNet(NeuralNet& net, int32_t costSelection, float momentum, int32_t threads, int processors = ProcessorCount());

  void SetRate(float nu, float bound) override;
  void Learn(const float* input, const float* target) override;
  // Adds the pending step to the first layer's weights.
  void Settle() override;
  void ForgetVelocities() override;
  void Finish() override;

 private:
  // Neighbouring units of one activation kind.
  struct KindRun {
    int32_t begin, end, kind;
  };

  struct Layer {
    int32_t inputs = 0, units = 0, stride = 0;
    bool columns = false;
    AlignedArray<float> W, V, bias, vb, z, a, delta, step;
    AlignedArray<double> slope;
    std::vector<KindRun> kinds;
    // What the kernels are told, of which only the sample changes and, with SetRate(), the rate.
    TrainSweep sweep{};
    TrainDeltas deltas{};

    int64_t Place(int32_t unit, int32_t input) const {
      return columns ? int64_t{input} * stride + unit : int64_t{unit} * stride + input;
    }
    int64_t Weights() const { return int64_t{inputs} * units; }
  };

  Layer MakeLayer(const NetLayer& source, int32_t inputs, bool columns) const;
  // input: the layer's, null for the first one, whose input is the sample. above: null for the last one.
  void Connect(Layer& layer, const float* input, const Layer* above) const;
  // The first layer's pending update, together with the evaluation of `input` unless that is null.
  void Sweep(const float* input);
  void Evaluate(const Layer& layer);
  void Activate(Layer& layer);
  void OutputDeltas(const float* target);
  void HiddenDeltas(Layer& layer, const Layer& above);
  void FinishStep(Layer& layer, int32_t unit);
  void StoreLayer(const Layer& layer, const float* input, NetLayer& target) const;

  NeuralNet& net_;
  int32_t costSelection_;
  float momentum_;
  int32_t threads_;
  TrainUpdate update_;
  float nu_ = 0, bound_ = 0;
  const TrainKernels& kernels_;
  std::vector<Layer> layers_;
  std::vector<float> lastInput_;         // a copy: the sample itself may go
  const float* pendingInput_ = nullptr;  // of the sample whose step the first weights still lack
  bool learned_ = false;
};

}  // namespace norv
