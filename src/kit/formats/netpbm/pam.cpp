// PAM: grey or colours, with or without alpha, and bits.
#include <map>

#include "kit/failure.h"
#include "kit/formats/codec.h"
#include "kit/formats/netpbm/netpbm.h"

namespace norv {
namespace {

struct TupleType {
  const char* name;
  int32_t channels;
};

// Of those with as many channels the first is written.
constexpr TupleType kTupleTypes[] = {{"GRAYSCALE", 1}, {"GRAYSCALE_ALPHA", 2}, {"RGB", 3},
                                     {"RGB_ALPHA", 4}, {"BLACKANDWHITE", 1},   {"BLACKANDWHITE_ALPHA", 2}};

class PamReader {
 public:
  explicit PamReader(const ByteSource& source) : header_(source, "PAM") {
    std::string type;
    int32_t most = 0;
    for (std::string word = header_.Word(); word != "ENDHDR"; word = header_.Word()) {
      if (word == "WIDTH")
        shape.width = header_.Number("width", INT32_MAX);
      else if (word == "HEIGHT")
        shape.height = header_.Number("height", INT32_MAX);
      else if (word == "DEPTH")
        shape.channels = header_.Number("depth", 4);
      else if (word == "MAXVAL")
        most = header_.Number("largest value", 65535);
      else if (word == "TUPLTYPE")
        type = header_.Word();
      else
        header_.FailWith("a header that makes no sense");
    }
    RequirePossible(shape.width, shape.height);
    if (shape.channels == 0 || most == 0 || !IsType(type)) header_.FailWith("tuples of an unknown type");
    scale_ = NetpbmScale(most);
    shape.bits = scale_.Bits();
    header_.RequireRows(shape.height, static_cast<int64_t>(shape.RowBytes()));
    row_.resize(shape.RowBytes());
  }
  void ReadRow(uint8_t* row) {
    if (!header_.cursor.Take(row_.data(), row_.size())) header_.FailWith("the file ends early");
    if (!scale_.Unfold(row_.data(), size_t(shape.width) * shape.channels, row))
      header_.FailWith("a sample larger than the largest value");
  }

  PictureShape shape;

 private:
  // None given means what so many channels usually are.
  bool IsType(const std::string& name) const {
    for (const TupleType& type : kTupleTypes)
      if (name == type.name) return shape.channels == type.channels;
    return name.empty();
  }

  NetpbmHeader header_;
  NetpbmScale scale_{1};
  Bytes row_;
};

class PamWriter {
 public:
  PamWriter(const ByteSink& sink, const PictureShape& shape)
      : shape_(shape), writer_(sink, Header(shape), "PAM"), row_(shape.RowBytes()) {}
  void WriteRow(const uint8_t* row) {
    FoldSamples(row, size_t(shape_.width) * shape_.channels, shape_.bits, row_.data());
    writer_.Append(row_.data(), row_.size());
  }
  void Finish() {}

 private:
  static std::string Header(const PictureShape& shape) {
    return "P7\nWIDTH " + std::to_string(shape.width) + "\nHEIGHT " + std::to_string(shape.height) + "\nDEPTH " +
           std::to_string(shape.channels) + "\nMAXVAL " + (shape.bits == 8 ? "255" : "65535") + "\nTUPLTYPE " +
           kTupleTypes[shape.channels - 1].name + "\nENDHDR\n";
  }

  PictureShape shape_;
  NetpbmWriter writer_;
  Bytes row_;
};

bool IsPam(std::span<const uint8_t> start) { return StartsWithMark(start, '7'); }

SampleSource OpenPam(const ByteSource& source, const ReadChoice&) {
  return RowByRow(std::make_shared<PamReader>(source));
}

SampleSink CreatePam(const ByteSink& sink, const PictureShape& shape, const EncodingChoice&) {
  return ToRowByRow(std::make_shared<PamWriter>(sink, shape));
}

}  // namespace

const Codec kPam = {.name = "PAM",
                    .extensions = {"pam"},
                    .mostBits = 16,
                    .alpha = true,
                    .recognise = IsPam,
                    .open = OpenPam,
                    .create = CreatePam};

}  // namespace norv
