#include "kit/formats/tiff/raw_rows.h"

#include <algorithm>

#include "kit/failure.h"
#include "kit/formats/samples.h"

namespace norv {

TiffRawRows::TiffRawRows(TiffFile& file, const TiffLayout& layout) : file_(file), layout_(layout) {
  // Of separate planes only those that are shown.
  planes_ = layout.separate ? std::max(layout.ColourChannels(), layout.alpha + 1) : 1;
  const tmsize_t row = layout.tiled ? TIFFTileRowSize(file.tiff) : TIFFScanlineSize(file.tiff);
  const uint64_t across = layout.tiled ? file.Tag<uint32_t>(TIFFTAG_TILEWIDTH, 0) : layout.width;
  const uint64_t bits = across * layout.bits * (layout.separate ? 1 : layout.channels);
  file.Require(row > 0 && across > 0);
  if ((bits + 7) / 8 != static_cast<uint64_t>(row) || (layout.tiled && bits % 8 != 0))
    Fail("TIFF: rows of an unknown layout");
  stride_ = static_cast<size_t>(row) * ((layout.width + across - 1) / across);
  if (layout.tiled) {
    const uint32_t down = file.Tag<uint32_t>(TIFFTAG_TILELENGTH, 0);
    const tmsize_t size = TIFFTileSize(file.tiff);
    file.Require(size > 0 && down > 0);
    if (size / down != row) Fail("TIFF: tiles of an unknown layout");
    RequireLikely(size, file.source.size);
    RequireMemory(size);
    tile_.resize(static_cast<size_t>(size));
    bandRows_ = static_cast<int32_t>(std::min(down, layout.height));
  }
  RequireLikely(static_cast<int64_t>(stride_) * planes_ * bandRows_, file.source.size);
  RequireMemory(static_cast<int64_t>(stride_) * planes_ * bandRows_);
  band_.resize(stride_ * planes_ * bandRows_);
  for (int32_t plane = 1; plane < planes_ && !layout.tiled; ++plane) {
    others_.push_back(std::make_unique<TiffFile>(file.source, ByteSink(), "rm"));
    others_.back()->Require(TIFFSetSubDirectory(others_.back()->tiff, TIFFCurrentDirOffset(file.tiff)));
  }
}

void TiffRawRows::Next() {
  const uint32_t row = static_cast<uint32_t>(next_++);
  if (layout_.tiled) {
    if (row % bandRows_ == 0) ReadTiles();
    return;
  }
  for (int32_t plane = 0; plane < planes_; ++plane) {
    TiffFile& file = plane == 0 ? file_ : *others_[plane - 1];
    uint8_t* target = band_.data() + stride_ * plane;
    file.Require(TIFFReadScanline(file.tiff, target, row, static_cast<uint16_t>(plane)) == 1);
  }
}

const uint8_t* TiffRawRows::Plane(int32_t channel) const {
  const size_t plane = layout_.separate ? channel : 0, row = static_cast<size_t>((next_ - 1) % bandRows_);
  return band_.data() + stride_ * (plane * bandRows_ + row);
}

// The row of tiles that begins with the current row.
void TiffRawRows::ReadTiles() {
  const uint32_t across = file_.Tag<uint32_t>(TIFFTAG_TILEWIDTH, 0), first = static_cast<uint32_t>(next_ - 1);
  const size_t tileRow = static_cast<size_t>(TIFFTileRowSize(file_.tiff));
  const tmsize_t size = static_cast<tmsize_t>(tile_.size());
  const size_t rows = std::min<size_t>(bandRows_, layout_.height - first);
  for (int32_t plane = 0; plane < planes_; ++plane)
    for (uint32_t i = 0; uint64_t{i} * across < layout_.width; ++i) {
      const auto channel = static_cast<uint16_t>(plane);
      file_.Require(TIFFReadTile(file_.tiff, tile_.data(), i * across, first, 0, channel) == size);
      uint8_t* target = band_.data() + stride_ * plane * bandRows_ + tileRow * i;
      for (size_t r = 0; r < rows; ++r) std::copy_n(&tile_[tileRow * r], tileRow, target + stride_ * r);
    }
}

}  // namespace norv
