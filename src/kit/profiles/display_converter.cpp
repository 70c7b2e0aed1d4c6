#include "kit/profiles/display_converter.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "kit/profiles/lab.h"
#include "kit/profiles/profile_transform.h"
#include "platform/console.h"

namespace norv {
namespace {

template <typename T>
constexpr uint32_t kMost = std::numeric_limits<T>::max();

// The share of light that passes an ink and black, rounded.
template <typename T>
T Passed(T ink, T black) {
  constexpr uint32_t most = kMost<T>;
  return static_cast<T>(((most - ink) * (most - black) + most / 2) / most);
}

template <typename T>
T Rounded(float share) {
  return static_cast<T>(std::floor(std::clamp(share, 0.0f, 1.0f) * double{kMost<T>} + 0.5));
}

// L*, a* and b* of a pixel.
template <typename T>
void ReadLab(const T* pixel, DeviceColour kind, float* lab) {
  constexpr float most = kMost<T>, unit = sizeof(T) == 2 ? 256 : 1;
  const float whole = kind == DeviceColour::iccLab && sizeof(T) == 2 ? 0xFF00 : most;
  lab[0] = 100 * pixel[0] / whole;
  for (int k = 1; k < 3; ++k)
    lab[k] = kind == DeviceColour::cieLab   ? static_cast<std::make_signed_t<T>>(pixel[k]) / unit
             : kind == DeviceColour::iccLab ? pixel[k] / unit - 128
             : k == 1                       ? (170.0f * pixel[1] * (255 / most) - 21760) / 255
                                            : (200.0f * pixel[2] * (255 / most) - 19200) / 255;
}

}  // namespace

DisplayConverter::DisplayConverter(const DevicePixels& pixels, std::vector<uint8_t> profile)
    : pixels_(pixels), profile_(std::move(profile)), labMatrix_(LabMatrix(pixels.white)) {}

DisplayConverter::~DisplayConverter() = default;

// Not before the first row: whoever asks for a picture's size only need not hear of its colours.
void DisplayConverter::Prepare() {
  if (std::exchange(prepared_, true)) return;
  const bool lab = pixels_.kind != DeviceColour::inks;
  const char *name = lab ? "L*a*b*" : "CMYK", *reason = "";
  if (!profile_.empty()) {
    transform_ = ProfileTransform::Open(profile_, lab, pixels_.bits, reason);
    if (!transform_) Warn("the colour profile is left out: %s", reason);
  }
  Warn("%s is converted to sRGB %s", name, transform_ ? "by its profile" : "without a profile");
}

void DisplayConverter::ConvertRow(const uint8_t* row, uint8_t* shown, int32_t width) {
  Prepare();
  if (pixels_.bits == 16)
    Convert(reinterpret_cast<const uint16_t*>(row), reinterpret_cast<uint16_t*>(shown), width);
  else
    Convert(row, shown, width);
}

template <typename T>
void DisplayConverter::Convert(const T* row, T* shown, int32_t width) {
  rgb_.resize(3 * sizeof(T) * size_t(width));
  T* rgb = reinterpret_cast<T*>(rgb_.data());
  if (pixels_.kind == DeviceColour::inks)
    InksToRgb(row, rgb, width);
  else
    LabToRgb(row, rgb, width);
  for (int32_t x = 0; x < width; ++x, row += pixels_.channels) {
    for (int k = 0; k < 3; ++k) *shown++ = *rgb++;
    if (pixels_.alpha) *shown++ = row[pixels_.Colours()];
  }
}

template <typename T>
void DisplayConverter::InksToRgb(const T* row, T* rgb, int32_t width) {
  inks_.resize(4 * sizeof(T) * size_t(width));
  T* inks = reinterpret_cast<T*>(inks_.data());
  const T flip = pixels_.inverted ? static_cast<T>(kMost<T>) : T{0};
  for (int32_t x = 0; x < width; ++x)
    for (int k = 0; k < 4; ++k) inks[4 * x + k] = row[size_t(x) * pixels_.channels + k] ^ flip;
  if (transform_) return transform_->Convert(inks, rgb, width);
  for (int32_t x = 0; x < width; ++x, inks += 4)
    for (int k = 0; k < 3; ++k) *rgb++ = Passed(inks[k], inks[3]);
}

template <typename T>
void DisplayConverter::LabToRgb(const T* row, T* rgb, int32_t width) {
  lab_.resize(6 * size_t(width));
  float *lab = lab_.data(), *shares = lab + 3 * size_t(width);
  for (int32_t x = 0; x < width; ++x) ReadLab(row + size_t(x) * pixels_.channels, pixels_.kind, lab + 3 * x);
  if (transform_)
    transform_->Convert(lab, shares, width);
  else
    for (int32_t x = 0; x < width; ++x) LabToSrgb(lab + 3 * x, labMatrix_, shares + 3 * x);
  for (int32_t i = 0; i < 3 * width; ++i) rgb[i] = Rounded<T>(shares[i]);
}

}  // namespace norv
