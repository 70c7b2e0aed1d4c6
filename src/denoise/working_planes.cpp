#include "denoise/working_planes.h"

#include <algorithm>
#include <cmath>

#include "denoise/noise_level.h"
#include "platform/assert.h"
#include "platform/console.h"

namespace norv {
namespace {

constexpr float kLargest = 1e6f;  // what is farther from 0 is no pixel value

bool IsPixel(float value) { return std::abs(value) <= kLargest; }

float MeanOfNeighbours(const matrix& plane, int32_t row, int32_t column) {
  float sum = 0;
  int32_t count = 0;
  for (int32_t r = std::max(row - 1, 0); r <= std::min(row + 1, plane.n - 1); ++r) {
    for (int32_t c = std::max(column - 1, 0); c <= std::min(column + 1, plane.m - 1); ++c) {
      if (!IsPixel(plane.z[r][c])) continue;
      sum += plane.z[r][c];
      ++count;
    }
  }
  return count > 0 ? sum / static_cast<float>(count) : 0.0f;
}

// Returns how many values it replaced.
int64_t Repair(matrix& plane) {
  int64_t count = 0;
  for (int32_t r = 0; r < plane.n; ++r) {
    for (int32_t c = 0; c < plane.m; ++c) {
      if (IsPixel(plane.z[r][c])) continue;
      plane.z[r][c] = MeanOfNeighbours(plane, r, c);
      ++count;
    }
  }
  return count;
}

// How much the conversion from the display enlarges noise that all colour values have alike, for one plane of a linear
// model.
double NoiseFactor(PixelFunction toModel, int plane) {
  const float black[4] = {};
  float origin[4], image[4];
  toModel(origin, black);
  double square = 0;
  for (int k = 0; k < 3; ++k) {
    float one[4] = {};
    one[k] = 1;
    toModel(image, one);
    square += (image[plane] - origin[plane]) * (image[plane] - origin[plane]);
  }
  return std::sqrt(square);
}

// The chrominance of a grey picture, for one.
bool IsFlat(const matrix& plane) {
  return std::all_of(plane.x, plane.x + plane.mn, [&](float value) { return value == plane.x[0]; });
}

}  // namespace

WorkingPlanes::WorkingPlanes(FloatImage& image, bool luminance, int threads)
    : image_(image), format_(image.format), threads_(threads) {
  NORV_ASSERT(FindModel(format_) != nullptr);
  if (ModelOf(format_) == kWithFourth) fourth_ = image.plane[3];
  StandingTeam team(threads_);
  image_.ConvertTo(luminance ? kLuminance : kDisplay, team);
  int64_t repaired = 0;
  for (int k = 0; k < 3; ++k) repaired += Repair(image_.plane[k]);
  if (repaired > 0) Warn("%lld values that are no pixel values are replaced", static_cast<long long>(repaired));
}

std::vector<NoisyPlane> WorkingPlanes::Planes(double sigma) {
  std::vector<NoisyPlane> planes;
  for (int k = 0; k < 3; ++k) {
    matrix& plane = image_.plane[k];
    const double own = sigma > 0 ? sigma * NoiseFactor(image_.toModel, k) : EstimateNoise(plane, threads_);
    planes.push_back({&plane, IsFlat(plane) ? 0.0 : own});
  }
  return planes;
}

void WorkingPlanes::Finish() {
  StandingTeam team(threads_);
  image_.ConvertTo(format_, team);
  if (ModelOf(format_) == kWithFourth) image_.plane[3] = fourth_;
}

}  // namespace norv
