#include "kit/look/exif_facts.h"

#include <algorithm>
#include <bit>
#include <cmath>

#include "kit/guidance/text.h"
#include "kit/look/exif_tags.h"
#include "kit/look/safe_text.h"
#include "kit/metadata/text.h"
#include "kit/metadata/tiff_fields.h"
#include "kit/metadata/tiff_tags.h"

namespace norv {
namespace {

constexpr size_t kMostFields = 200, kMostNumbers = 16;

// Types of numbers with a sign, and of floats.
enum : uint16_t { kSignedByte = 6, kSignedShort = 8, kSignedLong = 9, kSignedRational = 10, kFloat = 11, kDouble = 12 };

double SignedAt(const uint8_t* at, size_t bytes, bool bigEndian) {
  const int unused = static_cast<int>(64 - 8 * bytes);
  return static_cast<double>(static_cast<int64_t>(NumberAt(at, bytes, bigEndian) << unused) >> unused);
}

// A field's value with what is needed to read it.
class FieldValue {
 public:
  FieldValue(const TiffStructure& structure, const TiffEntry& entry)
      : structure_(structure), entry_(entry), bytes_(structure.Value(entry)) {}

  bool IsText() const { return entry_.type == kTypeAscii; }
  bool IsBytes() const { return entry_.type == kTypeUndefined; }
  size_t Count() const { return entry_.count; }
  size_t Size() const { return entry_.bytes; }
  const Bytes& All() const { return bytes_; }
  // Of texts up to a zero; spaces at the end are padding.
  std::string Text(size_t from = 0) const {
    const std::string_view all = CharactersOf(bytes_).substr(std::min(from, bytes_.size()));
    const std::string_view text = all.substr(0, all.find('\0'));
    return std::string(text.substr(0, text.find_last_not_of(" ") + 1));
  }
  double Number(size_t index = 0) const {
    const size_t size = BytesOfType(entry_.type);
    const bool bigEndian = structure_.Form().bigEndian;
    if (size == 0 || bytes_.size() < (index + 1) * size) return 0;
    const uint8_t* at = &bytes_[index * size];
    switch (entry_.type) {
      case kSignedByte:
      case kSignedShort:
      case kSignedLong:
        return SignedAt(at, size, bigEndian);
      case kSignedRational:
        return SignedAt(at, 4, bigEndian) / SignedAt(at + 4, 4, bigEndian);
      case kFloat:
        return std::bit_cast<float>(static_cast<uint32_t>(NumberAt(at, 4, bigEndian)));
      case kDouble:
        return std::bit_cast<double>(NumberAt(at, 8, bigEndian));
      default:
        return structure_.Number(entry_, index);
    }
  }

 private:
  const TiffStructure& structure_;
  const TiffEntry& entry_;
  Bytes bytes_;
};

std::string NumbersOf(const FieldValue& value) {
  std::string text;
  const size_t shown = std::min(value.Count(), kMostNumbers);
  for (size_t i = 0; i < shown; ++i) text += Printed(i ? " %.8g" : "%.8g", value.Number(i));
  if (shown < value.Count()) text += Printed(" ... (%zu numbers)", value.Count());
  return text;
}

std::string ExposureOf(double seconds) {
  if (seconds > 0 && seconds < 0.3) return Printed("1/%.0f s", 1 / seconds);
  return Printed("%.4g s", seconds);
}

std::string WordOf(const FieldValue& value, const char* words) {
  const double number = value.IsBytes() && !value.All().empty() ? value.All()[0] : value.Number();
  std::string code = Printed("%.0f", number);
  for (const std::string& row : SplitAt(',', words))
    if (row.starts_with(code + " ")) return row.substr(code.size() + 1);
  return code;
}

// Its encoding in eight bytes, then the text.
std::string CommentOf(const FieldValue& value, bool bigEndian) {
  constexpr size_t kEncoding = 8;
  if (value.All().size() < kEncoding) return "";
  if (!CharactersOf(value.All()).starts_with("UNICODE")) return value.Text(kEncoding);
  Bytes text(value.All().begin() + kEncoding, value.All().end());
  for (size_t i = 0; bigEndian && i + 1 < text.size(); i += 2) std::swap(text[i], text[i + 1]);
  return Utf8OfUtf16(text);
}

std::string ShownAs(const FieldRow& row, const FieldValue& value, bool bigEndian) {
  switch (row.form) {
    case FieldForm::exposure:
      return ExposureOf(value.Number());
    case FieldForm::aperture:
      return Printed("f/%.3g", value.Number());
    case FieldForm::steps:
      return Printed("%.6g %s", value.Number(), row.more);
    case FieldForm::word:
      return WordOf(value, row.more);
    case FieldForm::utf16:
      return SafeText(Utf8OfUtf16(value.All()));
    case FieldForm::comment:
      return SafeText(CommentOf(value, bigEndian));
    case FieldForm::version:
      return SafeText(CharactersOf(value.All()), 4);
    case FieldForm::size:
      return std::to_string(value.Size()) + " bytes";
    case FieldForm::plain:
      break;
  }
  if (value.IsText()) return SafeText(value.Text());
  return value.IsBytes() ? std::to_string(value.Size()) + " bytes" : NumbersOf(value);
}

// What is said elsewhere: of how pixels are stored, orientation and resolution, and what leads to other directories.
bool IsSaidElsewhere(uint16_t tag) {
  constexpr uint16_t kOthers[] = {kTagOrientation, kTagXResolution, kTagYResolution, kTagResolutionUnit,
                                  kTagExif,        kTagGps,         kTagInterop};
  return IsOfPixels(tag) || IsCarriedApart(tag) || std::ranges::find(kOthers, tag) != std::end(kOthers);
}

void AddFields(const TiffStructure& structure, const TiffDirectory& directory, std::span<const FieldRow> rows,
               Facts& facts, size_t& room) {
  const bool isFirst = rows.data() == std::data(kImageFields);
  for (const TiffEntry& entry : directory.entries) {
    if ((isFirst || entry.tag == kTagInterop) && IsSaidElsewhere(entry.tag)) continue;
    if (room == 0 || --room == 0) return;
    const auto known = std::ranges::find(rows, entry.tag, &FieldRow::tag);
    const std::string number = Printed("field %d", entry.tag);
    const FieldRow row = known != rows.end() ? *known : FieldRow{entry.tag, number.c_str()};
    const std::string shown = ShownAs(row, FieldValue(structure, entry), structure.Form().bigEndian);
    if (!shown.empty()) facts.Add(std::string("EXIF ") + row.name, shown);
  }
}

const TiffEntry* Find(const TiffDirectory& directory, uint16_t tag) {
  const auto found = std::ranges::find(directory.entries, tag, &TiffEntry::tag);
  return found == directory.entries.end() ? nullptr : &*found;
}

TiffDirectory Below(const TiffStructure& structure, const TiffDirectory& directory, uint16_t tag) {
  const TiffEntry* entry = Find(directory, tag);
  if (!entry || BytesOfType(entry->type) != 4) return {};
  return structure.Read(structure.Offset(entry->valueAt, 4));
}

// Degrees, minutes, seconds and the half of the globe.
std::optional<double> Degrees(const TiffStructure& structure, const TiffDirectory& gps, uint16_t tag, char negative) {
  const TiffEntry *angle = Find(gps, tag), *half = Find(gps, static_cast<uint16_t>(tag - 1));
  if (!angle || angle->count < 3 || !half) return {};
  const FieldValue parts(structure, *angle);
  const double degrees = parts.Number(0) + parts.Number(1) / 60 + parts.Number(2) / 3600;
  return FieldValue(structure, *half).Text().starts_with(negative) ? -degrees : degrees;
}

}  // namespace

void AddExifFacts(std::span<const uint8_t> exif, Facts& facts) {
  if (exif.empty()) return;
  facts.AddSize("EXIF", exif.size());
  const auto structure = TiffStructure::Open(FromMemory(exif));
  if (!structure) return;
  size_t room = kMostFields;
  const TiffDirectory first = structure->Read(structure->First());
  const TiffDirectory gps = Below(*structure, first, kTagGps);
  AddFields(*structure, first, kImageFields, facts, room);
  AddFields(*structure, Below(*structure, first, kTagExif), kExifFields, facts, room);
  AddFields(*structure, gps, kGpsFields, facts, room);
  const auto latitude = Degrees(*structure, gps, 2, 'S'), longitude = Degrees(*structure, gps, 4, 'W');
  if (latitude && longitude) facts.Add("EXIF position", Printed("%.6f, %.6f", *latitude, *longitude));
  if (first.nextAt == 0) return;
  const TiffDirectory second = structure->Read(structure->Offset(first.nextAt, 4));
  if (const TiffEntry* thumbnail = Find(second, kTagThumbnailBytes))
    facts.AddSize("EXIF thumbnail", static_cast<size_t>(structure->Number(*thumbnail)));
}

}  // namespace norv
