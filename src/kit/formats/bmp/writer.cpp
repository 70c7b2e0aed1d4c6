#include <cmath>

#include "kit/failure.h"
#include "kit/formats/bmp/bmp.h"
#include "kit/metadata/metadata.h"

namespace norv {
namespace {

constexpr uint32_t kFileHeader = 14, kInfo = 40, kInfoWithMasks = 108, kPalette = 4 * 256;

class BmpWriter {
 public:
  BmpWriter(const ByteSink& sink, const PictureShape& shape)
      : sink_(sink), shape_(shape), bytesPerPixel_(shape.HasAlpha() ? 4 : shape.channels) {
    row_.resize((size_t(shape.width) * bytesPerPixel_ + 3) / 4 * 4);
    pixels_ = kFileHeader + (shape.HasAlpha() ? kInfoWithMasks : kInfo) + (shape.channels == 1 ? kPalette : 0);
    const int64_t size = pixels_ + static_cast<int64_t>(row_.size()) * shape.height;
    if (size > UINT32_MAX) Fail("BMP: %d x %d pixels are more than a file can hold", shape.width, shape.height);
    AddFileHeader(static_cast<uint32_t>(size));
    AddInfo();
    for (uint32_t i = 0; shape.channels == 1 && i < 256; ++i) Add(i * 0x010101, 4);
    Put(0, header_);
  }

  // The lowest row comes first in the file.
  void WriteRow(const uint8_t* source) {
    const int32_t colours = shape_.IsGrey() ? 1 : 3;
    uint8_t* target = row_.data();
    for (int32_t x = 0; x < shape_.width; ++x, source += shape_.channels) {
      if (bytesPerPixel_ == 1) *target++ = *source;
      for (int k = 2; k >= 0 && bytesPerPixel_ > 1; --k) *target++ = source[colours == 1 ? 0 : k];
      if (shape_.HasAlpha()) *target++ = source[colours];
    }
    Put(pixels_ + static_cast<int64_t>(row_.size()) * (shape_.height - ++next_), row_);
  }
  void Finish() {}

 private:
  void Add(uint32_t value, int bytes) {
    for (int i = 0; i < bytes; ++i) header_.push_back(static_cast<uint8_t>(value >> (8 * i)));
  }
  void AddFileHeader(uint32_t size) {
    Add('B' | 'M' << 8, 2);
    Add(size, 4);
    Add(0, 4);
    Add(static_cast<uint32_t>(pixels_), 4);
  }
  void AddInfo() {
    constexpr uint32_t kMasks = 3, kSrgb = 0x73524742;
    const bool alpha = shape_.HasAlpha();
    Add(alpha ? kInfoWithMasks : kInfo, 4);
    Add(static_cast<uint32_t>(shape_.width), 4);
    Add(static_cast<uint32_t>(shape_.height), 4);
    Add(1, 2);
    Add(static_cast<uint32_t>(8 * bytesPerPixel_), 2);
    Add(alpha ? kMasks : 0, 4);
    Add(static_cast<uint32_t>(row_.size() * shape_.height), 4);
    AddResolution();
    Add(0, 4);  // all colours of the palette
    Add(0, 4);
    if (!alpha) return;
    for (const uint32_t mask : {0xFF0000u, 0xFF00u, 0xFFu, 0xFF000000u}) Add(mask, 4);
    Add(kSrgb, 4);
    for (int i = 0; i < 12; ++i) Add(0, 4);  // end points and gammas, without meaning for sRGB
  }
  void AddResolution() {
    const auto whole = [](double value) {
      return value >= 0.5 && value < INT32_MAX ? static_cast<uint32_t>(std::lround(value)) : 0;
    };
    constexpr double kInch = 0.0254;
    const auto resolution = shape_.metadata ? shape_.metadata->resolution : std::nullopt;
    const bool known = resolution && resolution->unit != ResolutionUnit::none;
    const double scale = known && resolution->unit == ResolutionUnit::inch ? 1 / kInch : 1;
    Add(known ? whole(resolution->x * scale) : 0, 4);
    Add(known ? whole(resolution->y * scale) : 0, 4);
  }
  void Put(int64_t place, const Bytes& bytes) {
    if (!sink_(place, bytes.data(), bytes.size())) Fail("BMP: cannot be written");
  }

  ByteSink sink_;
  PictureShape shape_;
  int32_t bytesPerPixel_, next_ = 0;
  int64_t pixels_ = 0;
  Bytes header_, row_;
};

}  // namespace

SampleSink CreateBmp(const ByteSink& sink, const PictureShape& shape) {
  return ToRowByRow(std::make_shared<BmpWriter>(sink, shape));
}

}  // namespace norv
