// Pictures as cameras and web pages leave them: compressed before anybody enlarges them.
#pragma once

#include <cstdint>
#include <string>

#include "linear/matrix2.h"

namespace norv {

// Qualities of JPEG files, 1 to 100; both 0: not compressed.
struct QualityRange {
  int32_t low = 0, high = 0;
  bool Empty() const { return high == 0; }
};

// "30-95", or one number. Throws WrongUsage for anything else.
QualityRange ReadQualityRange(const std::string& words);

// The luminance (0..255) through JPEG and back, in place: whole grey levels.
void CompressLuminance(matrix& plane, int32_t quality);

// The same in bands of rows, each of a quality out of the range that follows from the name and its place alone.
void CompressInBands(matrix& plane, const QualityRange& range, const std::string& name);

}  // namespace norv
