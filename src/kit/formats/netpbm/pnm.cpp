// PBM, PGM and PPM, as words or as bytes. Written are PGM and PPM as bytes.
#include <algorithm>
#include <cstring>

#include "kit/failure.h"
#include "kit/formats/codec.h"
#include "kit/formats/netpbm/netpbm.h"
#include "platform/console.h"

namespace norv {
namespace {

// P1 to P3 as words, P4 to P6 as bytes: bits of which 1 is black, grey, colours.
class PnmReader {
 public:
  PnmReader(const ByteSource& source, const char* name) : header_(source, name) {
    uint8_t mark[2] = {};
    source.read(0, mark, sizeof mark);
    kind_ = mark[1] - '0';
    shape.width = header_.Number("width", INT32_MAX);
    shape.height = header_.Number("height", INT32_MAX);
    RequirePossible(shape.width, shape.height);
    shape.channels = kind_ % 3 == 0 ? 3 : 1;
    if (!IsBits()) scale_ = NetpbmScale(header_.Number("largest value", 65535));
    shape.bits = scale_.Bits();
    // A word takes at least its own byte.
    const size_t rowBytes = IsWords() ? Count() : IsBits() ? (Count() + 7) / 8 : Count() * scale_.FileBytes();
    header_.RequireRows(shape.height, static_cast<int64_t>(rowBytes));
    if (!IsWords()) row_.resize(rowBytes);
  }

  void ReadRow(uint8_t* row) {
    if (IsWords()) return ReadWords(row);
    if (!header_.cursor.Take(row_.data(), row_.size())) header_.FailWith("the file ends early");
    if (IsBits())
      for (int32_t x = 0; x < shape.width; ++x) row[x] = row_[x / 8] & (0x80 >> x % 8) ? 0 : 255;
    else if (!scale_.Unfold(row_.data(), Count(), row))
      header_.FailWith("a sample larger than the largest value");
  }

  PictureShape shape;

 private:
  bool IsWords() const { return kind_ <= 3; }
  bool IsBits() const { return kind_ % 3 == 1; }
  size_t Count() const { return size_t(shape.width) * shape.channels; }

  void ReadWords(uint8_t* row) {
    for (size_t i = 0; i < Count(); ++i)
      if (IsBits())
        row[i] = Bit() ? 0 : 255;
      else if (!scale_.Put(Value(), i, row))
        header_.FailWith("a sample larger than the largest value");
  }
  // Bits need no white space between.
  bool Bit() {
    int c;
    do c = header_.cursor.Next();
    while (c == ' ' || (c >= '\t' && c <= '\r'));
    if (c != '0' && c != '1') header_.FailWith(c < 0 ? "the file ends early" : "a bit that is neither 0 nor 1");
    return c == '1';
  }
  uint32_t Value() {
    const std::string word = header_.Word();
    if (word.empty()) header_.FailWith("the file ends early");
    uint32_t value = 0;
    for (const char c : word) {
      if (c < '0' || c > '9' || value > 65535) header_.FailWith("a sample that is no number up to 65535");
      value = 10 * value + static_cast<uint32_t>(c - '0');
    }
    return value;
  }

  NetpbmHeader header_;
  int kind_;
  NetpbmScale scale_{1};
  Bytes row_;
};

// Grey in three equal channels, or colours as their luma (ITU-R BT.601), where the format wants it so.
template <typename T>
void InChannels(const uint8_t* row, int32_t width, int32_t from, int32_t to, uint8_t* target) {
  const T* source = reinterpret_cast<const T*>(row);
  T* result = reinterpret_cast<T*>(target);
  if (from == to) {
    std::copy_n(source, int64_t{width} * to, result);
    return;
  }
  for (int32_t x = 0; x < width; ++x, source += from, result += to)
    for (int32_t k = 0; k < to; ++k)
      result[k] =
          to == 3 ? source[0] : static_cast<T>((299u * source[0] + 587u * source[1] + 114u * source[2] + 500) / 1000);
}

class PnmWriter {
 public:
  PnmWriter(const ByteSink& sink, const PictureShape& shape, int32_t channels, const char* name)
      : shape_(shape), channels_(channels), writer_(sink, Header(shape, channels), name) {
    if (shape.channels == 3 && channels == 1) Warn("%s has no place for colours, which become grey", name);
    PictureShape written = shape;
    written.channels = channels;
    converted_.resize(written.RowBytes());
    folded_.resize(written.RowBytes());
  }
  void WriteRow(const uint8_t* row) {
    (shape_.bits == 8 ? InChannels<uint8_t> : InChannels<uint16_t>)(row, shape_.width, shape_.channels, channels_,
                                                                    converted_.data());
    FoldSamples(converted_.data(), size_t(shape_.width) * channels_, shape_.bits, folded_.data());
    writer_.Append(folded_.data(), folded_.size());
  }
  void Finish() {}

 private:
  static std::string Header(const PictureShape& shape, int32_t channels) {
    return std::string(channels == 1 ? "P5" : "P6") + "\n" + std::to_string(shape.width) + " " +
           std::to_string(shape.height) + "\n" + (shape.bits == 8 ? "255" : "65535") + "\n";
  }

  PictureShape shape_;
  int32_t channels_;
  NetpbmWriter writer_;
  Bytes converted_, folded_;
};

template <char words, char bytes>
bool IsKind(std::span<const uint8_t> start) {
  return StartsWithMark(start, words) || StartsWithMark(start, bytes);
}

template <const Codec& codec>
SampleSource OpenPnm(const ByteSource& source, const ReadChoice&) {
  return RowByRow(std::make_shared<PnmReader>(source, codec.name));
}

template <const Codec& codec, int32_t channels>
SampleSink CreatePnm(const ByteSink& sink, const PictureShape& shape, const EncodingChoice&) {
  return ToRowByRow(std::make_shared<PnmWriter>(sink, shape, channels, codec.name));
}

}  // namespace

const Codec kPpm = {.name = "PPM",
                    .extensions = {"ppm", "pnm"},
                    .mostBits = 16,
                    .recognise = IsKind<'3', '6'>,
                    .open = OpenPnm<kPpm>,
                    .create = CreatePnm<kPpm, 3>};

const Codec kPgm = {.name = "PGM",
                    .extensions = {"pgm"},
                    .mostBits = 16,
                    .recognise = IsKind<'2', '5'>,
                    .open = OpenPnm<kPgm>,
                    .create = CreatePnm<kPgm, 1>};

const Codec kPbm = {.name = "PBM", .extensions = {"pbm"}, .recognise = IsKind<'1', '4'>, .open = OpenPnm<kPbm>};

}  // namespace norv
