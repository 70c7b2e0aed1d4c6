#include "support/plain_enlarge.h"

#include <algorithm>
#include <cmath>

#include "net/forward.h"
#include "raster/orient.h"
#include "support/nets.h"
#include "support/random_plane.h"
#include "support/restoration.h"

namespace norv::test {
namespace {

int32_t FactorOf(const NeuralNet& net) { return net.LastNi() == 16 ? 4 : 2; }

matrix PlainChannel(const NeuralNet& net, const matrix& P) {
  NeuralNet own;
  CopyNetForEvaluation(own, net);
  const int32_t f = FactorOf(net);
  matrix out(f * P.m, f * P.n);
  for (int32_t r = 0; r < P.n; ++r)
    for (int32_t c = 0; c < P.m; ++c) {
      ForwardPass(own, PlainInput(P, r, c, net.N0), 1);
      for (int32_t i = 0; i < f; ++i)
        for (int32_t j = 0; j < f; ++j) {
          const float scaled = 255.0f * own.layers.back().units[f * i + j].a;
          out.z[f * r + i][f * c + j] = scaled + P.z[r][c];
        }
    }
  return out;
}

}  // namespace

matrix PlainInput(const matrix& P, int32_t r, int32_t c, int32_t inputs) {
  constexpr float s = 1.0f / 255;
  const int32_t radius = inputs == 8 ? 1 : inputs == 24 ? 2 : 3;
  const auto at = [&](int32_t y, int32_t x) {
    return inputs == 8 ? P.z[Mirror(y, P.n)][Mirror(x, P.m)]
                       : P.z[std::clamp(y, 0, P.n - 1)][std::clamp(x, 0, P.m - 1)];
  };
  std::vector<float> values;
  if (inputs == 72) {
    for (int32_t t = -3; t < 3; ++t)
      for (int32_t j = -3; j < 3; ++j) {
        values.push_back(at(r + t, c + j) * s - at(r + t + 1, c + j + 1) * s);
        values.push_back(at(r + t + 1, c + j) * s - at(r + t, c + j + 1) * s);
      }
  } else {
    for (int32_t t = -radius; t <= radius; ++t)
      for (int32_t u = -radius; u <= radius; ++u)
        if (inputs == 49)
          values.push_back(at(r + t, c + u) * s);
        else if (t != 0 || u != 0)
          values.push_back((at(r + t, c + u) - P.z[r][c]) * s);
  }
  matrix input(inputs, 1);
  std::copy(values.begin(), values.end(), input.x);
  return input;
}

matrix PlainPlane(const NeuralNet& net, const matrix& P, bool average) {
  if (!average) return PlainChannel(net, P);
  const int32_t f = FactorOf(net);
  matrix out(f * P.m, f * P.n), turned, back;
  out.fill(0);
  for (int32_t k = 0; k < kOrientations; ++k) {
    OrientMatrix(turned, P, k);
    RestoreOrientation(back, PlainChannel(net, turned), k);
    for (int32_t i = 0; i < out.mn; ++i) out.x[i] += back.x[i];
  }
  for (int32_t i = 0; i < out.mn; ++i) out.x[i] *= 0.125f;
  return out;
}

FloatImage PlainImage(FloatImage image, const NeuralNet& net, bool shortcut, bool average) {
  const int32_t format = image.format;
  if (shortcut) {
    const bool fourth = (format & ~15) == 0x2000;
    const matrix aside = image.plane[3];
    if (fourth) image.ConvertTo(0x10);
    image.ConvertTo(0x20000);
    image.plane[0] = PlainPlane(net, image.plane[0], average);
    for (int32_t p = 1; p < 3; ++p) image.plane[p] = Enlarged(image.plane[p], FactorOf(net));
    image.RefreshSize();
    image.ConvertTo(format);
    if (fourth) image.plane[3] = PlainPlane(net, aside, average);
  } else {
    for (int32_t p = 0; p < image.planes; ++p) image.plane[p] = PlainPlane(net, image.plane[p], average);
    image.RefreshSize();
  }
  return image;
}

FloatImage PlainBands(const FloatImage& source, const NeuralNet& net, bool shortcut, bool average, int32_t q) {
  const int32_t f = FactorOf(net), w = source.width, h = source.height;
  FloatImage result(f * w, f * h, source.format);
  result.mask = source.mask;
  for (int32_t y = 0; y < h; y += q) {
    FloatImage band(w, q + 6, source.format);
    for (int32_t p = 0; p < source.planes; ++p)
      for (int32_t r = 0; r < q + 6; ++r) std::copy_n(source.plane[p].z[Mirror(y - 3 + r, h)], w, band.plane[p].z[r]);
    band = PlainImage(band, net, shortcut, average);
    for (int32_t p = 0; p < source.planes; ++p)
      for (int32_t r = 0; r < f * q && f * y + r < f * h; ++r)
        std::copy_n(band.plane[p].z[f * 3 + r], f * w, result.plane[p].z[f * y + r]);
  }
  return result;
}

}  // namespace norv::test
