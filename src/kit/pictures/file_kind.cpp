#include "kit/pictures/file_kind.h"

#include <algorithm>

#include "image/bit_image.h"
#include "image/float_image_file.h"
#include "kit/failure.h"
#include "kit/formats/codec.h"
#include "linear/matrix_file.h"
#include "net/net_header.h"
#include "train/training_header.h"

namespace norv {
namespace {

constexpr int64_t kSenseless = -1;

// By the header of one of the formats that describe theirs as platform/header.h says.
template <FileHeader H>
int64_t BytesBy(FileIn& in) {
  in.Seek(0);
  const auto header = ReadHeader<H>(in);
  return header.Possible() ? header.FileBytes() : kSenseless;
}

// Units and inputs beyond this belong to no network that anybody holds.
constexpr int32_t kMostUnits = 1 << 24;

int64_t NetBytes(FileIn& in) {
  in.Seek(0);
  const auto header = ReadHeader<NetHeader>(in);
  const bool likely = header.N0 > 0 && header.N0 <= kMostUnits && header.N[0] > 0 &&
                      *std::max_element(header.N.begin(), header.N.end()) <= kMostUnits;
  return likely && header.Possible() ? header.FileBytes() : kSenseless;
}

struct KindRow {
  FileKind kind;
  const char* name;
  const char* extension;
  int64_t (*bytes)(FileIn&);  // of the whole file by its header, kSenseless for a header that cannot be
};

// Those with more to agree come first: they decide when no extension does.
constexpr KindRow kKinds[] = {
    {FileKind::net, "network", "net", NetBytes},
    {FileKind::floatImage, "float image", "fdib", BytesBy<FloatImageHeader>},
    {FileKind::matrix, "matrix", "mat", BytesBy<MatrixHeader>},
    {FileKind::trainingSet, "training set", "dat", BytesBy<TrainingHeader>},
    {FileKind::bitImage, "bit image", "bit", BytesBy<BitImageHeader>},
};

const KindRow* RowOfExtension(const std::string& extension) {
  for (const KindRow& row : kKinds)
    if (row.extension == extension) return &row;
  return nullptr;
}

}  // namespace

const char* NameOf(FileKind kind) {
  for (const KindRow& row : kKinds)
    if (row.kind == kind) return row.name;
  return "picture";
}

std::optional<FileKind> KindOfName(const std::string& path) { return KindOfExtension(ExtensionOf(path)); }

std::optional<FileKind> KindOfExtension(const std::string& extension) {
  const KindRow* row = RowOfExtension(extension);
  return row ? std::optional(row->kind) : std::nullopt;
}

FileFacts RecogniseFile(const std::string& path) {
  const ByteSource bytes = FromFile(path);
  uint8_t start[64];  // more than any mark
  const KindRow* named = RowOfExtension(ExtensionOf(path));
  // A file of ours may begin as a picture does.
  if (named) {
    FileIn in(path);
    if (named->bytes(in) == in.Size()) return {named->kind, in.Size(), in.Size()};
  }
  if (CodecOfContents({start, bytes.read(0, start, sizeof start)})) return {FileKind::picture, bytes.size, bytes.size};
  FileIn in(path);
  if (const KindRow* row = named) {
    const int64_t expected = row->bytes(in);
    if (expected == kSenseless) Fail("%s is no %s: its header makes no sense", path.c_str(), row->name);
    return {row->kind, in.Size(), expected};
  }
  for (const KindRow& row : kKinds)
    if (row.bytes(in) == in.Size()) return {row.kind, in.Size(), in.Size()};
  Fail("%s is neither a picture (%s) nor a file of ours", path.c_str(), ReadFormats().c_str());
}

FileKind RecogniseWholeFile(const std::string& path) {
  const FileFacts facts = RecogniseFile(path);
  if (facts.Truncated())
    Fail("%s ends early: it has %lld of %lld bytes", path.c_str(), static_cast<long long>(facts.size),
         static_cast<long long>(facts.expected));
  return facts.kind;
}

}  // namespace norv
