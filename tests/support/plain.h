// Networks and pictures in plain arrays: their files byte for byte and the plainest evaluation, written apart from the
// tool's own code so that the two can be compared.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace norv::test {

struct PlainUnit {
  int32_t kind = 12;
  float b = 0;
  std::vector<float> W;
};

struct PlainNet {
  int32_t inputs = 0;
  std::vector<std::vector<PlainUnit>> layers;
};

// Weights and biases from -0.5 to 0.5 over the square root of the unit's inputs; every unit of one kind.
PlainNet RandomNet(int32_t inputs, const std::vector<int>& sizes, int32_t kind);

// The outputs, for the kinds 5, 12 and 14.
std::vector<float> Evaluate(const PlainNet& net, std::vector<float> inputs);

// The .net file.
std::string BytesOf(const PlainNet& net);

// Planes of rows of pixels.
struct PlainImage {
  int32_t width = 0, height = 0, format = 23;
  std::vector<std::vector<float>> planes;
};

// Values from 0 to 255, whole numbers and others.
PlainImage RandomImage(int32_t width, int32_t height, int32_t format, int planes);

// The .fdib file, without mask.
std::string BytesOf(const PlainImage& image);

// Every plane enlarged by a network with 24 inputs (5 x 5 without the centre, edges clamped) and f x f outputs.
PlainImage EnlargeBy24(const PlainImage& image, const PlainNet& net);

}  // namespace norv::test
