// Row by row whatever the file's samples are; what only the library can make colours of comes through it as a whole.
#include <algorithm>
#include <memory>
#include <type_traits>

#include "kit/failure.h"
#include "kit/formats/codec.h"
#include "kit/formats/tiff/device_colour.h"
#include "kit/formats/tiff/layout.h"
#include "kit/formats/tiff/raw_rows.h"
#include "kit/formats/tiff/tiff.h"
#include "kit/formats/tiff/tiff_metadata.h"
#include "kit/formats/tiff/values.h"
#include "platform/memory.h"

namespace norv {
namespace {

// Small versions and masks of a picture are no pages.
bool IsPage(const TiffFile& file) {
  const auto kind = file.Tag<uint32_t>(TIFFTAG_SUBFILETYPE, 0);
  return (kind & (FILETYPE_REDUCEDIMAGE | FILETYPE_MASK)) == 0;
}

// Goes to the directory of this page and returns how many pages there are.
int32_t TurnToPage(TiffFile& file, int32_t page) {
  constexpr int32_t kMost = 65535;
  int32_t count = 1;  // the first, whatever it says
  uint64_t wanted = TIFFCurrentDirOffset(file.tiff);
  const bool single = TIFFLastDirectory(file.tiff);
  while (count < kMost && !TIFFLastDirectory(file.tiff) && TIFFReadDirectory(file.tiff))
    if (IsPage(file) && ++count == page) wanted = TIFFCurrentDirOffset(file.tiff);
  if (page > count) Fail("TIFF: page %d of a file of %d", page, count);
  if (!single) file.Require(TIFFSetSubDirectory(file.tiff, wanted));
  return count;
}

// Full scale of a sample.
template <typename T>
constexpr T kFull = std::is_floating_point_v<T> ? 1 : static_cast<T>(-1);

class TiffReader {
 public:
  TiffReader(const ByteSource& source, const ReadChoice& choice)
      : file_(source, {}, "rm"), pages_(TurnToPage(file_, choice.Page())), layout_(file_), shape(layout_.Shape()) {
    shape.pages = pages_;
    RequireLikely(shape, source.size);
    RequireMemory(static_cast<int64_t>(shape.RowBytes()));
    if (!NeedsLibrary()) raw_ = std::make_unique<TiffRawRows>(file_, layout_);
    if (!layout_.device) return;
    device_.resize(size_t(shape.width) * layout_.device->channels * (shape.bits / 8));
    converter_ = std::make_unique<DisplayConverter>(*layout_.device, ProfileOf(file_));
  }
  bool NeedsLibrary() const { return layout_.colours == ColourKind::other; }
  Samples ReadByLibrary();
  // Without the profile of colours that are others now.
  std::shared_ptr<const Metadata> Carried() const {
    Metadata metadata = MetadataOf(file_);
    if (layout_.device) metadata.icc.clear();
    return std::make_shared<const Metadata>(std::move(metadata));
  }

  void ReadRow(uint8_t* row) {
    raw_->Next();
    const auto convert = shape.bits == 32   ? &TiffReader::Convert<float>
                         : shape.bits == 16 ? &TiffReader::Convert<uint16_t>
                                            : &TiffReader::Convert<uint8_t>;
    if (layout_.colours == ColourKind::palette) return FromPalette(row);
    (this->*convert)(converter_ ? device_.data() : row);
    if (converter_) converter_->ConvertRow(device_.data(), row, shape.width);
  }

 private:
  SampleRun RunOf(int32_t channel) const {
    const size_t first = layout_.separate ? 0 : channel, step = layout_.separate ? 1 : layout_.channels;
    return {raw_->Plane(channel), layout_.bits, layout_.kind, first, step};
  }
  template <typename T>
  void Gather(int32_t channel, T* target, size_t step) const {
    UnfoldSamples(RunOf(channel), shape.width, target, step);
  }

  // Colours, then alpha.
  template <typename T>
  void Convert(uint8_t* bytes) {
    T* row = reinterpret_cast<T*>(bytes);
    const int32_t colours = layout_.ColourChannels(), channels = colours + shape.HasAlpha();
    if (shape.HasAlpha()) Gather(layout_.alpha, row + channels - 1, channels);
    for (int32_t k = 0; k < colours; ++k) Gather(k, row + k, channels);
    const bool lab = layout_.device && layout_.device->kind != DeviceColour::inks;
    MakePlain(row, channels, layout_.whiteIsZero, layout_.multiplied && !lab);
  }
  void FromPalette(uint8_t* row) const {
    const SampleRun run = RunOf(0);
    const int32_t colours = shape.channels - shape.HasAlpha();
    if (shape.HasAlpha()) Gather(layout_.alpha, row + colours, shape.channels);
    for (size_t x = 0; x < size_t(shape.width); ++x, row += shape.channels)
      std::copy_n(&layout_.palette[3 * IntegerOf(run, x)], colours, row);
  }
  template <typename T>
  void MakePlain(T* row, int32_t channels, bool whiteIsZero, bool multiplied) const;

  TiffFile file_;
  int32_t pages_;
  TiffLayout layout_;
  std::unique_ptr<TiffRawRows> raw_;
  Bytes device_;  // a row of inks or L*a*b*, which this makes colours of
  std::unique_ptr<DisplayConverter> converter_;

 public:
  PictureShape shape;
};

// Undoes what the file does to the values: white as 0, and colours multiplied by the alpha behind them.
template <typename T>
void TiffReader::MakePlain(T* row, int32_t channels, bool whiteIsZero, bool multiplied) const {
  constexpr T kMost = kFull<T>;
  const int32_t colours = channels - shape.HasAlpha();
  if (!whiteIsZero && !multiplied) return;
  for (int32_t x = 0; x < shape.width; ++x, row += channels)
    for (int32_t k = 0; k < colours; ++k) {
      if (whiteIsZero) row[k] = static_cast<T>(kMost - row[k]);
      const T alpha = multiplied ? row[colours] : kMost;
      if (!(alpha > 0 && alpha < kMost)) continue;
      if constexpr (std::is_floating_point_v<T>)
        row[k] /= alpha;
      else
        row[k] = static_cast<T>(std::min<uint64_t>(kMost, (uint64_t{row[k]} * kMost + alpha / 2) / alpha));
    }
}

// Of 8 bits and without alpha.
Samples TiffReader::ReadByLibrary() {
  char reason[1024];
  if (!TIFFRGBAImageOK(file_.tiff, reason)) Fail("TIFF: %s", reason);
  Samples samples(shape);
  const size_t count = size_t(layout_.width) * layout_.height;
  if (count * sizeof(uint32_t) > AvailableMemory()) Fail("TIFF: out of memory");
  std::vector<uint32_t> pixels(count);
  // Asked for as it lies in the file, since the library turns only half of the orientations.
  file_.Require(
      TIFFReadRGBAImageOriented(file_.tiff, layout_.width, layout_.height, pixels.data(), layout_.orientation, 1));
  uint8_t* target = samples.bytes.data();
  for (const uint32_t pixel : pixels)
    for (int32_t k = 0; k < 3; ++k) *target++ = static_cast<uint8_t>(pixel >> (8 * k));
  return samples;
}

}  // namespace

SampleSource OpenTiff(const ByteSource& source, const ReadChoice& choice) {
  const auto reader = std::make_shared<TiffReader>(source, choice);
  SampleSource samples = reader->NeedsLibrary() ? HeldSamples(reader->ReadByLibrary()) : RowByRow(reader);
  samples.shape.metadata = reader->Carried();
  return samples;
}

}  // namespace norv
