#include <algorithm>
#include <cmath>

#include "kit/look/format_facts.h"
#include "kit/metadata/tiff_fields.h"

namespace norv {
namespace {

struct Named {
  int32_t code;
  const char* name;
};
constexpr Named kCompressions[] = {
    {1, "none"},          {2, "fax, rows of runs"},
    {3, "fax group 3"},   {4, "fax group 4"},
    {5, "LZW"},           {6, "JPEG (older)"},
    {7, "JPEG"},          {8, "Deflate"},
    {32773, "PackBits"},  {32946, "Deflate (older)"},
    {34676, "SGI log"},   {34677, "SGI log 24"},
    {34712, "JPEG 2000"}, {34887, "LERC"},
    {34925, "LZMA"},      {50000, "Zstandard"},
    {50001, "WebP"},      {50002, "JPEG XL"},
};
constexpr Named kColours[] = {
    {0, "grey, white is 0"},
    {1, "grey"},
    {2, "RGB"},
    {3, "palette"},
    {4, "mask"},
    {5, "inks"},
    {6, "YCbCr"},
    {8, "L*a*b*"},
    {9, "L*a*b* (ICC)"},
    {10, "L*a*b* (ITU)"},
    {32844, "CIE log L"},
    {32845, "CIE log Luv"},
};
constexpr Named kSamples[] = {{1, "unsigned integers"}, {2, "signed integers"}, {3, "floats"}};
constexpr Named kPredictors[] = {{1, "none"}, {2, "horizontal differences"}, {3, "of floats"}};
constexpr Named kPlanes[] = {{1, "interleaved"}, {2, "one behind the other"}};

template <size_t kCount>
std::string NameOf(const Named (&rows)[kCount], double code) {
  for (const Named& row : rows)
    if (row.code == code) return row.name;
  return "code " + std::to_string(std::lround(code));
}

enum Tag : uint16_t {
  kKind = 254,
  kBits = 258,
  kCompression = 259,
  kColour = 262,
  kChannels = 277,
  kRowsOfStrip = 278,
  kPlanar = 284,
  kPredictor = 317,
  kTileWidth = 322,
  kTileHeight = 323,
  kExtraSamples = 338,
  kSampleFormat = 339,
};

class Page {
 public:
  // Small versions and masks are no pages.
  Page(const TiffStructure& structure, int32_t number) : structure_(structure) {
    constexpr int32_t kMost = 65535;
    int64_t at = structure.First();
    for (int32_t seen = 0, left = kMost; at > 0 && left > 0; --left) {
      TiffDirectory next = structure.Read(at);
      if (next.entries.empty()) return;
      std::swap(directory_, next);
      const bool isPage = seen == 0 || (static_cast<int64_t>(Number(kKind, 0)) & 5) == 0;
      if (isPage && ++seen == number) return;
      at = directory_.nextAt == 0 ? 0 : structure.Offset(directory_.nextAt, structure.Form().wide ? 8 : 4);
    }
  }
  bool Has(uint16_t tag) const { return Find(tag) != nullptr; }
  double Number(uint16_t tag, double otherwise) const {
    const TiffEntry* entry = Find(tag);
    return entry && entry->count > 0 ? structure_.Number(*entry) : otherwise;
  }

 private:
  const TiffEntry* Find(uint16_t tag) const {
    const auto found = std::ranges::find(directory_.entries, tag, &TiffEntry::tag);
    return found == directory_.entries.end() ? nullptr : &*found;
  }
  const TiffStructure& structure_;
  TiffDirectory directory_;
};

std::string PiecesOf(const Page& page) {
  if (page.Has(kTileWidth))
    return Printed("tiles of %.0f x %.0f pixels", page.Number(kTileWidth, 0), page.Number(kTileHeight, 0));
  return page.Has(kRowsOfStrip) ? Printed("strips of %.0f rows", page.Number(kRowsOfStrip, 0)) : "one strip";
}

std::string ExtraOf(double kind) {
  return kind == 1 ? "alpha, the colours multiplied by it" : kind == 2 ? "alpha" : "of no said meaning";
}

}  // namespace

StoredForm TiffFileForm(const ByteSource& file, const PictureShape&, int32_t number) {
  StoredForm form;
  const auto structure = TiffStructure::Open(file);
  if (!structure) return form;
  const Page page(*structure, number);
  const double channels = page.Number(kChannels, 1);
  form.bits = static_cast<int32_t>(std::min(page.Number(kBits, 1), 65535.0));
  form.colour = NameOf(kColours, page.Number(kColour, channels >= 3 ? 2 : 1));
  Facts& facts = form.facts;
  facts.Add("byte order", std::string(structure->Form().bigEndian ? "big-endian" : "little-endian") +
                              (structure->Form().wide ? ", BigTIFF" : ""));
  facts.Add("compression", NameOf(kCompressions, page.Number(kCompression, 1)));
  if (page.Has(kPredictor)) facts.Add("predictor", NameOf(kPredictors, page.Number(kPredictor, 1)));
  facts.Add("samples", NameOf(kSamples, page.Number(kSampleFormat, 1)));
  facts.AddNumber("samples a pixel", static_cast<int64_t>(channels));
  if (channels > 1) facts.Add("planes", NameOf(kPlanes, page.Number(kPlanar, 1)));
  if (page.Has(kExtraSamples)) facts.Add("extra sample", ExtraOf(page.Number(kExtraSamples, 0)));
  facts.Add("pieces", PiecesOf(page));
  return form;
}

}  // namespace norv
