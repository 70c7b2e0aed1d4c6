// Planes enlarged by a network: every source pixel becomes a block of factor x factor pixels.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "net/layouts.h"
#include "net/packed_net.h"
#include "platform/progress.h"
#include "raster/bands.h"

namespace norv {

// A network made ready for one request: read-only afterwards and shared by all threads.
class PlaneEnlarger {
 public:
  // average: the mean of the answers to the eight orientations of the plane. A network that has a layout but cannot be
  // evaluated (WhyNotEvaluable) enlarges empty planes only; others are a broken promise.
  PlaneEnlarger(const NeuralNet& net, bool average);

  // Whether there is a layout for the network's inputs and outputs; without one Enlarge() does nothing.
  bool Supported() const { return layout_ != nullptr; }
  // EnlargementFactor(), supported or not.
  int32_t Factor() const { return factor_; }

  // plane  the strip's window of a plane of width w, any size;  result  another matrix, becomes factor*w x
  // factor*strip.rows, the same whatever the strips are. Block element (i, j) of a pixel Pc is
  // 255 o[factor*i + j] + Pc; averaged: the sum of the blocks of orientations 0 to 7 in that order, from +0, times
  // 0.125. The bits are those of ForwardPass pixel by pixel on turned planes. Advances progress by strip.rows.
  // Throws matrix's out-of-memory message or std::bad_alloc.
  void Enlarge(const matrix& plane, const Strip& strip, matrix& result, Progress& progress) const;

 private:
  friend class TileEnlarger;

  const InputLayout* layout_;
  int32_t factor_;
  std::vector<int32_t> orientations_;
  std::optional<PackedNet> net_;
};

// Strips of whole tiles are the cheapest.
inline constexpr int64_t kTileRows = 16;

// trunc(sqrt(outputs)).
int32_t EnlargementFactor(const NeuralNet& net);

// Throws matrix's out-of-memory message, with the reason on standard error, when an image of this size or its
// enlargement has more pixels than 32 bits can count.
void RequireEnlargedCount(int32_t width, int32_t height, int32_t factor);

// The enlarged length of an axis. One that 32 bits cannot count becomes the longest, which no plane can have.
int32_t EnlargedLength(int32_t length, int32_t factor);

}  // namespace norv
