// A network in the form that enlargement evaluates: read-only, shared by all threads, whole runs of neighbouring pixels
// at a time.
//
// Every output has the very bits of the record's own evaluation (ForwardPass), at every vector level.
#pragma once

#include <cstdint>
#include <vector>

#include "net/neural_net.h"
#include "platform/memory.h"
#include "simd/evaluate/kernels.h"

namespace norv {

class PackedNet {
 public:
  // A copy of all that evaluation needs; the record is not referred to afterwards. Every unit must have an activation
  // (WhyNotEvaluable() gives null) and there must be a layer: asserted.
  explicit PackedNet(const NeuralNet& net);

  int32_t Inputs() const { return inputs_; }    // N0
  int32_t Outputs() const { return outputs_; }  // LastNi

  // What one thread works in. Rows of kPixelsPerBlock floats (simd/evaluate/kernels.h), one below the other, aligned to
  // kAlignment: input i of pixel p of the block lies in Input(i)[p].
  class Scratch {
   public:
    explicit Scratch(const PackedNet& net);
    float* Input(int64_t i) { return inputRows_.get() + i * kPixelsPerBlock; }

   private:
    friend class PackedNet;
    AlignedArray<float> inputRows_, layerRows_[2];
  };

  // Evaluates the first `pixels` (1 .. kPixelsPerBlock) pixels of the input rows, which stay as they are. Output unit u
  // of pixel p lies in result[u * kPixelsPerBlock + p], until the next call with this scratch. Pixels of the rows
  // beyond those asked for may hold anything.
  const float* EvaluateBlock(Scratch& scratch, int32_t pixels) const;

 private:
  // Neighbouring units of one kind.
  struct Run {
    int32_t kind;
    int32_t begin, units;
  };
  struct Layer {
    int32_t inputs, units;
    int64_t weights;  // where its packed weights start
    std::vector<Run> runs;
  };

  void PackLayer(const NetLayer& layer, int32_t layerInputs);
  static void Activate(const Run& run, float* rows, int32_t pixels);

  int32_t inputs_, outputs_;
  int64_t widestRows_ = 0;
  std::vector<Layer> layers_;
  std::vector<float> weights_;  // of all layers, tile by tile in the order in which Kernels::evaluateLayer reads them
};

}  // namespace norv
