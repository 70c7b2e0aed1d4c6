#include "denoise/low_rank.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "linear/symmetric.h"

namespace norv {
namespace {

constexpr int32_t kTile = 16;  // the side of the square matrices is padded to whole tiles

typedef float Eight __attribute__((vector_size(32)));
typedef float EightAnywhere __attribute__((vector_size(32), aligned(4), may_alias));

Eight Load(const float* p) { return *reinterpret_cast<const EightAnywhere*>(p); }
void Store(float* p, Eight v) { *reinterpret_cast<EightAnywhere*>(p) = v; }

// tile(4 x 16) of sum over k of left[k] right[k]^T, both 'stride' apart from k to k + 1; in order of k.
void MultiplyTile(const float* left, int64_t leftStep, int64_t leftStride, const float* right, int64_t rightStride,
                  int32_t runs, float* tile, int64_t tileStride) {
  Eight sum[4][2] = {};
  for (int32_t k = 0; k < runs; ++k) {
    const Eight low = Load(right + k * rightStride), high = Load(right + k * rightStride + 8);
    for (int i = 0; i < 4; ++i) {
      const float value = left[k * leftStride + i * leftStep];
      sum[i][0] += value * low;
      sum[i][1] += value * high;
    }
  }
  for (int i = 0; i < 4; ++i) {
    Store(tile + i * tileStride, sum[i][0]);
    Store(tile + i * tileStride + 8, sum[i][1]);
  }
}

}  // namespace

void LowRank::TakeMean(float* vectors) {
  mean_.assign(static_cast<size_t>(length_), 0.0f);
  for (int32_t k = 0; k < count_; ++k)
    for (int32_t i = 0; i < length_; ++i) mean_[i] += vectors[int64_t{k} * length_ + i];
  for (float& value : mean_) value /= static_cast<float>(count_);
  // The smaller side makes the smaller Gram matrix, with the same singular values.
  const bool transposed = count_ < length_;
  side_ = transposed ? count_ : length_;
  runs_ = transposed ? length_ : count_;
  stride_ = (side_ + kTile - 1) / kTile * kTile;
  runsOfValues_.assign(static_cast<size_t>(stride_ * ((runs_ + 3) / 4 * 4)), 0.0f);
  for (int32_t k = 0; k < count_; ++k)
    for (int32_t i = 0; i < length_; ++i)
      runsOfValues_[transposed ? i * stride_ + k : k * stride_ + i] = vectors[int64_t{k} * length_ + i] - mean_[i];
}

void LowRank::FormGram() {
  gram_.resize(static_cast<size_t>(stride_ * stride_));
  const float* runs = runsOfValues_.data();
  for (int64_t j = 0; j < stride_; j += kTile)
    for (int64_t i = 0; i < j + kTile; i += 4)
      MultiplyTile(runs + i, 1, stride_, runs + j, stride_, runs_, gram_.data() + i * stride_ + j, stride_);
  square_.dim(side_, side_);
  for (int64_t i = 0; i < side_; ++i)
    for (int64_t j = i; j < side_; ++j) square_.z[i][j] = square_.z[j][i] = gram_[i * stride_ + j];
}

int32_t LowRank::ShrinkSpectrum(double threshold) {
  values_.resize(static_cast<size_t>(side_));
  DecomposeSymmetric(side_, square_.x, values_.data());
  // A singular value s becomes the larger root of x^2 - s x + threshold / 4, or nothing.
  std::fill(gram_.begin(), gram_.end(), 0.0f);
  int32_t rank = 0;
  for (int32_t k = 0; k < side_; ++k) {
    if (!(values_[k] > threshold)) continue;
    ++rank;
    const float factor = static_cast<float>(0.5 * (1 + std::sqrt(1 - threshold / values_[k])));
    const double* u = square_.z[k];
    for (int64_t i = 0; i < side_; ++i) {
      const float scaled = factor * static_cast<float>(u[i]);
      float* row = gram_.data() + i * stride_;
      for (int64_t j = 0; j < side_; ++j) row[j] += scaled * static_cast<float>(u[j]);
    }
  }
  return rank;
}

void LowRank::Project() {
  projected_.resize(runsOfValues_.size());
  for (int64_t j = 0; j < stride_; j += kTile)
    for (int64_t k = 0; k < runs_; k += 4)
      MultiplyTile(runsOfValues_.data() + k * stride_, stride_, 1, gram_.data() + j, stride_, side_,
                   projected_.data() + k * stride_ + j, stride_);
}

int32_t LowRank::Approximate(float* vectors, int32_t length, int32_t count, float sigma, float strength) {
  length_ = length;
  count_ = count;
  TakeMean(vectors);
  FormGram();
  const int32_t rank = ShrinkSpectrum(4.8 * strength * std::sqrt(static_cast<double>(count)) * sigma * sigma);
  if (rank > 0) Project();
  const bool transposed = count_ < length_;
  for (int32_t k = 0; k < count_; ++k)
    for (int32_t i = 0; i < length_; ++i) {
      const float part = rank == 0 ? 0.0f : projected_[transposed ? i * stride_ + k : k * stride_ + i];
      vectors[int64_t{k} * length_ + i] = mean_[i] + part;
    }
  return rank;
}

}  // namespace norv
