#include "support/plain.h"

#include <algorithm>
#include <cmath>
#include <random>

namespace norv::test {
namespace {

template <typename T>
void Append(std::string& bytes, T value) {
  bytes.append(reinterpret_cast<const char*>(&value), sizeof value);
}

void AppendAll(std::string& bytes, const std::vector<float>& values) {
  for (float value : values) Append(bytes, value);
}

float Activate(int32_t kind, double z) {
  if (kind == 5) return static_cast<float>(z >= 0 ? 0.25 * z : 0);
  if (kind == 14) return static_cast<float>(z >= 0 ? z : 0.01 * z);
  return static_cast<float>(z);
}

// Eight partial sums over whole blocks of eight, the rest into the first, then the others one after another.
float Dot(const std::vector<float>& x, const std::vector<float>& w) {
  float sums[8] = {};
  const size_t whole = x.size() / 8 * 8;
  for (size_t i = 0; i < whole; ++i) sums[i % 8] += x[i] * w[i];
  for (size_t i = whole; i < x.size(); ++i) sums[0] += x[i] * w[i];
  for (int lane = 1; lane < 8; ++lane) sums[0] += sums[lane];
  return sums[0];
}

std::vector<float> InputsOf(const std::vector<float>& plane, int w, int h, int r, int c) {
  const float centre = plane[static_cast<size_t>(r * w + c)];
  std::vector<float> inputs;
  for (int dy = -2; dy <= 2; ++dy)
    for (int dx = -2; dx <= 2; ++dx) {
      if (dy == 0 && dx == 0) continue;
      const int y = std::clamp(r + dy, 0, h - 1), x = std::clamp(c + dx, 0, w - 1);
      inputs.push_back((plane[static_cast<size_t>(y * w + x)] - centre) * 0.003921569f);
    }
  return inputs;
}

}  // namespace

PlainNet RandomNet(int32_t inputs, const std::vector<int>& sizes, int32_t kind) {
  std::mt19937 generator(7);
  PlainNet net{inputs, {}};
  size_t width = static_cast<size_t>(inputs);
  for (int size : sizes) {
    std::uniform_real_distribution<float> value(-0.5f, 0.5f);
    const float scale = 1 / std::sqrt(static_cast<float>(width));
    auto& layer = net.layers.emplace_back(static_cast<size_t>(size));
    for (PlainUnit& unit : layer) {
      unit = {kind, value(generator) * scale, std::vector<float>(width)};
      for (float& weight : unit.W) weight = value(generator) * scale;
    }
    width = layer.size();
  }
  return net;
}

std::vector<float> Evaluate(const PlainNet& net, std::vector<float> inputs) {
  for (const auto& layer : net.layers) {
    std::vector<float> outputs;
    for (const PlainUnit& unit : layer) outputs.push_back(Activate(unit.kind, Dot(inputs, unit.W) + unit.b));
    inputs = outputs;
  }
  return inputs;
}

std::string BytesOf(const PlainNet& net) {
  std::string bytes;
  Append(bytes, static_cast<int32_t>(net.layers.size()));
  Append(bytes, net.inputs);
  for (size_t i = 0; i < 16; ++i) Append(bytes, static_cast<int32_t>(i < net.layers.size() ? net.layers[i].size() : 0));
  for (int field = 0; field < 3; ++field) Append(bytes, int32_t{0});
  for (const auto& layer : net.layers)
    for (const PlainUnit& unit : layer) {
      Append(bytes, unit.kind);
      Append(bytes, static_cast<int32_t>(unit.W.size()));
      AppendAll(bytes, {unit.b, 0, 0, 0, 0});
      AppendAll(bytes, std::vector<float>(unit.W.size()));
      AppendAll(bytes, unit.W);
      AppendAll(bytes, std::vector<float>(unit.W.size()));
    }
  return bytes;
}

PlainImage RandomImage(int32_t width, int32_t height, int32_t format, int planes) {
  std::mt19937 generator(3);
  PlainImage image{width, height, format, {}};
  for (int k = 0; k < planes; ++k) {
    auto& plane = image.planes.emplace_back(static_cast<size_t>(width) * static_cast<size_t>(height));
    for (float& pixel : plane) pixel = static_cast<float>(generator() % 1021) * 0.25f;
  }
  return image;
}

std::string BytesOf(const PlainImage& image) {
  std::string bytes;
  for (int32_t field : {image.width, image.height, image.format, 0}) Append(bytes, field);
  for (const auto& plane : image.planes) AppendAll(bytes, plane);
  return bytes;
}

PlainImage EnlargeBy24(const PlainImage& image, const PlainNet& net) {
  const int w = image.width, h = image.height, f = net.layers.back().size() == 16 ? 4 : 2;
  PlainImage large{w * f, h * f, image.format, {}};
  for (const auto& plane : image.planes) {
    std::vector<float> result(plane.size() * static_cast<size_t>(f * f));
    for (int r = 0; r < h; ++r)
      for (int c = 0; c < w; ++c) {
        const std::vector<float> o = Evaluate(net, InputsOf(plane, w, h, r, c));
        for (int i = 0; i < f * f; ++i)
          result[static_cast<size_t>((f * r + i / f) * w * f + f * c + i % f)] =
              255.0f * o[static_cast<size_t>(i)] + plane[static_cast<size_t>(r * w + c)];
      }
    large.planes.push_back(result);
  }
  return large;
}

}  // namespace norv::test
