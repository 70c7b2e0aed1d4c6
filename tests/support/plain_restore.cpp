#include "support/plain_restore.h"

namespace norv::test {
namespace {

// A difference of pixels as a row of an operator: the coefficient of every pixel.
struct Tap {
  int r, c;
  double coefficient;
};
Vector RowOf(const PlainPlane& x, const std::vector<Tap>& taps) {
  PlainPlane row(x.w, x.h);
  for (const Tap& tap : taps) row.At(Mirror(tap.r, x.h), Mirror(tap.c, x.w)) += tap.coefficient;
  return row.v;
}

// The cell's two diagonals, a and b of them.
Vector CellRow(const PlainPlane& x, int r, int c, double a, double b) {
  return RowOf(x, {{r + 1, c + 1, a}, {r, c, -a}, {r + 1, c, b}, {r, c + 1, -b}});
}

Vector ReductionRow(const PlainPlane& x, int f, const Vector& taps, int r, int c) {
  const int length = static_cast<int>(taps.size()), o = (length - f) / 2;
  std::vector<Tap> all;
  for (int i = 0; i < length; ++i)
    for (int j = 0; j < length; ++j)
      all.push_back({f * r - o + i, f * c - o + j, taps[static_cast<size_t>(i)] * taps[static_cast<size_t>(j)]});
  return RowOf(x, all);
}

double Dot(const Vector& a, const Vector& b) {
  double sum = 0;
  for (size_t i = 0; i < a.size(); ++i) sum += a[i] * b[i];
  return sum;
}

template <typename Visit>
void ForPixels(int w, int h, const Visit& visit) {
  for (int r = 0; r < h; ++r)
    for (int c = 0; c < w; ++c) visit(r, c);
}

// Conjugate gradients on the normal equations of the rows a, whose first ones should give y and all others 0.
void Solve(PlainPlane& x, const PlainPlane& y, const std::vector<Vector>& a, int steps) {
  const auto transposed = [&](const Vector& r) {
    Vector g(x.v.size());
    for (size_t i = 0; i < a.size(); ++i)
      for (size_t k = 0; k < g.size(); ++k) g[k] += a[i][k] * r[i];
    return g;
  };
  Vector r, q(a.size());
  for (size_t i = 0; i < a.size(); ++i) r.push_back((i < y.v.size() ? y.v[i] : 0) - Dot(a[i], x.v));
  Vector g = transposed(r), p = g;
  for (int step = 0; step < steps; ++step) {
    for (size_t i = 0; i < a.size(); ++i) q[i] = Dot(a[i], p);
    const double rho = Dot(g, g), alpha = rho / Dot(q, q);
    if (!std::isfinite(alpha)) return;
    for (size_t k = 0; k < p.size(); ++k) x.v[k] += alpha * p[k];
    for (size_t i = 0; i < r.size(); ++i) r[i] -= alpha * q[i];
    g = transposed(r);
    const double beta = Dot(g, g) / rho;
    for (size_t k = 0; k < p.size(); ++k) p[k] = beta * p[k] + g[k];
  }
}

PlainPlane Smoothed(const PlainPlane& x, double scale) {
  const int radius = static_cast<int>(std::ceil(3 * scale));
  const auto weight = [&](int d) { return std::exp(-0.5 * d * d / (scale * scale)); };
  double sum = 0;
  for (int d = -radius; d <= radius; ++d) sum += weight(d);
  PlainPlane result(x.w, x.h);
  ForPixels(x.w, x.h, [&](int r, int c) {
    for (int i = -radius; i <= radius; ++i)
      for (int j = -radius; j <= radius; ++j)
        result.At(r, c) += weight(i) * weight(j) / (sum * sum) * x.At(Mirror(r + i, x.h), Mirror(c + j, x.w));
  });
  return result;
}

}  // namespace

double PlainHuber(double g, double lambda, double delta, double) {
  g = std::abs(g);
  return g <= delta ? lambda : lambda * std::sqrt((2 * g - delta) * delta) / g;
}
double PlainLorentzian(double g, double lambda, double delta, double) {
  const double sigma = delta * std::sqrt(2.0), g2 = g * g;
  return g2 > 1e-10 ? lambda * std::sqrt(std::log(1 + g2 / (sigma * sigma)) / g2) : lambda / sigma;
}
double PlainShaped(double g, double lambda, double delta, double shape) {
  const double t = std::abs(g) / delta;
  const double power = shape > 0 ? std::expm1(shape * std::log(t)) / shape : std::log(t);
  return t <= 1 ? lambda : lambda * std::sqrt(1 + 2 * power) / t;
}

PlainPlane PlainReduce(const PlainPlane& x, int f, const Vector& taps) {
  PlainPlane y(x.w / f, x.h / f);
  ForPixels(y.w, y.h, [&](int r, int c) { y.At(r, c) = Dot(ReductionRow(x, f, taps, r, c), x.v); });
  return y;
}

PlainField PlainOrientation(const PlainPlane& x, double scale) {
  PlainPlane j11(x.w, x.h), j12 = j11, j22 = j11;
  PlainField field{j11, j11};
  ForPixels(x.w, x.h, [&](int r, int c) {
    const double d1 = Dot(CellRow(x, r, c, 1, 0), x.v), d2 = Dot(CellRow(x, r, c, 0, 1), x.v);
    j11.At(r, c) = d1 * d1, j12.At(r, c) = d1 * d2, j22.At(r, c) = d2 * d2;
  });
  if (scale > 0)
    for (PlainPlane* j : {&j11, &j12, &j22}) *j = Smoothed(*j, scale);
  for (size_t i = 0; i < x.v.size(); ++i) {
    const double difference = j11.v[i] - j22.v[i];
    if (std::abs(j12.v[i]) < 1e-8 && std::abs(difference) < 1e-8) continue;
    const double theta = 0.5 * std::atan2(2 * j12.v[i], difference);
    field.u1.v[i] = std::cos(theta), field.u2.v[i] = std::sin(theta);
  }
  return field;
}

PlainPlane PlainRestore(PlainPlane x, const PlainPlane& y, const Vector& taps, const RestoreParameters& p,
                        const std::vector<bool>& mask, const PlainPlane& reference) {
  const auto masked = [&](int r, int c) { return mask.empty() || mask[static_cast<size_t>(r * x.w + c)]; };
  PlainField field{x, x};
  std::vector<Vector> rows;
  const auto add = [&](Vector row, double weight) {
    for (double& coefficient : row) coefficient *= weight;
    rows.push_back(row);
  };
  const auto begin = [&] {
    rows.clear();
    ForPixels(y.w, y.h, [&](int r, int c) { rows.push_back(ReductionRow(x, p.factor, taps, r, c)); });
  };
  const auto orient = [&] { field = PlainOrientation(x, static_cast<double>(p.factor) * p.orientationScale); };
  // The terms: one row a difference, weighted by the rule's measure of the plane there.
  const auto isotropic = [&](PlainRule rule, const PlainPlane& at) {
    ForPixels(x.w - 1, x.h - 1, [&](int r, int c) {
      const Vector d1 = CellRow(x, r, c, 1, 0), d2 = CellRow(x, r, c, 0, 1);
      const double weight = rule(std::hypot(Dot(d1, at.v), Dot(d2, at.v)), p.lambda, p.delta, 1);
      add(d1, weight), add(d2, weight);
    });
  };
  const auto axes = [&] {
    const auto difference = [&](const Vector& d) { add(d, PlainHuber(Dot(d, x.v), p.lambda, p.delta, 1)); };
    ForPixels(x.w - 1, x.h, [&](int r, int c) { difference(RowOf(x, {{r, c + 1, 1}, {r, c, -1}})); });
    ForPixels(x.w, x.h - 1, [&](int r, int c) { difference(RowOf(x, {{r + 1, c, 1}, {r, c, -1}})); });
  };
  const auto cross = [&](PlainRule rule) {
    ForPixels(x.w, x.h, [&](int r, int c) {
      const Vector d = CellRow(x, r, c, field.u2.At(r, c), -field.u1.At(r, c));
      if (p.type != 3 || masked(r, c)) add(d, rule(Dot(d, x.v), p.lambdaCross, p.deltaCross, p.shapeCross));
    });
  };
  const auto dot = [&](PlainRule rule) {
    ForPixels(x.w, x.h, [&](int r, int c) {
      const Vector d = CellRow(x, r, c, field.u1.At(r, c), field.u2.At(r, c));
      add(d, rule(Dot(d, x.v), p.lambda, p.delta, p.shapeDot));
    });
  };
  const auto iterate = [&](bool again) {
    const bool asked = (p.type == 1 || p.type == 5) && p.lambdaCross > 0;
    if (asked || ((p.type == 2 || p.type == 3 || p.type == 6) && !again)) orient();
    begin();
    if (p.type == 1 || p.type == 3 || p.type == 4 || p.type == -1) isotropic(PlainHuber, x);
    if (p.type == 7) isotropic(PlainLorentzian, x);
    if (p.type == 5) axes();
    if (p.type == 2 || p.type == 3 || asked) cross(PlainHuber);
    if (p.type == 2) dot(PlainHuber);
    if (p.type == 6) cross(PlainShaped), dot(PlainShaped);
    Solve(x, y, rows, p.steps);
  };
  const int iterations = p.type == 0 ? 0 : p.iterations;
  for (int i = 0; i < iterations; ++i) iterate(false);
  if (p.emphasis > 0 && p.iterations != 0 && p.type != -1 && p.type != 7) {
    ForPixels(x.w, x.h, [&](int r, int c) {
      if (masked(r, c)) x.At(r, c) += (x.At(r, c) - y.At(r / p.factor, c / p.factor)) * p.emphasis;
    });
    for (int i = 0; i < iterations; ++i) iterate(true);
  }
  for (int i = 0; i < 2 * iterations && p.type == 4; ++i) {
    orient(), begin(), isotropic(PlainHuber, x), cross(PlainHuber);
    Solve(x, y, rows, p.steps / 2);
  }
  for (int i = 0; i < iterations && p.type == 7; ++i) {
    orient(), begin(), cross(PlainLorentzian), isotropic(PlainLorentzian, reference);
    Solve(x, y, rows, p.steps);
  }
  return x;
}

}  // namespace norv::test
