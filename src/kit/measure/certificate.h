// "Nothing invented": how far a result, reduced again by the filter that is taken to have made the input, is from that.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "kit/pictures/destination.h"
#include "kit/pictures/picture_rows.h"
#include "kit/scale/wanted_size.h"
#include "linear/matrix2.h"

namespace norv {

// Grey levels, 0..255, of whatever precision the files are.
struct Closeness {
  double largest = 0, rms = 0;                // root mean square, before rounding and clipping
  double largestRounded = 0, rmsRounded = 0;  // of what is handed to the file's format: rounded, clipped, dithered
};

// Of the samples as they are in the files (no light, no profile), without alpha, by which colours are multiplied.
struct Certificate {
  std::string filter;                         // "cubic, order -1"
  double largest = 0, rms = 0;                // of the luminance (0.299 R + 0.587 G + 0.114 B), which is what most
  double largestRounded = 0, rmsRounded = 0;  // ways work on; of grey pictures all there is
  std::optional<Closeness> colours = {};      // of the three colours together; none: grey
};

// The line that people read.
std::string InWords(const Certificate& certificate);

// Compares a result with the input that it is made of while the rows of both pass by on their way: between them the
// input's are kept, so that nothing is read twice and memory grows with neither as long as the result's rows follow.
class Certifier {
 public:
  // code: of the filter (FilterOfKernelCode). Both sides of the result are a whole number of times those of the input;
  // for other sizes the cubic filter is stretched by the ratio. Throws a Failure for an unknown code.
  Certifier(const PictureShape& input, const PictureSize& result, int32_t code, const Rounding& rounding);

  // The same rows, seen on the way.
  PictureSource Input(PictureSource input) const;
  PictureSource Result(PictureSource result) const;

  // Once all rows of both have passed. Pixels whose difference is no finite number have no part in it.
  Certificate Made() const;
  // The largest differences in luminance, before rounding: the input's picture in at most 512 cells a side.
  const matrix& Map() const;

 private:
  class State;
  std::shared_ptr<State> state_;
};

}  // namespace norv
