// The restoration of a small plane a second way: every operator as a dense matrix of doubles, formed column by column
// from its plain definition, so that adjoints are transposes and nothing is shared with the fast road.
#pragma once

#include <algorithm>
#include <cmath>
#include <functional>
#include <vector>

#include "linear/matrix2.h"
#include "restore/parameters.h"

namespace norv::test {

using Vector = std::vector<double>;

struct PlainPlane {
  int w, h;
  Vector v;

  PlainPlane(int width, int height) : w(width), h(height), v(static_cast<size_t>(width * height)) {}
  explicit PlainPlane(const matrix& a) : PlainPlane(a.m, a.n) { std::copy(a.x, a.x + a.mn, v.begin()); }
  double& At(int r, int c) { return v[static_cast<size_t>(r * w + c)]; }
  double At(int r, int c) const { return v[static_cast<size_t>(r * w + c)]; }
};

inline int Mirror(int i, int n) {
  if (n == 1) return 0;
  while (i < 0 || i >= n) i = i < 0 ? -i : 2 * (n - 1) - i;
  return i;
}

// Lines of a plane through a function of one axis: rows first, then columns.
PlainPlane PlainReduce(const PlainPlane& x, int f, const Vector& taps);

struct PlainField {
  PlainPlane u1, u2;
};
PlainField PlainOrientation(const PlainPlane& x, double scale);

// What one call of the whole iteration should give; mask: the dilated one, by pixels, for type 3.
PlainPlane PlainRestore(PlainPlane x, const PlainPlane& y, const Vector& taps, const RestoreParameters& p,
                        const std::vector<bool>& mask, const PlainPlane& reference);

}  // namespace norv::test
