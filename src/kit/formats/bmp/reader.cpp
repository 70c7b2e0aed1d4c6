#include <algorithm>
#include <bit>

#include "kit/failure.h"
#include "kit/formats/bmp/bmp.h"
#include "kit/formats/bmp/header.h"
#include "kit/formats/byte_cursor.h"

namespace norv {
namespace {

// The bits of a pixel that one channel has, unfolded to all of 8 or 16 bits.
struct ChannelBits {
  uint32_t mask = 0, most = 0;
  int shift = 0;

  explicit ChannelBits(uint32_t bits) : mask(bits), shift(bits ? std::countr_zero(bits) : 0) { most = mask >> shift; }
  uint32_t Of(uint32_t pixel, uint32_t full) const {
    return most == 0 ? 0 : static_cast<uint32_t>((uint64_t{(pixel & mask) >> shift} * full + most / 2) / most);
  }
};

// Palette indices from pairs of count and value, with escapes (a zero first) for the end of a row, the end of all, a
// leap, and pixels that are given one by one. What is leapt over keeps index 0.
class RunReader {
 public:
  RunReader(const ByteSource& source, const BmpHeader& header)
      : cursor_(source, header.pixels),
        width_(header.width),
        height_(header.height),
        nibbles_(header.packing == BmpPacking::runsOfNibbles),
        indices(static_cast<size_t>(int64_t{width_} * height_)) {
    while (!done_ && Step()) {
    }
    if (!done_ && (y_ < height_ - 1 || (y_ == height_ - 1 && x_ < width_))) Fail("BMP: the file ends early");
  }

 private:
  // False where the file ends.
  bool Step() {
    const int count = cursor_.Next(), value = cursor_.Next();
    if (value < 0) return false;
    if (count > 0)
      for (int i = 0; i < count; ++i) Put(nibbles_ ? (i % 2 ? value & 15 : value >> 4) : value);
    else if (value == 0)
      x_ = 0, ++y_;
    else if (value == 1)
      done_ = true;
    else if (value == 2)
      return Leap();
    else
      return Literal(value);
    return true;
  }
  bool Leap() {
    const int right = cursor_.Next(), up = cursor_.Next();
    if (up < 0) return false;
    x_ = std::min(x_ + right, width_);
    y_ += up;
    return true;
  }
  // Up to whole words of 16 bits.
  bool Literal(int count) {
    const size_t bytes = static_cast<size_t>(nibbles_ ? (count + 1) / 2 : count);
    uint8_t values[256];
    if (!cursor_.Take(values, bytes + bytes % 2)) return false;
    for (int i = 0; i < count; ++i) Put(!nibbles_ ? values[i] : i % 2 ? values[i / 2] & 15 : values[i / 2] >> 4);
    return true;
  }
  void Put(int index) {
    if (y_ >= height_) Fail("BMP: more rows than the header says");
    if (x_ < width_) indices[static_cast<size_t>(int64_t{y_} * width_ + x_)] = static_cast<uint8_t>(index);
    x_ = std::min(x_ + 1, width_);
  }

  ByteCursor cursor_;
  int32_t width_, height_, x_ = 0;
  int64_t y_ = 0;
  bool nibbles_, done_ = false;

 public:
  Bytes indices;  // the lowest row first
};

class BmpReader {
 public:
  explicit BmpReader(const ByteSource& source) : source_(source), header_(source) {
    shape.width = header_.width;
    shape.height = header_.height;
    shape.channels = header_.HasPalette() ? (header_.greyPalette ? 1 : 3) : header_.masks[3] ? 4 : 3;
    for (const uint32_t mask : header_.masks) {
      channels_.emplace_back(mask);
      if (channels_.back().most > 255) shape.bits = 16;
    }
    if (header_.resolution) {
      const auto metadata = std::make_shared<Metadata>();
      metadata->resolution = header_.resolution;
      shape.metadata = metadata;
    }
    if (header_.packing == BmpPacking::plain) {
      // The last row may lack what fills it up.
      const int64_t used = (int64_t{header_.width} * header_.bits + 7) / 8;
      if (header_.pixels + header_.Stride() * (shape.height - 1) + used > source.size) Fail("BMP: the file ends early");
      row_.resize(static_cast<size_t>(header_.Stride()));
    } else {
      RequireLikely(shape, source.size);
      RequireMemory(int64_t{shape.width} * shape.height);
      indices_ = RunReader(source, header_).indices;
    }
  }

  void ReadRow(uint8_t* target) {
    const int64_t r = header_.topDown ? next_ : shape.height - 1 - next_;
    ++next_;
    const uint8_t* row = row_.data();
    if (!indices_.empty())
      row = indices_.data() + r * shape.width;
    else if (source_.read(header_.pixels + r * header_.Stride(), row_.data(), row_.size()) * 8 <
             static_cast<uint64_t>(shape.width) * header_.bits)
      Fail("BMP: the file ends early");
    if (header_.HasPalette())
      FromPalette(row, target);
    else if (header_.bits == 24)
      FromTriples(row, target);
    else
      (shape.bits == 8 ? &BmpReader::FromMasks<uint8_t> : &BmpReader::FromMasks<uint16_t>)(*this, row, target);
  }

  PictureShape shape;

 private:
  void FromPalette(const uint8_t* row, uint8_t* target) const {
    const int32_t bits = indices_.empty() ? header_.bits : 8;
    for (int32_t x = 0; x < shape.width; ++x) {
      const int64_t at = int64_t{x} * bits;
      const int index = row[at / 8] >> (8 - bits - at % 8) & ((1 << bits) - 1);
      target = std::copy_n(&header_.colours[3 * index], shape.channels, target);
    }
  }
  void FromTriples(const uint8_t* row, uint8_t* target) const {
    for (int32_t x = 0; x < shape.width; ++x, row += 3)
      for (int k = 2; k >= 0; --k) *target++ = row[k];
  }
  template <typename T>
  static void FromMasks(const BmpReader& self, const uint8_t* row, uint8_t* target) {
    T* values = reinterpret_cast<T*>(target);
    const int bytes = self.header_.bits / 8;
    for (int32_t x = 0; x < self.shape.width; ++x, row += bytes) {
      uint32_t pixel = 0;
      for (int i = 0; i < bytes; ++i) pixel |= uint32_t{row[i]} << (8 * i);
      for (int32_t k = 0; k < self.shape.channels; ++k)
        *values++ = static_cast<T>(self.channels_[k].Of(pixel, static_cast<T>(-1)));
    }
  }

  ByteSource source_;
  BmpHeader header_;
  std::vector<ChannelBits> channels_;
  Bytes row_, indices_;
  int32_t next_ = 0;
};

}  // namespace

SampleSource OpenBmp(const ByteSource& source) { return RowByRow(std::make_shared<BmpReader>(source)); }

}  // namespace norv
