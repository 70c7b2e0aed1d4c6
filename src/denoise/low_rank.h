// Weighted nuclear norm minimisation of a group of similar patches.
#pragma once

#include <cstdint>
#include <vector>

#include "linear/dmatrix.h"

namespace norv {

// Replaces `count` vectors of `length` values by their approximation of low rank: X with the least
//   |Y - X|^2 + 2.4 sigma^2 sum_k w_k s_k(X),  w_k = strength * sqrt(count) / s_k(X) of the solution,
// in closed form on the singular values of Y (Gu, Zhang, Zuo and Feng, Weighted nuclear norm minimization with
// application to image denoising, CVPR 2014; 4 instead of 2.4 there). The mean vector is left out and put back. Keeps
// its scratch.
class LowRank {
 public:
  // vectors: count rows of `length` floats, overwritten; sigma: the noise's standard deviation in their unit. Returns
  // the rank of the approximation, the mean apart.
  int32_t Approximate(float* vectors, int32_t length, int32_t count, float sigma, float strength);

 private:
  void TakeMean(float* vectors);
  void FormGram();
  int32_t ShrinkSpectrum(double threshold);
  void Project();

  int32_t length_ = 0, count_ = 0;
  int32_t side_ = 0, inner_ = 0;  // the smaller and the larger of both: the Gram matrix is side x side
  int64_t stride_ = 0;            // side rounded up to whole vectors
  std::vector<float> mean_, centred_, gram_, kept_, shrunk_, projected_;
  dmatrix square_;  // the Gram matrix, then its eigenvectors
  std::vector<double> values_;
};

}  // namespace norv
