#include "kit/proof/same_bytes.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "kit/formats/byte_stream.h"
#include "kit/pictures/image_file.h"
#include "kit/pictures/picture.h"

namespace norv {
namespace {

struct PixelDifference {
  int64_t pixels = 0;
  double largest = 0;

  void Add(const Picture& a, const Picture& b) {
    for (int32_t i = 0; i < a.plane[0].mn; ++i) {
      double most = 0;
      for (int32_t k = 0; k < a.channels; ++k) most = std::max(most, Distance(a.plane[k].x[i], b.plane[k].x[i]));
      pixels += most > 0;
      largest = std::max(largest, most);
    }
  }

 private:
  static double Distance(double a, double b) {
    if (a == b || (std::isnan(a) && std::isnan(b))) return 0;
    const double distance = std::abs(a - b);
    return std::isnan(distance) ? INFINITY : distance;
  }
};

}  // namespace

bool SameBytes(const std::string& a, const LeftOut& leftOut, const std::string& b) {
  const ByteSource first = FromFile(a), second = FromFile(b);
  if (first.size - leftOut.bytes != second.size) return false;
  constexpr int64_t kPart = 1 << 16;
  Bytes here(kPart), there(kPart);
  int64_t at = 0, gap = 0;  // in the second file; bytes passed over in the first
  while (at < second.size) {
    if (leftOut.bytes > 0 && gap == 0 && at == leftOut.at) gap = leftOut.bytes;
    int64_t part = std::min(kPart, second.size - at);
    if (gap == 0 && leftOut.bytes > 0) part = std::min(part, leftOut.at - at);
    const size_t size = static_cast<size_t>(part);
    if (first.read(at + gap, here.data(), size) != size || second.read(at, there.data(), size) != size) return false;
    if (!std::equal(here.begin(), here.begin() + part, there.begin())) return false;
    at += part;
  }
  return true;
}

std::string DifferenceInWords(const std::string& a, const std::string& b) {
  const PictureSource first = OpenImage(a), second = OpenImage(b);
  const PictureShape &one = first.shape, &other = second.shape;
  if (one.width != other.width || one.height != other.height || one.channels != other.channels ||
      one.bits != other.bits)
    return "its shape differs: " + std::to_string(one.width) + " x " + std::to_string(one.height) + " of " +
           std::to_string(one.channels) + " channels of " + std::to_string(one.bits) + " bits, made again " +
           std::to_string(other.width) + " x " + std::to_string(other.height) + " of " +
           std::to_string(other.channels) + " of " + std::to_string(other.bits);
  PixelDifference difference;
  constexpr int32_t kRows = 64;
  for (int32_t row = 0, count; row < one.height; row += count) {
    count = std::min(kRows, one.height - row);
    Picture left(one.width, count, one.channels, one.bits), right(one.width, count, one.channels, one.bits);
    first.read(left, 0, count);
    second.read(right, 0, count);
    difference.Add(left, right);
  }
  if (difference.pixels == 0) return "its pixels are the same, other bytes of the file differ";
  char text[128];
  std::snprintf(text, sizeof text, "its pixels differ: %lld of %lld, by at most %.4g grey levels",
                static_cast<long long>(difference.pixels), static_cast<long long>(one.width) * one.height,
                difference.largest);
  return text;
}

}  // namespace norv
