#include <algorithm>
#include <bit>
#include <memory>
#include <zlib.h>

#include "kit/formats/codec.h"
#include "kit/formats/png/png_file.h"
#include "kit/formats/png/session.h"
#include "kit/formats/png/strip.h"
#include "kit/metadata/containers.h"
#include "platform/threads/crew.h"
#include "platform/threads/stages.h"

namespace norv {
namespace {

constexpr int kColourTypes[] = {0, PNG_COLOR_TYPE_GRAY, PNG_COLOR_TYPE_GRAY_ALPHA, PNG_COLOR_TYPE_RGB,
                                PNG_COLOR_TYPE_RGB_ALPHA};

// A row of samples as the file has it, most significant byte first.
void PlaceRow(const uint8_t* row, const PictureShape& shape, uint8_t* target) {
  const size_t bytes = shape.RowBytes();
  if (shape.bits == 8 || std::endian::native == std::endian::big) {
    std::copy_n(row, bytes, target);
    return;
  }
  for (size_t i = 0; i < bytes; i += 2) {
    target[i] = row[i + 1];
    target[i + 1] = row[i];
  }
}

// The library writes what stands before and behind the rows; those are compressed here, strips at a time.
class PngWriter {
 public:
  PngWriter(const ByteSink& sink, const PictureShape& shape, const EncodingChoice& choice)
      : session_(sink), shape_(shape), compressor_(choice.Compression(), shape.RowBytes()), ahead_(choice.threads) {
    png_structp png = session_.png;
    session_.Run([&] {
      png_set_user_limits(png, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
      png_set_IHDR(png, session_.info, shape.width, shape.height, shape.bits, kColourTypes[shape.channels],
                   PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
      png_write_info(png, session_.info);
    });
    if (shape.metadata) session_.Write(PngChunks(*shape.metadata));
    strip_ = StripBelow(Bytes(kRowMargin + shape.RowBytes()));
  }

  void WriteRow(const uint8_t* row) {
    const size_t at = strip_->rows.size();
    strip_->rows.resize(at + strip_->Stride());
    PlaceRow(row, shape_, strip_->rows.data() + at + kRowMargin);
    ++written_;
    const bool full =
        strip_->rows.size() / strip_->Stride() == static_cast<size_t>(strip_->before + compressor_.Rows());
    if (full || written_ == shape_.height) CompressStrip();
  }

  void Finish() {
    while (!ahead_.Empty()) PlaceStrip();
    const uint8_t sum[] = {static_cast<uint8_t>(adler_ >> 24), static_cast<uint8_t>(adler_ >> 16),
                           static_cast<uint8_t>(adler_ >> 8), static_cast<uint8_t>(adler_)};
    WriteChunk("IDAT", sum, sizeof sum);
    WriteChunk("IEND", nullptr, 0);
  }

 private:
  std::shared_ptr<PngStrip> StripBelow(Bytes above) const {
    auto strip = std::make_shared<PngStrip>();
    strip->rowBytes = shape_.RowBytes();
    strip->pixelBytes = static_cast<int32_t>(shape_.PixelBytes());
    strip->before = static_cast<int64_t>(above.size() / strip->Stride());
    strip->rows = std::move(above);
    strip->rows.reserve(strip->rows.size() +
                        static_cast<size_t>(std::min<int64_t>(compressor_.Rows(), shape_.height - written_)) *
                            strip->Stride());
    return strip;
  }

  void CompressStrip() {
    strip_->last = written_ == shape_.height;
    const Bytes& rows = strip_->rows;
    const size_t kept = std::min(rows.size(), static_cast<size_t>(compressor_.Before()) * strip_->Stride());
    const auto next = StripBelow(Bytes(rows.end() - static_cast<ptrdiff_t>(kept), rows.end()));
    if (ahead_.Full()) PlaceStrip();
    ahead_.Begin([compressor = compressor_, strip = strip_] {
      const InStage encoding(Stage::encoding);
      return compressor.Compress(*strip);
    });
    strip_ = next;
  }

  void PlaceStrip() {
    CompressedStrip strip = ahead_.Next();
    if (first_) {
      constexpr uint8_t kZlib[] = {0x78, 0x5e};  // deflate with matches of 32 kB (RFC 1950)
      strip.bytes.insert(strip.bytes.begin(), std::begin(kZlib), std::end(kZlib));
      first_ = false;
    }
    constexpr int32_t kBase = 65521;  // of the sum: no more counts of the length, for which not every system has room
    adler_ = static_cast<uint32_t>(adler32_combine(adler_, strip.adler, static_cast<z_off_t>(strip.length % kBase)));
    WriteChunk("IDAT", strip.bytes.data(), strip.bytes.size());
  }

  void WriteChunk(const char* name, const uint8_t* bytes, size_t size) {
    session_.Run([&] { png_write_chunk(session_.png, reinterpret_cast<png_const_bytep>(name), bytes, size); });
  }

  PngSession session_;
  const PictureShape shape_;
  const StripCompressor compressor_;
  Ahead<CompressedStrip> ahead_;
  std::shared_ptr<PngStrip> strip_;  // that is being filled
  int32_t written_ = 0;
  bool first_ = true;
  uint32_t adler_ = 1;
};

}  // namespace

SampleSink CreatePng(const ByteSink& sink, const PictureShape& shape, const EncodingChoice& choice) {
  return ToRowByRow(std::make_shared<PngWriter>(sink, shape, choice));
}

}  // namespace norv
