#include <algorithm>
#include <memory>
#include <utility>

#include "kit/formats/codec.h"
#include "kit/formats/tiff/tiff.h"
#include "kit/formats/tiff/tiff_file.h"
#include "kit/formats/tiff/tiff_metadata.h"
#include "kit/metadata/containers.h"

namespace norv {
namespace {

// Offsets of 64 bits where those of 32 might not do: compression makes noise half as large again.
std::string ModeFor(const PictureShape& shape) {
  const bool wide = shape.RowBytes() * shape.height > (size_t{5} << 29);
  return std::string("wm") + (wide ? "8" : "") + (WantsBigEndian(shape.metadata.get()) ? "b" : "l");
}

class TiffWriter {
 public:
  TiffWriter(const ByteSink& sink, const PictureShape& shape)
      : file_({}, sink, ModeFor(shape).c_str()), row_(shape.RowBytes()), metadata_(shape.metadata) {
    file_.Set(TIFFTAG_IMAGEWIDTH, shape.width);
    file_.Set(TIFFTAG_IMAGELENGTH, shape.height);
    file_.Set(TIFFTAG_BITSPERSAMPLE, shape.bits);
    file_.Set(TIFFTAG_SAMPLESPERPIXEL, shape.channels);
    file_.Set(TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    file_.Set(TIFFTAG_PHOTOMETRIC, shape.channels > 2 ? PHOTOMETRIC_RGB : PHOTOMETRIC_MINISBLACK);
    file_.Set(TIFFTAG_COMPRESSION, COMPRESSION_LZW);
    file_.Set(TIFFTAG_SAMPLEFORMAT, shape.bits == 32 ? SAMPLEFORMAT_IEEEFP : SAMPLEFORMAT_UINT);
    file_.Set(TIFFTAG_PREDICTOR, shape.bits == 32 ? PREDICTOR_FLOATINGPOINT : PREDICTOR_HORIZONTAL);
    file_.Set(TIFFTAG_ROWSPERSTRIP, TIFFDefaultStripSize(file_.tiff, 0));
    const uint16_t kind = EXTRASAMPLE_UNASSALPHA;
    if (shape.channels % 2 == 0) file_.Require(TIFFSetField(file_.tiff, TIFFTAG_EXTRASAMPLES, 1, &kind));
  }
  void WriteRow(const uint8_t* row) {
    std::copy_n(row, row_.size(), row_.data());
    file_.Require(TIFFWriteScanline(file_.tiff, row_.data(), next_++, 0) == 1);
  }
  void Finish() {
    WriteLastDirectory(file_, metadata_.get());
    file_.Require(TIFFFlush(file_.tiff));
    TIFFClose(std::exchange(file_.tiff, nullptr));
  }

 private:
  TiffFile file_;
  uint32_t next_ = 0;
  Bytes row_;  // the predictor works in place
  std::shared_ptr<const Metadata> metadata_;
};

}  // namespace

SampleSink CreateTiff(const ByteSink& sink, const PictureShape& shape, const EncodingChoice&) {
  return ToRowByRow(std::make_shared<TiffWriter>(sink, shape));
}

}  // namespace norv
