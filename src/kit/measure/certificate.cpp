#include "kit/measure/certificate.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <utility>
#include <vector>

#include "kit/failure.h"
#include "kit/measure/reduced_rows.h"
#include "kit/pictures/luminance.h"
#include "kit/pictures/picture.h"
#include "kit/pictures/picture_samples.h"
#include "kit/scale/premultiplied.h"
#include "raster/filters.h"

namespace norv {
namespace {

constexpr int32_t kMapSide = 512;

// The same rows; `see` gets a copy of them.
template <typename See>
PictureSource Watched(PictureSource from, const See& see) {
  const PictureShape shape = from.shape;
  return {shape, [from = std::move(from), see](Picture& rows, int32_t at, int32_t count) {
            from.read(rows, at, count);
            if (count == 0) return;
            Picture copy(rows.Width(), count, rows.channels, rows.bits);
            CopyPart(rows, at, count, copy, 0);
            see(std::move(copy));
          }};
}

// Differences of one kind, as they come.
class Differences {
 public:
  void Add(double difference) {
    if (!std::isfinite(difference)) return;
    largest_ = std::max(largest_, std::abs(difference));
    squares_ += difference * difference;
    ++count_;
  }
  double Largest() const { return largest_; }
  double Rms() const { return count_ > 0 ? std::sqrt(squares_ / static_cast<double>(count_)) : 0; }

 private:
  double largest_ = 0, squares_ = 0;
  int64_t count_ = 0;
};

struct OfPicture {
  Differences luminance, colours;
};

// What rows become in a file, from row `first` of the picture on.
Picture Rounded(const Picture& rows, int32_t first, const Rounding& rounding) {
  if (rounding.bits == 32) return rows;
  Picture rounded(rows.Width(), rows.Height(), rows.channels, rows.bits);
  Samples row({rows.Width(), 1, rows.channels, rounding.bits});
  for (int32_t r = 0; r < rows.Height(); ++r) {
    if (rounding.dither)
      PackRowDithered(rows, r, first + r, row);
    else
      PackRow(rows, r, row);
    UnpackRow(row, r, rounded);
  }
  return rounded;
}

std::string FilterInWords(int32_t code, bool whole) {
  const auto choice = FilterOfKernelCode(code);
  if (!choice) Fail("there is no filter of order %d", code);
  if (!whole) return "cubic, order -1 stretched to any size";
  constexpr const char* kNames[] = {"box", "tent", "Lanczos", "cubic", "Gaussian"};
  return std::string(kNames[static_cast<size_t>(choice->filter)]) + ", order " + std::to_string(code);
}

// Two digits that say something, never an exponent.
std::string Short(double levels) {
  char text[40];
  std::snprintf(text, sizeof text, levels >= 10 ? "%.0f" : levels >= 0.0001 || levels == 0 ? "%.2g" : "%.6f", levels);
  return text;
}

std::string FiguresInWords(const Closeness& figures) {
  return "at most " + Short(figures.largest) + ", root mean square " + Short(figures.rms) + " grey levels; rounded " +
         Short(figures.largestRounded) + " and " + Short(figures.rmsRounded);
}

// Both or neither multiplied, so that the colour behind what is transparent has no say.
Picture ColoursOf(Picture rows, bool multiply) {
  if (!multiply || !rows.HasAlpha()) return rows;
  Premultiply(rows);
  return rows;
}

}  // namespace

class Certifier::State {
 public:
  State(const PictureShape& input, const PictureSize& result, int32_t code, const Rounding& rounding)
      : input_(input),
        rounding_(rounding),
        exact_(ReductionOf(result, code)),
        rounded_(exact_),
        map_(std::min(input.width, kMapSide), std::min(input.height, kMapSide)) {
    const bool whole = result.width % input.width == 0 && result.height % input.height == 0;
    filter_ = FilterInWords(code, whole);
    map_.fill(0);
  }

  void TakeInput(Picture rows) { kept_.Append(std::move(rows)); }

  void TakeResult(const Picture& rows) {
    const bool multiply = input_.HasAlpha() && rows.HasAlpha();
    Picture rounded = Rounded(rows, taken_, rounding_);
    taken_ += rows.Height();
    const int32_t first = exact_.Made();
    const Picture exact = exact_.Take(ColoursOf(rows, multiply));
    rounded = rounded_.Take(ColoursOf(std::move(rounded), multiply));
    if (exact.Height() == 0) return;
    const Picture input = ColoursOf(kept_.Rows(first, exact.Height()), multiply);
    kept_.ForgetBefore(exact_.Made());
    Compare(input, exact, first, exactly_, true);
    Compare(input, rounded, first, asRounded_, false);
  }

  Certificate Made() const {
    Certificate made{filter_, exactly_.luminance.Largest(), exactly_.luminance.Rms(), asRounded_.luminance.Largest(),
                     asRounded_.luminance.Rms()};
    if (!input_.IsGrey())
      made.colours = {exactly_.colours.Largest(), exactly_.colours.Rms(), asRounded_.colours.Largest(),
                      asRounded_.colours.Rms()};
    return made;
  }

  const matrix& Map() const { return map_; }

 private:
  ReducedRows ReductionOf(const PictureSize& result, int32_t code) const {
    const auto filter = FilterOfKernelCode(code);
    if (!filter) Fail("there is no filter of order %d", code);
    return {result, {input_.width, input_.height}, *filter};
  }

  void Compare(const Picture& input, const Picture& reduced, int32_t first, OfPicture& sums, bool mapped) {
    const matrix before = LuminanceOf(input), after = LuminanceOf(reduced);
    for (int32_t r = 0; r < after.n; ++r)
      for (int32_t x = 0; x < after.m; ++x) {
        const double difference = double{after.z[r][x]} - before.z[r][x];
        sums.luminance.Add(difference);
        if (mapped) Mark(first + r, x, std::abs(difference));
      }
    if (input_.IsGrey()) return;
    for (int32_t k = 0; k < 3; ++k)
      for (int32_t i = 0; i < after.mn; ++i) sums.colours.Add(double{reduced.Colour(k).x[i]} - input.Colour(k).x[i]);
  }

  void Mark(int32_t r, int32_t x, double difference) {
    if (!std::isfinite(difference)) return;
    float& cell = map_.z[int64_t{r} * map_.n / input_.height][int64_t{x} * map_.m / input_.width];
    cell = std::max(cell, static_cast<float>(difference));
  }

  const PictureShape input_;
  const Rounding rounding_;
  std::string filter_;
  KeptRows kept_;
  ReducedRows exact_, rounded_;
  int32_t taken_ = 0;  // rows of the result
  OfPicture exactly_, asRounded_;
  matrix map_;
};

Certifier::Certifier(const PictureShape& input, const PictureSize& result, int32_t code, const Rounding& rounding)
    : state_(std::make_shared<State>(input, result, code, rounding)) {}

PictureSource Certifier::Input(PictureSource input) const {
  return Watched(std::move(input), [state = state_](Picture rows) { state->TakeInput(std::move(rows)); });
}

PictureSource Certifier::Result(PictureSource result) const {
  return Watched(std::move(result), [state = state_](const Picture& rows) { state->TakeResult(rows); });
}

Certificate Certifier::Made() const { return state_->Made(); }

const matrix& Certifier::Map() const { return state_->Map(); }

std::string InWords(const Certificate& made) {
  const std::string line = "reduced again (" + made.filter +
                           "): " + FiguresInWords({made.largest, made.rms, made.largestRounded, made.rmsRounded});
  return made.colours ? line + " (luminance; red, green and blue " + FiguresInWords(*made.colours) + ")" : line;
}

}  // namespace norv
