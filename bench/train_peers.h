// What training is compared with, compiled for the very machine.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

namespace norv {

class PeerTrainer {
 public:
  virtual ~PeerTrainer() = default;
  virtual void Learn(const float* input, const float* target, float rate) = 0;
};

// Dense layers as Eigen matrices, quadratic cost; fused multiply-add and single-precision activations as Eigen and the
// compiler like them. kind: 1 logistic, 14 leaky ramp. Null without Eigen.
std::unique_ptr<PeerTrainer> MakeEigenTrainer(const std::vector<int>& sizes, int kind);

// So many single-precision multiplications and additions, half of each, never fused, as fast as the machine can.
void MultiplyAndAddApart(int64_t operations);

}  // namespace norv
