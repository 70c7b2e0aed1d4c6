// Pictures of four inks or in CIE L*a*b* become sRGB.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "kit/formats/bytes.h"

namespace norv {

// What a pixel of a file is made of where that is neither grey nor RGB.
enum class DeviceColour {
  inks,    // cyan, magenta, yellow, black: 0 is none of it
  cieLab,  // L* 0..100 over all values; a* and b* two's complement, 1 unit (8 bits) or 1/256 (16 bits) a step
  iccLab,  // a* and b* from -128 on, in the same steps; of 16 bits L* 0..100 over 0..0xFF00
  ituLab   // L* 0..100, a* -85.3..84.7, b* -75.3..124.7 over all values (ITU-T T.42)
};

struct DevicePixels {
  DeviceColour kind = DeviceColour::inks;
  int32_t bits = 8;       // of a sample, before and after: 8, or 16 in the machine's own byte order
  int32_t channels = 4;   // samples of a pixel; behind the inks or L*a*b* come alpha and others, which are left out
  bool alpha = false;     // whether the first of those is alpha, not multiplied into the colours
  bool inverted = false;  // inks: 0 is all of it
  std::optional<std::array<double, 2>> white = {};  // L*a*b*: x and y of its white point; none: D50

  int32_t Colours() const { return kind == DeviceColour::inks ? 4 : 3; }
  // Samples of a pixel afterwards.
  int32_t ShownChannels() const { return alpha ? 4 : 3; }
};

class ProfileTransform;

// By the file's own profile: relative colorimetric with black point compensation, as picture editors show such files,
// so that paper becomes white and the darkest inks black. Without a profile inks let (1 - C)(1 - K) of the light pass,
// and L*a*b* is what it is defined as (CIE 15), adapted to D65 by Bradford's matrix; each value is rounded once.
class DisplayConverter {
 public:
  // A profile of other colours or a damaged one is left out with a warning, empty is none.
  DisplayConverter(const DevicePixels& pixels, std::vector<uint8_t> profile);
  ~DisplayConverter();

  // `width` pixels. The first call says what is done on standard error. Throws std::bad_alloc.
  void ConvertRow(const uint8_t* row, uint8_t* shown, int32_t width);

 private:
  void Prepare();
  template <typename T>
  void Convert(const T* row, T* shown, int32_t width);
  template <typename T>
  void InksToRgb(const T* row, T* rgb, int32_t width);
  template <typename T>
  void LabToRgb(const T* row, T* rgb, int32_t width);

  DevicePixels pixels_;
  std::vector<uint8_t> profile_;
  bool prepared_ = false;
  std::unique_ptr<ProfileTransform> transform_;  // null: by definition
  std::array<double, 9> labMatrix_;              // relative X, Y, Z to linear sRGB
  Bytes inks_, rgb_;                             // rows of samples with nothing between them
  std::vector<float> lab_;
};

}  // namespace norv
