#include "kit/metadata/carry.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>

#include "kit/metadata/containers.h"
#include "kit/metadata/exif.h"
#include "kit/metadata/text.h"
#include "kit/metadata/tiff_tags.h"
#include "kit/metadata/xmp.h"
#include "platform/console.h"
#include "platform/memory.h"

namespace norv {
namespace {

constexpr double kSrgbGamma = 1 / 2.2;
constexpr double kSrgb[8] = {0.3127, 0.3290, 0.64, 0.33, 0.30, 0.60, 0.15, 0.06};

bool IsSrgbGamma(const Metadata& metadata) {
  return metadata.intent || !metadata.gamma || std::abs(*metadata.gamma - kSrgbGamma) < 0.005;
}

bool HasSrgbChromaticities(const Metadata& metadata) {
  if (metadata.intent || !metadata.chromaticities) return true;
  return std::equal(kSrgb, kSrgb + 8, metadata.chromaticities->begin(),
                    [](double a, double b) { return std::abs(a - b) < 0.001; });
}

// A profile of inks says nothing of the grey or RGB that a picture has become.
void RequireFittingProfile(Metadata& metadata, const PictureShape& shape) {
  constexpr size_t kHeader = 128, kColoursAt = 16;
  if (metadata.icc.size() < kHeader) return;
  const std::string colours(CharactersOf({&metadata.icc[kColoursAt], 4}));
  if (colours == "RGB " || (colours == "GRAY" && shape.IsGrey())) return;
  Warn("the colour profile (%s) does not fit the picture and is left out", colours.c_str());
  metadata.icc.clear();
}

// Where programs look for texts that have a keyword of their own in PNG.
struct TextTag {
  const char* keyword;
  uint16_t tag;
};
constexpr TextTag kTextTags[] = {{"Title", kTagDocumentName},
                                 {"Description", kTagImageDescription},
                                 {"Author", kTagArtist},
                                 {"Copyright", kTagCopyright},
                                 {"Software", kTagSoftware}};

void AddLine(std::string& list, const std::string& what, const char* between) {
  if (!list.empty()) list += between;
  list += what;
}

// Texts as EXIF's first directory has them; those without a tag become lines of one comment.
TiffFields FieldsOfTexts(const std::vector<TextEntry>& texts) {
  TiffFields fields;
  std::string comment;
  for (const TextEntry& entry : texts) {
    const auto row = std::ranges::find_if(kTextTags, [&](const TextTag& tag) { return entry.keyword == tag.keyword; });
    const bool isNew =
        row != std::end(kTextTags) && std::ranges::find(fields, row->tag, &TiffField::tag) == fields.end();
    if (isNew)
      fields.push_back(AsciiField(row->tag, entry.text));
    else
      AddLine(comment, entry.keyword == "Comment" ? entry.text : entry.keyword + ": " + entry.text, "\n");
  }
  if (!comment.empty()) fields.push_back({kTagComment, kTypeByte, Utf16Of(comment)});
  return fields;
}

void MoveIntoExif(Metadata& metadata, uint32_t carries) {
  const bool moveText = !(carries & kCarriesText), moveResolution = !(carries & kCarriesResolution);
  AddToExif(metadata.exif, [&](bool bigEndian) {
    TiffFields fields = moveText ? FieldsOfTexts(metadata.text) : TiffFields();
    if (moveResolution && metadata.resolution)
      for (TiffField& field : ResolutionFields(*metadata.resolution, bigEndian)) fields.push_back(std::move(field));
    return fields;
  });
  if (moveText) metadata.text.clear();
  if (moveResolution) metadata.resolution.reset();
}

struct Kind {
  const char* name;
  uint32_t carries;
  bool (*isThere)(const Metadata&);
  void (*remove)(Metadata&);
};
constexpr Kind kKinds[] = {
    {"the colour profile", kCarriesIcc, [](const Metadata& m) { return !m.icc.empty(); },
     [](Metadata& m) { m.icc.clear(); }},
    {"EXIF", kCarriesExif, [](const Metadata& m) { return !m.exif.empty(); }, [](Metadata& m) { m.exif.clear(); }},
    {"XMP", kCarriesXmp, [](const Metadata& m) { return !m.xmp.empty(); }, [](Metadata& m) { m.xmp.clear(); }},
    {"IPTC", kCarriesIptc, [](const Metadata& m) { return !m.iptc.empty(); }, [](Metadata& m) { m.iptc.clear(); }},
    {"texts", kCarriesText, [](const Metadata& m) { return !m.text.empty(); }, [](Metadata& m) { m.text.clear(); }},
    {"the gamma", kCarriesGamma, [](const Metadata& m) { return m.icc.empty() && (!IsSrgbGamma(m) || m.codePoints); },
     [](Metadata& m) {
       m.gamma.reset();
       m.codePoints.reset();
     }},
    {"the chromaticities", kCarriesChromaticities,
     [](const Metadata& m) { return m.icc.empty() && !HasSrgbChromaticities(m); },
     [](Metadata& m) { m.chromaticities.reset(); }},
};

void LeaveOut(Metadata& metadata, uint32_t carries, const char* format) {
  std::string lost;
  for (const Kind& kind : kKinds) {
    if (carries & kind.carries) continue;
    if (kind.isThere(metadata)) AddLine(lost, kind.name, ", ");
    kind.remove(metadata);
  }
  if (!lost.empty()) Warn("%s has no place for %s: left out", format, lost.c_str());
}

void PutRight(Metadata& metadata, const PictureShape& shape) {
  if (!metadata.exif.empty() && !IsExif(metadata.exif)) {
    Warn("the EXIF block is damaged and is left out");
    metadata.exif.clear();
  }
  PutExifRight(metadata.exif, shape.width, shape.height);
  for (Bytes* xmp : {&metadata.xmp, &metadata.xmpMore})
    PutXmpRight(*xmp, shape.width, shape.height, metadata.orientation != 0);
  if (metadata.orientation != 0) metadata.orientation = 1;
}

}  // namespace

size_t MostCarriedBytes() {
  constexpr size_t kMost = size_t{64} << 20;
  return std::min(kMost, AvailableMemory() / 4);
}

std::string TextOf(const Resolution& resolution) {
  const double scale = resolution.unit == ResolutionUnit::metre ? 0.01 : 1;
  const char* unit = resolution.unit == ResolutionUnit::inch ? "dpi" : scale != 1 ? "pixels/cm" : "pixels' shape";
  char text[80];
  if (resolution.x == resolution.y)
    std::snprintf(text, sizeof text, "%.6g %s", resolution.x * scale, unit);
  else
    std::snprintf(text, sizeof text, "%.6g x %.6g %s", resolution.x * scale, resolution.y * scale, unit);
  return text;
}

std::optional<Resolution> ResolutionOf(const Metadata& metadata) {
  return metadata.resolution ? metadata.resolution : ExifResolution(metadata.exif);
}

void TakeExifComment(Metadata& metadata) {
  const std::string comment = ExifComment(metadata.exif);
  if (!comment.empty()) metadata.text.push_back({"Comment", comment, Utf8OfLatin1(comment) == comment});
}

std::shared_ptr<const Metadata> CarriedInto(const PictureShape& shape, uint32_t carries, const char* format,
                                            bool strip) {
  if (!shape.metadata) return nullptr;
  Metadata metadata = *shape.metadata;
  if (strip) {
    metadata = {};
    metadata.icc = shape.metadata->icc;
    metadata.lossless = shape.metadata->lossless;
  }
  std::erase_if(metadata.text, [](const TextEntry& entry) { return entry.keyword == kReceiptKeyword; });
  RequireFittingProfile(metadata, shape);
  PutRight(metadata, shape);
  if (!(carries & kCarriesXmpParts)) {
    metadata.xmp = JoinedXmp(metadata.xmp, metadata.xmpMore);
    metadata.xmpMore.clear();
  }
  if (carries & kCarriesExif) MoveIntoExif(metadata, carries);
  LeaveOut(metadata, carries, format);
  if (metadata == Metadata()) return nullptr;
  return std::make_shared<const Metadata>(std::move(metadata));
}

}  // namespace norv
