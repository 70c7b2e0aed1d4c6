#include "kit/formats/tiff/tiff_metadata.h"

#include <algorithm>
#include <utility>

#include "kit/metadata/containers.h"

namespace norv {
namespace {

// What the library writes for a directory: its offset, whose place in the file's head says how wide offsets are, and
// all the rest from some place on.
struct Captured {
  bool bigEndian;
  int64_t first;
  bool wide = false;
  Bytes rest{};

  ByteSink Sink() {
    return [this](int64_t position, const void* source, size_t bytes) {
      if (position >= first) return ToMemory(rest)(position - first, source, bytes);
      wide = bytes == 8;
      return position == 4 || position == 8;
    };
  }
  // Such a head with the offset of where the rest begins.
  Bytes Head() const {
    Bytes head(wide ? 16 : 8, static_cast<uint8_t>(bigEndian ? 'M' : 'I'));
    const auto put = [&](size_t at, size_t bytes, int64_t number) {
      PutNumber(&head[at], bytes, static_cast<uint64_t>(number), bigEndian);
    };
    put(2, 2, wide ? 43 : 42);
    if (wide) put(4, 2, 8);  // bytes of an offset
    if (wide) put(6, 2, 0);
    put(head.size() / 2, head.size() / 2, first);
    return head;
  }
  ByteSource Source() const {
    return {first + static_cast<int64_t>(rest.size()), [this](int64_t position, void* target, size_t bytes) {
              const Bytes head = Head();
              if (position >= first) return FromMemory(rest).read(position - first, target, bytes);
              return FromMemory(head).read(position, target, bytes);
            }};
  }
};

}  // namespace

Metadata MetadataOf(const TiffFile& file) {
  return *ReadTiffMetadata(file.source, static_cast<int64_t>(TIFFCurrentDirOffset(file.tiff)));
}

void WriteLastDirectory(TiffFile& file, const Metadata* metadata) {
  if (!metadata) return file.Require(TIFFWriteDirectory(file.tiff));
  file.Require(TIFFFlushData(file.tiff));
  Captured captured{TIFFIsBigEndian(file.tiff) != 0, file.written + file.written % 2};
  const ByteSink sink = std::exchange(file.sink, captured.Sink());
  const bool fine = TIFFWriteDirectory(file.tiff);
  file.sink = sink;
  file.Require(fine);
  const Bytes head = captured.Head(), directory = TiffDirectoryWith(*metadata, captured.Source(), captured.first);
  file.Require(sink(captured.first, directory.data(), directory.size()) && sink(0, head.data(), head.size()));
}

}  // namespace norv
