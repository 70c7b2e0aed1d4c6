#include <algorithm>
#include <bit>
#include <memory>
#include <utility>

#include "kit/formats/codec.h"
#include "kit/formats/tiff/tiff.h"
#include "kit/formats/tiff/tiff_file.h"
#include "kit/formats/tiff/tiff_metadata.h"
#include "kit/metadata/containers.h"
#include "kit/metadata/exif.h"

namespace norv {
namespace {

// Offsets of 64 bits where those of 32 might not do: compression makes noise half as large again.
bool WantsWideOffsets(const PictureShape& shape) { return shape.RowBytes() * shape.height > (size_t{5} << 29); }

std::string ModeFor(const PictureShape& shape) {
  return std::string("wm") + (WantsWideOffsets(shape) ? "8" : "") + (WantsBigEndian(shape.metadata.get()) ? "b" : "l");
}

class TiffWriter {
 public:
  TiffWriter(const ByteSink& sink, const PictureShape& shape, bool uncompressed)
      : file_({}, sink, ModeFor(shape).c_str()),
        height_(static_cast<uint32_t>(shape.height)),
        uncompressed_(uncompressed),
        row_(shape.RowBytes()),
        metadata_(shape.metadata) {
    file_.Set(TIFFTAG_IMAGEWIDTH, shape.width);
    file_.Set(TIFFTAG_IMAGELENGTH, shape.height);
    file_.Set(TIFFTAG_BITSPERSAMPLE, shape.bits);
    file_.Set(TIFFTAG_SAMPLESPERPIXEL, shape.channels);
    file_.Set(TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    file_.Set(TIFFTAG_PHOTOMETRIC, shape.channels > 2 ? PHOTOMETRIC_RGB : PHOTOMETRIC_MINISBLACK);
    file_.Set(TIFFTAG_COMPRESSION, uncompressed ? COMPRESSION_NONE : COMPRESSION_LZW);
    file_.Set(TIFFTAG_SAMPLEFORMAT, shape.bits == 32 ? SAMPLEFORMAT_IEEEFP : SAMPLEFORMAT_UINT);
    if (!uncompressed) file_.Set(TIFFTAG_PREDICTOR, shape.bits == 32 ? PREDICTOR_FLOATINGPOINT : PREDICTOR_HORIZONTAL);
    file_.Set(TIFFTAG_ROWSPERSTRIP, TIFFDefaultStripSize(file_.tiff, 0));
    const uint16_t kind = EXTRASAMPLE_UNASSALPHA;
    if (shape.channels % 2 == 0) file_.Require(TIFFSetField(file_.tiff, TIFFTAG_EXTRASAMPLES, 1, &kind));
  }
  void WriteRow(const uint8_t* row) {
    std::copy_n(row, row_.size(), row_.data());
    file_.Require(TIFFWriteScanline(file_.tiff, row_.data(), next_++, 0) == 1);
  }
  void Finish() {
    if (uncompressed_ && next_ < height_) PassRest();
    WriteLastDirectory(file_, metadata_.get());
    file_.Require(TIFFFlush(file_.tiff));
    TIFFClose(std::exchange(file_.tiff, nullptr));
  }

 private:
  // Rows that others have put at their places: the library counts them, nothing is written.
  void PassRest() {
    file_.Require(TIFFFlushData(file_.tiff));
    const ByteSink sink = std::exchange(file_.sink, [](int64_t, const void*, size_t) { return true; });
    while (next_ < height_) file_.Require(TIFFWriteScanline(file_.tiff, row_.data(), next_++, 0) == 1);
    file_.Require(TIFFFlushData(file_.tiff));
    file_.sink = sink;
  }

  TiffFile file_;
  const uint32_t height_;
  const bool uncompressed_;
  uint32_t next_ = 0;
  Bytes row_;  // the predictor works in place
  std::shared_ptr<const Metadata> metadata_;
};

}  // namespace

SampleSink CreateTiff(const ByteSink& sink, const PictureShape& shape, const EncodingChoice& choice) {
  return ToRowByRow(std::make_shared<TiffWriter>(sink, shape, choice.Uncompressed()));
}

// Behind the file's head the library writes strip after strip. Only an EXIF block that came with the picture asks for
// big-endian numbers.
std::optional<RowPlaces> PlacesInTiff(const PictureShape& shape, const EncodingChoice& choice) {
  if (!choice.Uncompressed()) return {};
  const Metadata* metadata = choice.strip ? nullptr : shape.metadata.get();
  const bool bigEndian = WantsBigEndian(metadata) && IsExif(metadata->exif);
  return RowPlaces{WantsWideOffsets(shape) ? 16 : 8, bigEndian != (std::endian::native == std::endian::big)};
}

}  // namespace norv
