// PFM: grey or colours as floats, 0 to 1 from black to white and beyond, the lowest row first.
#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdlib>
#include <cstring>

#include "kit/failure.h"
#include "kit/formats/codec.h"
#include "kit/formats/netpbm/netpbm.h"

namespace norv {
namespace {

class PfmReader {
 public:
  explicit PfmReader(const ByteSource& source) : source_(source) {
    NetpbmHeader header(source, "PFM");
    uint8_t mark[2] = {};
    source.read(0, mark, sizeof mark);
    shape.width = header.Number("width", INT32_MAX);
    shape.height = header.Number("height", INT32_MAX);
    RequirePossible(shape.width, shape.height);
    shape.channels = mark[1] == 'F' ? 3 : 1;
    shape.bits = 32;
    // Of the scale only the sign has a meaning that readers agree on: below 0 the low byte comes first.
    const std::string word = header.Word();
    char* end = nullptr;
    const double scale = std::strtod(word.c_str(), &end);
    if (*end != '\0' || !std::isfinite(scale) || scale == 0) header.FailWith("a scale that makes no sense");
    swapped_ = (scale < 0) != (std::endian::native == std::endian::little);
    rows_ = header.cursor.Position();
    header.RequireRows(shape.height, static_cast<int64_t>(shape.RowBytes()));
  }
  void ReadRow(uint8_t* row) {
    const int64_t place = rows_ + static_cast<int64_t>(shape.RowBytes()) * (shape.height - ++next_);
    if (source_.read(place, row, shape.RowBytes()) != shape.RowBytes()) Fail("PFM: the file ends early");
    if (swapped_)
      for (uint8_t* value = row; value != row + shape.RowBytes(); value += 4) std::reverse(value, value + 4);
  }

  PictureShape shape;

 private:
  ByteSource source_;
  bool swapped_ = false;
  int64_t rows_ = 0;
  int32_t next_ = 0;
};

class PfmWriter {
 public:
  PfmWriter(const ByteSink& sink, const PictureShape& shape) : sink_(sink), shape_(shape) {
    const std::string header = std::string(shape.channels == 3 ? "PF" : "Pf") + "\n" + std::to_string(shape.width) +
                               " " + std::to_string(shape.height) +
                               (std::endian::native == std::endian::little ? "\n-1.0\n" : "\n1.0\n");
    rows_ = static_cast<int64_t>(header.size());
    Put(0, header.data(), header.size());
  }
  void WriteRow(const uint8_t* row) {
    const size_t bytes = shape_.RowBytes();
    Put(rows_ + static_cast<int64_t>(bytes) * (shape_.height - ++next_), row, bytes);
  }
  void Finish() {}

 private:
  void Put(int64_t place, const void* bytes, size_t size) {
    if (!sink_(place, bytes, size)) Fail("PFM: cannot be written");
  }

  ByteSink sink_;
  PictureShape shape_;
  int64_t rows_ = 0;
  int32_t next_ = 0;
};

bool IsPfm(std::span<const uint8_t> start) { return StartsWithMark(start, 'F') || StartsWithMark(start, 'f'); }

SampleSource OpenPfm(const ByteSource& source, const ReadChoice&) {
  return RowByRow(std::make_shared<PfmReader>(source));
}

SampleSink CreatePfm(const ByteSink& sink, const PictureShape& shape, const EncodingChoice&) {
  return ToRowByRow(std::make_shared<PfmWriter>(sink, shape));
}

}  // namespace

const Codec kPfm = {.name = "PFM",
                    .extensions = {"pfm"},
                    .leastBits = 32,
                    .mostBits = 32,
                    .recognise = IsPfm,
                    .open = OpenPfm,
                    .create = CreatePfm};

}  // namespace norv
