#include "net/enlarge_plane.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "platform/assert.h"
#include "platform/console.h"
#include "raster/orient.h"

namespace norv {
namespace {

// A plane is worked through in tiles that are copied with their margins, so that neighbours are plain loads, memory
// stays small whatever the plane, and the tile stays in the cache.
constexpr int64_t kTileColumns = 16 * kPixelsPerBlock;
constexpr int64_t kVector = 16;  // pixels are filled in and evaluated in whole vectors of at most this length
constexpr int64_t kTileStride = kTileColumns + kVector;

constexpr int64_t WholeVectors(int64_t pixels) { return (pixels + kVector - 1) / kVector * kVector; }

// How a network sees a plane in one orientation without anybody turning the plane.
struct View {
  TapOffsets taps;              // where its inputs are in a tile
  std::vector<int32_t> output;  // element i of a pixel's block, as it stands in the result, is output output[i]
};

View MakeView(const InputLayout& layout, int32_t factor, int32_t k) {
  View view{OrientedOffsets(layout, k, kTileStride), std::vector<int32_t>(factor * factor)};
  const std::vector<int32_t> turned = OrientationPermutation(factor, k);
  for (int32_t i = 0; i < factor * factor; ++i) view.output[turned[i]] = i;
  return view;
}

// row[p] = value(p) for whole vectors of pixels.
template <typename Value>
void FillRow(float* __restrict row, int64_t lanes, const Value& value) {
  for (int64_t p = 0; p < lanes; p += kVector)
    for (int64_t k = 0; k < kVector; ++k) row[p + k] = value(p + k);
}

void FillInputs(const InputLayout& layout, const TapOffsets& taps, const float* centre, int64_t lanes,
                PackedNet::Scratch& scratch) {
  constexpr float s = kInputScale;
  for (int32_t i = 0; i < layout.inputs; ++i) {
    float* row = scratch.Input(i);
    const float* P = centre + taps.first[i];
    switch (layout.form) {
      case ValueForm::centred:
        FillRow(row, lanes, [=](int64_t p) { return (P[p] - centre[p]) * s; });
        break;
      case ValueForm::plain:
        FillRow(row, lanes, [=](int64_t p) { return P[p] * s; });
        break;
      case ValueForm::difference: {
        const float* Q = centre + taps.second[i];
        FillRow(row, lanes, [=](int64_t p) { return P[p] * s - Q[p] * s; });
        break;
      }
    }
  }
}

// The outputs of neighbouring pixels, an element of all blocks a row, into `factor` rows of the result, where the
// blocks of factor x factor pixels stand side by side.
template <int32_t factor>
void Interleave(const float* block, float* const* rows, int64_t column, int32_t pixels) {
  for (int32_t i = 0; i < factor; ++i) {
    const float* __restrict from = block + i * factor * kPixelsPerBlock;
    float* __restrict to = rows[i] + column * factor;
    for (int32_t p = 0; p < pixels; ++p)
      for (int32_t j = 0; j < factor; ++j) to[p * factor + j] = from[j * kPixelsPerBlock + p];
  }
}

}  // namespace

// Enlarges the tiles of one plane: everything that one thread needs for it.
class TileEnlarger {
 public:
  TileEnlarger(const PlaneEnlarger& enlarger, const PlaneWindow& plane, int32_t firstRow, matrix& result)
      : layout_(*enlarger.layout_),
        net_(*enlarger.net_),
        factor_(enlarger.factor_),
        plane_(plane),
        firstRow_(firstRow),
        result_(result),
        scratch_(net_),
        tile_(MakeAligned<float>((kTileRows + 2 * layout_.radius) * kTileStride)),
        block_(MakeAligned<float>(factor_ * factor_ * kPixelsPerBlock)) {
    for (const int32_t k : enlarger.orientations_) views_.push_back(MakeView(layout_, factor_, k));
  }

  void Enlarge(int64_t row, int64_t column, int64_t rows) {
    const int64_t columns = std::min(kTileColumns, plane_.rows.m - column), radius = layout_.radius;
    const Rectangle area{row - radius, column - radius, rows + 2 * radius, WholeVectors(columns) + 2 * radius};
    CopyRectangle(plane_, layout_.edges, area, tile_.get(), kTileStride);
    for (int64_t r = 0; r < rows; ++r)
      for (int64_t c = 0; c < columns; c += kPixelsPerBlock) {
        const int64_t pixels = std::min<int64_t>(kPixelsPerBlock, columns - c);
        EvaluateViews(tile_.get() + (r + radius) * kTileStride + radius + c, static_cast<int32_t>(pixels));
        Place(row + r, column + c, static_cast<int32_t>(pixels));
      }
  }

 private:
  // The blocks of neighbouring pixels, of which centre is the first, into block_.
  void EvaluateViews(const float* centre, int32_t pixels) {
    const bool averaged = views_.size() > 1;
    const int32_t elements = factor_ * factor_;
    if (averaged) std::fill_n(block_.get(), elements * kPixelsPerBlock, 0.0f);
    for (const View& view : views_) {
      FillInputs(layout_, view.taps, centre, WholeVectors(pixels), scratch_);
      const float* outputs = net_.EvaluateBlock(scratch_, pixels);
      for (int32_t i = 0; i < elements; ++i)
        TakeOutput(outputs + view.output[i] * kPixelsPerBlock, centre, pixels, averaged, &block_[i * kPixelsPerBlock]);
    }
    if (averaged)
      for (int32_t i = 0; i < elements * kPixelsPerBlock; ++i) block_[i] *= 0.125f;
  }

  static void TakeOutput(const float* o, const float* Pc, int32_t pixels, bool averaged, float* __restrict element) {
    if (averaged)
      for (int32_t p = 0; p < pixels; ++p) element[p] += kOutputScale * o[p] + Pc[p];
    else
      for (int32_t p = 0; p < pixels; ++p) element[p] = kOutputScale * o[p] + Pc[p];
  }

  void Place(int64_t row, int64_t column, int32_t pixels) {
    float* const* rows = result_.z + (row - firstRow_) * factor_;
    factor_ == 2 ? Interleave<2>(block_.get(), rows, column, pixels)
                 : Interleave<4>(block_.get(), rows, column, pixels);
  }

  const InputLayout& layout_;
  const PackedNet& net_;
  const int32_t factor_;
  const PlaneWindow& plane_;
  const int32_t firstRow_;  // of the plane, that the result's first rows come from
  matrix& result_;
  PackedNet::Scratch scratch_;
  AlignedArray<float> tile_;
  std::vector<View> views_;
  AlignedArray<float> block_;  // element i of pixel p is block_[i * kPixelsPerBlock + p]
};

PlaneEnlarger::PlaneEnlarger(const NeuralNet& net, bool average)
    : layout_(FindEnlargement(net.N0, net.LastNi())),
      factor_(EnlargementFactor(net)),
      orientations_(average ? kOrientations : 1) {
  for (int32_t k = 0; k < static_cast<int32_t>(orientations_.size()); ++k) orientations_[k] = k;
  if (layout_ && !WhyNotEvaluable(net)) net_.emplace(net);
}

void PlaneEnlarger::Enlarge(const matrix& plane, const Strip& strip, matrix& result, Progress& progress) const {
  if (!Supported()) return;
  result.dim(EnlargedLength(plane.m, factor_), EnlargedLength(strip.rows, factor_));
  if (result.mn == 0) return;
  NORV_ASSERT(net_.has_value());
  const PlaneWindow window = strip.WindowOf(plane);
  TileEnlarger tiles(*this, window, strip.first, result);
  const int64_t end = int64_t{strip.first} + strip.rows;
  for (int64_t row = strip.first; row < end; row += kTileRows) {
    const int64_t rows = std::min(kTileRows, end - row);
    for (int64_t column = 0; column < plane.m; column += kTileColumns) tiles.Enlarge(row, column, rows);
    progress.Advance(rows);
  }
}

int32_t EnlargementFactor(const NeuralNet& net) {
  return static_cast<int32_t>(std::sqrt(static_cast<double>(net.LastNi())));
}

void RequireEnlargedCount(int32_t width, int32_t height, int32_t factor) {
  const int32_t w = EnlargedLength(width, factor), h = EnlargedLength(height, factor);
  if (int64_t{w} * h > std::numeric_limits<int32_t>::max())
    Complain("%d x %d pixels enlarged %d times on both axes are more than 2147483647", width, height, factor);
  ElementCount(width, height);
  ElementCount(w, h);
}

int32_t EnlargedLength(int32_t length, int32_t factor) {
  return static_cast<int32_t>(std::min<int64_t>(int64_t{length} * factor, std::numeric_limits<int32_t>::max()));
}

}  // namespace norv
