#include "kit/pictures/file_kind.h"

#include <algorithm>
#include <array>
#include <limits>

#include "image/bit_image.h"
#include "image/float_image_file.h"
#include "kit/failure.h"
#include "kit/formats/codec.h"
#include "linear/matrix_file.h"

namespace norv {
namespace {

constexpr int64_t kSenseless = -1;

// The leading fields of a file, zeros behind its end.
using Header = std::array<int32_t, 19>;

// By the header of one of the formats that describe theirs as platform/header.h says.
template <FileHeader H>
int64_t BytesBy(FileIn& in) {
  in.Seek(0);
  const auto header = ReadHeader<H>(in);
  return header.Possible() ? header.FileBytes() : kSenseless;
}

Header LeadingFields(FileIn& in) {
  Header header;
  in.Seek(0);
  in.Array(header.data(), header.size());
  return header;
}

int64_t TrainingSetBytes(FileIn& in) {
  const Header h = LeadingFields(in);
  if (h[0] < 0 || h[1] < 0 || h[2] < 0) return kSenseless;
  const int64_t record = (int64_t{h[1]} + h[2]) * 4;
  if (h[0] > 0 && record > std::numeric_limits<int64_t>::max() / 2 / h[0]) return kSenseless;
  return 12 + record * h[0];
}

// Units and inputs beyond this belong to no network that anybody holds.
constexpr int32_t kMostUnits = 1 << 24;

int64_t NetBytes(FileIn& in) {
  const Header h = LeadingFields(in);
  int64_t bytes = 84;
  bool ended = false;
  for (int layer = 2; layer < 18; ++layer) {
    const int32_t units = h[layer], inputs = h[layer - 1];
    if (units < 0 || units > kMostUnits || inputs < 0 || inputs > kMostUnits || (ended && units > 0)) return kSenseless;
    ended |= units == 0;
    bytes += units * (28 + 12 * int64_t{inputs});
  }
  return h[1] > 0 && h[2] > 0 ? bytes : kSenseless;
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
    {FileKind::trainingSet, "training set", "dat", TrainingSetBytes},
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

FileFacts RecogniseFile(const std::string& path) {
  FileIn in(path);
  if (!in.IsOpen()) Fail("cannot open %s: %s", path.c_str(), in.Reason().c_str());
  const Header header = LeadingFields(in);
  const auto* start = reinterpret_cast<const uint8_t*>(header.data());
  const size_t held = static_cast<size_t>(std::min<int64_t>(in.Size(), sizeof header));
  if (CodecOfContents({start, held})) return {FileKind::picture, in.Size(), in.Size()};
  if (const KindRow* row = RowOfExtension(ExtensionOf(path))) {
    const int64_t expected = row->bytes(in);
    if (expected == kSenseless) Fail("%s is no %s: its header makes no sense", path.c_str(), row->name);
    return {row->kind, in.Size(), expected};
  }
  for (const KindRow& row : kKinds)
    if (row.bytes(in) == in.Size()) return {row.kind, in.Size(), in.Size()};
  Fail("%s is neither a picture (%s) nor a file of ours", path.c_str(), KnownFormats().c_str());
}

FileKind RecogniseWholeFile(const std::string& path) {
  const FileFacts facts = RecogniseFile(path);
  if (facts.Truncated())
    Fail("%s ends early: it has %lld of %lld bytes", path.c_str(), static_cast<long long>(facts.size),
         static_cast<long long>(facts.expected));
  return facts.kind;
}

}  // namespace norv
