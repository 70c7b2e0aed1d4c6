// The restoration of a small plane a second way: every operator as a dense matrix of doubles, formed row by row
// from its plain definition, so that adjoints are transposes and nothing is shared with the fast road.
#pragma once

#include <algorithm>
#include <cmath>
#include <vector>

#include "linear/matrix2.h"
#include "restore/parameters.h"
#include "support/random_plane.h"

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

// The weight of a difference g; only the shaped rule looks at the shape.
using PlainRule = double (*)(double g, double lambda, double delta, double shape);
double PlainHuber(double g, double lambda, double delta, double shape);
double PlainLorentzian(double g, double lambda, double delta, double shape);
double PlainShaped(double g, double lambda, double delta, double shape);

// The plane under the kernel taps x taps at every f-th pixel.
PlainPlane PlainReduce(const PlainPlane& x, int f, const Vector& taps);

struct PlainField {
  PlainPlane u1, u2;
};
PlainField PlainOrientation(const PlainPlane& x, double scale);

// What one call of the whole iteration should give; mask: the dilated one, by pixels, for type 3.
PlainPlane PlainRestore(PlainPlane x, const PlainPlane& y, const Vector& taps, const RestoreParameters& p,
                        const std::vector<bool>& mask, const PlainPlane& reference);

}  // namespace norv::test
