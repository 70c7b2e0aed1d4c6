#include "kit/formats/tiff/tiff_metadata.h"

#include <algorithm>
#include <utility>

#include "kit/metadata/containers.h"

namespace norv {
namespace {

// What the library writes for a directory: an offset in the file's head, and all the rest from some place on.
struct Captured {
  Bytes head, rest;
  int64_t first;

  ByteSink Sink() {
    return [this](int64_t position, const void* source, size_t bytes) {
      const bool inHead = position < static_cast<int64_t>(head.size());
      Bytes& to = inHead ? head : rest;
      return (inHead || position >= first) && ToMemory(to)(position - (inHead ? 0 : first), source, bytes);
    };
  }
  ByteSource Source() const {
    return {first + static_cast<int64_t>(rest.size()), [this](int64_t position, void* target, size_t bytes) {
              const bool inHead = position < static_cast<int64_t>(head.size());
              if (!inHead && position < first) return size_t{0};
              return FromMemory(inHead ? head : rest).read(position - (inHead ? 0 : first), target, bytes);
            }};
  }
};

Bytes HeadOf(const TiffFile& file) {
  const bool bigEndian = TIFFIsBigEndian(file.tiff), wide = TIFFIsBigTIFF(file.tiff);
  Bytes head(wide ? 16 : 8, static_cast<uint8_t>(bigEndian ? 'M' : 'I'));
  PutNumber(&head[2], 2, wide ? 43 : 42, bigEndian);
  if (wide) PutNumber(&head[4], 4, bigEndian ? 8 << 16 : 8, bigEndian);  // bytes of an offset, and none
  return head;
}

}  // namespace

Metadata MetadataOf(const TiffFile& file) {
  return *ReadTiffMetadata(file.source, static_cast<int64_t>(TIFFCurrentDirOffset(file.tiff)));
}

void WriteLastDirectory(TiffFile& file, const Metadata* metadata) {
  if (!metadata) return file.Require(TIFFWriteDirectory(file.tiff));
  file.Require(TIFFFlushData(file.tiff));
  Captured captured{HeadOf(file), {}, file.written + file.written % 2};
  const ByteSink sink = std::exchange(file.sink, captured.Sink());
  const bool fine = TIFFWriteDirectory(file.tiff);
  file.sink = sink;
  file.Require(fine);
  const Bytes directory = TiffDirectoryWith(*metadata, captured.Source(), captured.first);
  PutNumber(&captured.head[captured.head.size() / 2], captured.head.size() / 2, captured.first,
            TIFFIsBigEndian(file.tiff));
  file.Require(sink(captured.first, directory.data(), directory.size()) &&
               sink(0, captured.head.data(), captured.head.size()));
}

}  // namespace norv
