// The samples of a TIFF as the file has them, decompressed, a row after another.
#pragma once

#include <memory>
#include <vector>

#include "kit/formats/bytes.h"
#include "kit/formats/tiff/layout.h"

namespace norv {

class TiffRawRows {
 public:
  // file: at the directory that is read; it and the layout outlive this. Throws a Failure for tiles that cannot be.
  TiffRawRows(TiffFile& file, const TiffLayout& layout);

  // Moves to the next row.
  void Next();
  // Of that row the samples of all channels in turn, or with separate planes those of one channel.
  const uint8_t* Plane(int32_t channel) const;

 private:
  void ReadTiles();

  TiffFile& file_;
  const TiffLayout& layout_;
  std::vector<std::unique_ptr<TiffFile>> others_;  // every further separate plane has a reader of its own
  size_t stride_ = 0;                              // of a row of a plane
  int32_t planes_, bandRows_ = 1, next_ = 0;
  Bytes band_, tile_;  // plane after plane; a row of tiles, or just the row
};

}  // namespace norv
