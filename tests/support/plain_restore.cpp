#include "support/plain_restore.h"

namespace norv::test {
namespace {

using Operator = std::function<Vector(const PlainPlane&)>;

struct Cell {
  double d1, d2;
};
Cell CellOf(const PlainPlane& x, int r, int c) {
  const int below = Mirror(r + 1, x.h), right = Mirror(c + 1, x.w);
  return {x.At(below, right) - x.At(r, c), x.At(below, c) - x.At(r, right)};
}

double Huber(double g, double lambda, double delta) {
  g = std::abs(g);
  return g <= delta ? lambda : lambda * std::sqrt((2 * g - delta) * delta) / g;
}
double Lorentzian(double g2, double lambda, double delta) {
  const double sigma = delta * std::sqrt(2.0);
  return g2 > 1e-10 ? lambda * std::sqrt(std::log(1 + g2 / (sigma * sigma)) / g2) : lambda / sigma;
}
double Shaped(double g, double lambda, double delta, double p) {
  g = std::abs(g);
  return g <= delta ? lambda : lambda * delta * std::sqrt(1 + 2 / p * (std::pow(g / delta, p) - 1)) / g;
}

// The rule of a type: strength, threshold, shape.
using PlainRule = std::function<double(double g, double lambda, double delta, double shape)>;

Operator Isotropic(const PlainPlane& x, const PlainRule& rule, double lambda, double delta) {
  const PlainPlane at = x;
  return [=](const PlainPlane& p) {
    Vector q;
    for (int r = 0; r + 1 < p.h; ++r)
      for (int c = 0; c + 1 < p.w; ++c) {
        const Cell g = CellOf(at, r, c), d = CellOf(p, r, c);
        const double w = rule(std::hypot(g.d1, g.d2), lambda, delta, 1);
        q.push_back(w * d.d1);
        q.push_back(w * -d.d2);
      }
    return q;
  };
}

// t = d . direction at every cell, weighted by the rule's measure of x there; dot or cross.
Operator Directed(const PlainPlane& x, const PlainField& u, bool dot, const PlainRule& rule, double lambda,
                  double delta, double shape, const std::vector<bool>& mask) {
  const auto along = [u, dot](const PlainPlane& p, int r, int c) {
    const Cell d = CellOf(p, r, c);
    const double u1 = u.u1.At(r, c), u2 = u.u2.At(r, c);
    return dot ? d.d1 * u1 + d.d2 * u2 : d.d1 * u2 - d.d2 * u1;
  };
  const PlainPlane at = x;
  return [=](const PlainPlane& p) {
    Vector q;
    for (int r = 0; r < p.h; ++r)
      for (int c = 0; c < p.w; ++c)
        if (mask.empty() || mask[static_cast<size_t>(r * p.w + c)])
          q.push_back(rule(along(at, r, c), lambda, delta, shape) * along(p, r, c));
    return q;
  };
}

Operator Axes(const PlainPlane& x, double lambda, double delta) {
  const PlainPlane at = x;
  return [=](const PlainPlane& p) {
    Vector q;
    for (int r = 0; r < p.h; ++r)
      for (int c = 0; c < p.w; ++c) {
        if (c + 1 < p.w)
          q.push_back(Huber(at.At(r, c + 1) - at.At(r, c), lambda, delta) * (p.At(r, c + 1) - p.At(r, c)));
        if (r + 1 < p.h)
          q.push_back(Huber(at.At(r + 1, c) - at.At(r, c), lambda, delta) * (p.At(r + 1, c) - p.At(r, c)));
      }
    return q;
  };
}

// Columns of the stacked operator.
std::vector<Vector> Dense(const std::vector<Operator>& operators, int w, int h) {
  std::vector<Vector> columns;
  for (size_t k = 0; k < static_cast<size_t>(w * h); ++k) {
    PlainPlane unit(w, h);
    unit.v[k] = 1;
    Vector column;
    for (const Operator& apply : operators) {
      const Vector part = apply(unit);
      column.insert(column.end(), part.begin(), part.end());
    }
    columns.push_back(column);
  }
  return columns;
}

double Dot(const Vector& a, const Vector& b) {
  double sum = 0;
  for (size_t i = 0; i < a.size(); ++i) sum += a[i] * b[i];
  return sum;
}

void Solve(PlainPlane& x, const PlainPlane& y, const std::vector<Operator>& operators, int steps) {
  if (steps <= 0) return;
  const std::vector<Vector> a = Dense(operators, x.w, x.h);
  const auto apply = [&](const Vector& p) {
    Vector q(a[0].size(), 0.0);
    for (size_t k = 0; k < a.size(); ++k)
      for (size_t i = 0; i < q.size(); ++i) q[i] += a[k][i] * p[k];
    return q;
  };
  const auto transposed = [&](const Vector& r) {
    Vector g;
    for (const Vector& column : a) g.push_back(Dot(column, r));
    return g;
  };
  Vector r = apply(x.v);
  for (size_t i = 0; i < r.size(); ++i) r[i] = (i < y.v.size() ? y.v[i] : 0) - r[i];
  Vector g = transposed(r), p = g;
  double rho = Dot(g, g);
  for (int step = 0; step < steps; ++step) {
    const Vector q = apply(p);
    const double den = Dot(q, q);
    if (den <= 0) return;
    const double alpha = rho / den;
    for (size_t k = 0; k < p.size(); ++k) x.v[k] += alpha * p[k];
    for (size_t i = 0; i < r.size(); ++i) r[i] -= alpha * q[i];
    g = transposed(r);
    const double next = Dot(g, g);
    if (rho <= 0) return;
    for (size_t k = 0; k < p.size(); ++k) p[k] = next / rho * p[k] + g[k];
    rho = next;
  }
}

PlainPlane Smoothed(const PlainPlane& x, double scale) {
  const int radius = static_cast<int>(std::ceil(3 * scale));
  const auto weight = [&](int d) { return std::exp(-0.5 * d * d / (scale * scale)); };
  double sum = 0;
  for (int d = -radius; d <= radius; ++d) sum += weight(d);
  PlainPlane result(x.w, x.h);
  for (int r = 0; r < x.h; ++r)
    for (int c = 0; c < x.w; ++c)
      for (int i = -radius; i <= radius; ++i)
        for (int j = -radius; j <= radius; ++j)
          result.At(r, c) += weight(i) * weight(j) / (sum * sum) * x.At(Mirror(r + i, x.h), Mirror(c + j, x.w));
  return result;
}

}  // namespace

PlainPlane PlainReduce(const PlainPlane& x, int f, const Vector& taps) {
  const int length = static_cast<int>(taps.size()), o = (length - f) / 2;
  PlainPlane y(x.w / f, x.h / f);
  for (int r = 0; r < y.h; ++r)
    for (int c = 0; c < y.w; ++c)
      for (int i = 0; i < length; ++i)
        for (int j = 0; j < length; ++j)
          y.At(r, c) += taps[static_cast<size_t>(i)] * taps[static_cast<size_t>(j)] *
                        x.At(Mirror(f * r - o + i, x.h), Mirror(f * c - o + j, x.w));
  return y;
}

PlainField PlainOrientation(const PlainPlane& x, double scale) {
  PlainPlane j11(x.w, x.h), j12(x.w, x.h), j22(x.w, x.h);
  for (int r = 0; r < x.h; ++r)
    for (int c = 0; c < x.w; ++c) {
      const Cell d = CellOf(x, r, c);
      j11.At(r, c) = d.d1 * d.d1;
      j12.At(r, c) = d.d1 * d.d2;
      j22.At(r, c) = d.d2 * d.d2;
    }
  if (scale > 0)
    for (PlainPlane* j : {&j11, &j12, &j22}) *j = Smoothed(*j, scale);
  PlainField field{PlainPlane(x.w, x.h), PlainPlane(x.w, x.h)};
  for (size_t i = 0; i < x.v.size(); ++i) {
    const double difference = j11.v[i] - j22.v[i];
    if (std::abs(j12.v[i]) < 1e-8 && std::abs(difference) < 1e-8) continue;
    const double theta = 0.5 * std::atan2(2 * j12.v[i], difference);
    field.u1.v[i] = std::cos(theta);
    field.u2.v[i] = std::sin(theta);
  }
  return field;
}

PlainPlane PlainRestore(PlainPlane x, const PlainPlane& y, const Vector& taps, const RestoreParameters& p,
                        const std::vector<bool>& mask, const PlainPlane& reference) {
  const Operator reduce = [&](const PlainPlane& large) { return PlainReduce(large, p.factor, taps).v; };
  const PlainRule huber = [](double g, double l, double d, double) { return Huber(g, l, d); };
  const PlainRule lorentzian = [](double g, double l, double d, double) { return Lorentzian(g * g, l, d); };
  const PlainRule shaped = Shaped;
  PlainField field{x, x};
  const auto orient = [&] { field = PlainOrientation(x, static_cast<double>(p.factor) * p.orientationScale); };
  const auto isotropic = [&](const PlainRule& rule) { return Isotropic(x, rule, p.lambda, p.delta); };
  const auto cross = [&](const PlainRule& rule, const std::vector<bool>& where) {
    return Directed(x, field, false, rule, p.lambdaCross, p.deltaCross, p.shapeCross, where);
  };
  const auto dot = [&](const PlainRule& rule) {
    return Directed(x, field, true, rule, p.lambda, p.delta, p.shapeDot, {});
  };
  const auto iterate = [&](bool again) {
    const bool asked = p.lambdaCross > 0;
    const bool turning = p.type == 1 || p.type == 5 ? asked : (p.type == 2 || p.type == 3 || p.type == 6) && !again;
    if (turning) orient();
    std::vector<Operator> all = {reduce};
    if (p.type == 1 || p.type == 3 || p.type == 4 || p.type == -1) all.push_back(isotropic(huber));
    if (p.type == 7) all.push_back(isotropic(lorentzian));
    if (p.type == 5) all.push_back(Axes(x, p.lambda, p.delta));
    if (p.type == 2 || ((p.type == 1 || p.type == 5) && asked)) all.push_back(cross(huber, {}));
    if (p.type == 2) all.push_back(dot(huber));
    if (p.type == 3) all.push_back(cross(huber, mask));
    if (p.type == 6) all.push_back(cross(shaped, {})), all.push_back(dot(shaped));
    Solve(x, y, all, p.steps);
  };
  for (int i = 0; i < p.iterations && p.type != 0; ++i) iterate(false);
  if (p.emphasis > 0 && p.iterations != 0 && p.type != -1 && p.type != 7) {
    for (int r = 0; r < x.h; ++r)
      for (int c = 0; c < x.w; ++c)
        if (mask.empty() || mask[static_cast<size_t>(r * x.w + c)])
          x.At(r, c) += (x.At(r, c) - y.At(r / p.factor, c / p.factor)) * p.emphasis;
    for (int i = 0; i < p.iterations && p.type != 0; ++i) iterate(true);
  }
  for (int i = 0; i < 2 * p.iterations && p.type == 4; ++i) {
    orient();
    Solve(x, y, {reduce, isotropic(huber), cross(huber, {})}, p.steps / 2);
  }
  for (int i = 0; i < p.iterations && p.type == 7; ++i) {
    orient();
    Solve(x, y, {reduce, cross(lorentzian, {}), Isotropic(reference, lorentzian, p.lambda, p.delta)}, p.steps);
  }
  return x;
}

}  // namespace norv::test
