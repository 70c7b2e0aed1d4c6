#include "restore/representation.h"

#include <algorithm>
#include <iterator>
#include <vector>

#include "linear/dmatrix.h"
#include "restore/blocks/row_runs.h"

namespace norv {
namespace {

constexpr int32_t kAll = 4;

// The code is the place.
constexpr Representation kRepresentations[] = {
    {0, kAll, false},              // 0
    {kLuminance, 1, false},        // 1
    {kIntensity, 1, false},        // 2
    {kLuminanceAgain, 1, false},   // 3
    {kDisplayAgain, kAll, false},  // 4
    {kDisplay, 1, true},           // 5
};
constexpr Representation kUnknown = {0, 1, false};

// Sums are formed of so many pixels at a time and added in order, so that nothing depends on who forms them.
constexpr int64_t kMomentPixels = 1 << 16;

using Moments = std::array<std::array<double, 3>, 3>;

// Second moments of the three planes, not centred.
dmatrix SecondMoments(const FloatImage& image, StandingTeam& team) {
  std::vector<Moments> blocks(static_cast<size_t>((image.count + kMomentPixels - 1) / kMomentPixels));
  team.ForEach(std::ssize(blocks), [&](int64_t b) {
    const int64_t end = std::min<int64_t>((b + 1) * kMomentPixels, image.count);
    for (size_t k = 0; k < 3; ++k)
      for (size_t j = 0; j < 3; ++j) {
        double sum = 0;
        for (int64_t i = b * kMomentPixels; i < end; ++i)
          sum += static_cast<double>(image.plane[j].x[i]) * static_cast<double>(image.plane[k].x[i]);
        blocks[static_cast<size_t>(b)][k][j] = sum;
      }
  });
  dmatrix moments(3, 3);
  for (int32_t k = 0; k < 3; ++k)
    for (int32_t j = 0; j < 3; ++j) {
      double sum = 0;
      for (const Moments& block : blocks) sum += block[static_cast<size_t>(k)][static_cast<size_t>(j)];
      moments.z[k][j] = sum / image.count;
    }
  return moments;
}

}  // namespace

const Representation& RepresentationOf(int32_t code) {
  return code >= 0 && code < std::ssize(kRepresentations) ? kRepresentations[code] : kUnknown;
}

ColourMatrix DecorrelatingMatrix(const FloatImage& image, StandingTeam& team) {
  dmatrix u, w, v;
  SecondMoments(image, team).svd(u, w, v);
  ColourMatrix rows;
  for (int32_t k = 0; k < 3; ++k)
    for (int32_t j = 0; j < 3; ++j) rows[k][j] = u.z[k][j];
  return rows;
}

ColourMatrix Transposed(const ColourMatrix& a) {
  ColourMatrix t;
  for (size_t k = 0; k < 3; ++k)
    for (size_t j = 0; j < 3; ++j) t[k][j] = a[j][k];
  return t;
}

void TransformColours(FloatImage& image, const ColourMatrix& rows, StandingTeam& team) {
  team.ForParts(image.plane[0].mn, kPixelsWorthACut, [&](int64_t begin, int64_t end) {
    for (int64_t i = begin; i < end; ++i) {
      std::array<double, 3> colour;
      for (size_t j = 0; j < 3; ++j) colour[j] = static_cast<double>(image.plane[j].x[i]);
      for (size_t k = 0; k < 3; ++k)
        image.plane[k].x[i] =
            static_cast<float>(rows[k][0] * colour[0] + rows[k][1] * colour[1] + rows[k][2] * colour[2]);
    }
  });
}

}  // namespace norv
