#include "denoise/components.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "linear/dmatrix.h"
#include "platform/team.h"
#include "simd/columns/kernels.h"

namespace norv {
namespace {

constexpr int64_t kMostSamples = 65536;  // patches that are enough to learn from
constexpr int64_t kBlock = 512;          // patches at a time

// Patches on a grid over the plane, wide enough that there are not too many.
struct Samples {
  const matrix& plane;
  int32_t side;
  int64_t step = 1, columns, count;

  Samples(const matrix& source, int32_t patchSide) : plane(source), side(patchSide) {
    const int64_t w = plane.m - side + 1, h = plane.n - side + 1;
    while ((w + step - 1) / step * ((h + step - 1) / step) > kMostSamples) ++step;
    columns = (w + step - 1) / step;
    count = columns * ((h + step - 1) / step);
  }
  void Read(int64_t k, double* values) const {
    const int64_t r = k / columns * step, c = k % columns * step;
    for (int32_t i = 0; i < side; ++i) std::copy_n(plane.z[r + i] + c, side, values + int64_t{i} * side);
  }
};

std::vector<double> MeanOf(const Samples& samples, int32_t length) {
  std::vector<double> mean(length), patch(length);
  for (int64_t k = 0; k < samples.count; ++k) {
    samples.Read(k, patch.data());
    for (int32_t i = 0; i < length; ++i) mean[i] += patch[i];
  }
  for (double& value : mean) value /= static_cast<double>(samples.count);
  return mean;
}

// Every element is a sum over the patches in their order, whichever thread forms it. Each thread reads all patches,
// which is little beside what it makes of them.
dmatrix CovarianceOf(const Samples& samples, const std::vector<double>& mean, int threads) {
  const int32_t length = static_cast<int32_t>(mean.size());
  dmatrix sum(length, length);
  sum.fill(0);
  ParallelRanges(threads, length, [&](int64_t begin, int64_t end) {
    std::vector<double> block(kBlock * length);
    for (int64_t first = 0; first < samples.count; first += kBlock) {
      const int64_t count = std::min(kBlock, samples.count - first);
      for (int64_t k = 0; k < count; ++k) {
        samples.Read(first + k, block.data() + k * length);
        for (int32_t i = 0; i < length; ++i) block[k * length + i] -= mean[i];
      }
      for (int64_t j = begin; j < end; ++j)
        ActiveColumnKernels().addProducts(block.data(), count, length, static_cast<int32_t>(j), sum.z[j]);
    }
  });
  for (int32_t i = 0; i < sum.mn; ++i) sum.x[i] /= static_cast<double>(samples.count);
  return sum;
}

double SignOf(const double* vector, int32_t length) {
  const double* largest =
      std::max_element(vector, vector + length, [](double a, double b) { return std::abs(a) < std::abs(b); });
  return *largest < 0 ? -1 : 1;
}

}  // namespace

void LearnComponents(const matrix& plane, int32_t side, int threads, matrix& components) {
  const int32_t length = side * side;
  const Samples samples(plane, side);
  const std::vector<double> mean = MeanOf(samples, length);
  dmatrix U, W, V;
  CovarianceOf(samples, mean, threads).svd(U, W, V);
  components.dim(length, length + 1);
  for (int32_t i = 0; i < length; ++i) components.z[0][i] = static_cast<float>(mean[i]);
  for (int32_t k = 0; k < length; ++k) {
    const double sign = SignOf(U.z[k], length);
    for (int32_t i = 0; i < length; ++i) components.z[k + 1][i] = static_cast<float>(sign * U.z[k][i]);
  }
}

bool AreComponents(const matrix& components, int32_t side) {
  const int32_t length = side * side;
  if (components.m != length || components.n != length + 1) return false;
  for (int32_t k = 0; k <= length; ++k) {
    double square = 0;
    for (int32_t i = 0; i < length; ++i) square += static_cast<double>(components.z[k][i]) * components.z[k][i];
    if (k == 0 ? !std::isfinite(square) : !(std::abs(square - 1) < 1e-3)) return false;
  }
  return true;
}

}  // namespace norv
