// Enlargement in its plainest form: turned planes, one pixel at a time, on the record. Every faster road has its bits.
#pragma once

#include "image/float_image.h"
#include "net/neural_net.h"
#include "support/random_image.h"

namespace norv::test {

// What the network sees of pixel (r, c).
matrix PlainInput(const matrix& P, int32_t r, int32_t c, int32_t inputs);

matrix PlainPlane(const NeuralNet& net, const matrix& P, bool average);
FloatImage PlainImage(FloatImage image, const NeuralNet& net, bool shortcut, bool average);

// Bands of q rows, each with three mirrored rows more at both ends.
FloatImage PlainBands(const FloatImage& source, const NeuralNet& net, bool shortcut, bool average, int32_t q);

}  // namespace norv::test
