#include "kit/metadata/exif.h"

#include <algorithm>
#include <cmath>

#include "kit/metadata/text.h"
#include "kit/metadata/tiff_tags.h"
#include "platform/console.h"

namespace norv {
namespace {

// The block's structure and its first directory; nothing where there is none.
struct FirstDirectory {
  explicit FirstDirectory(std::span<const uint8_t> exif) : structure(TiffStructure::Open(FromMemory(exif))) {
    if (structure) directory = structure->Read(structure->First());
  }
  double Number(uint16_t tag) const {
    for (const TiffEntry& entry : directory.entries)
      if (entry.tag == tag) return structure->Number(entry);
    return 0;
  }
  std::optional<TiffStructure> structure;
  TiffDirectory directory;
};

// The directory that a field of this one points at.
TiffDirectory Below(const TiffStructure& structure, const TiffDirectory& directory, uint16_t tag) {
  for (const TiffEntry& entry : directory.entries)
    if (entry.tag == tag && BytesOfType(entry.type) >= 4)
      return structure.Read(structure.Offset(entry.valueAt, BytesOfType(entry.type)));
  return {};
}

// A whole number that stands in the entry itself, where no other field can reach it but by a directory upon a
// directory.
bool IsPlainNumber(const TiffEntry& entry) {
  return (entry.type == kTypeByte || entry.type == kTypeShort || entry.type == kTypeLong) && entry.bytes <= 4;
}

// Puts a number into such a field; a short one becomes long where it has to.
void SetNumber(Bytes& exif, TiffForm form, const TiffEntry& entry, uint64_t number) {
  size_t size = BytesOfType(entry.type);
  if (!IsPlainNumber(entry)) return;
  if (number >> (8 * size) != 0) {
    size = BytesOfType(kTypeLong);
    PutNumber(exif.data() + entry.at + 2, 2, kTypeLong, form.bigEndian);
    PutNumber(exif.data() + entry.at + 4, 4, 1, form.bigEndian);
  }
  PutNumber(exif.data() + entry.valueAt, size, number, form.bigEndian);
}

void SetNumbers(Bytes& exif, TiffForm form, const TiffDirectory& directory,
                std::initializer_list<std::pair<uint16_t, int32_t>> numbers) {
  for (const TiffEntry& entry : directory.entries)
    for (const auto& [tag, number] : numbers)
      if (entry.tag == tag) SetNumber(exif, form, entry, static_cast<uint64_t>(number));
}

// Behind everything that these directories hold.
size_t EndOf(std::initializer_list<const TiffDirectory*> directories) {
  int64_t end = 0;
  for (const TiffDirectory* directory : directories)
    for (const TiffEntry& entry : directory->entries)
      end = std::max({end, entry.at + 12, entry.valueAt + static_cast<int64_t>(entry.bytes)});
  return static_cast<size_t>(end);
}

// Unlinks the thumbnail's directory, wipes the thumbnail where nothing else can stand there, and cuts it off at the
// end of the block.
void DropThumbnail(Bytes& exif, const TiffStructure& structure, const TiffDirectory& first, size_t kept) {
  if (first.nextAt == 0) return;
  const int64_t second = structure.Offset(first.nextAt, 4);
  PutNumber(exif.data() + first.nextAt, 4, 0, false);
  if (second == 0) return;
  size_t at = 0, bytes = 0;
  for (const TiffEntry& entry : structure.Read(second).entries) {
    const double number = structure.Number(entry);
    if (entry.tag == kTagThumbnailOffset || entry.tag == kTagStripOffsets) at = static_cast<size_t>(number);
    if (entry.tag == kTagThumbnailBytes || entry.tag == kTagStripByteCounts) bytes = static_cast<size_t>(number);
  }
  if (at < kept || at > exif.size() || bytes > exif.size() - at) return;
  std::fill_n(exif.begin() + static_cast<ptrdiff_t>(at), bytes, uint8_t{0});
  constexpr size_t kMostPadding = 4;
  if (at + bytes + kMostPadding >= exif.size()) exif.resize(at);
}

// Fields of a directory that no `skip` names, as long as all of them together are no longer than the file.
TiffFields FieldsOf(const TiffStructure& structure, const TiffDirectory& directory, bool (*skip)(uint16_t tag),
                    int64_t& room, bool& damaged) {
  TiffFields fields;
  damaged |= directory.damaged;
  for (const TiffEntry& entry : directory.entries) {
    if (skip(entry.tag)) continue;
    room -= static_cast<int64_t>(entry.bytes);
    if (room < 0) break;
    fields.push_back({entry.tag, entry.type, structure.Value(entry)});
  }
  damaged |= room < 0;
  return fields;
}

bool IsPointer(uint16_t tag) { return tag == kTagExif || tag == kTagGps || tag == kTagInterop; }

// Whole numbers of 64 bits, which blocks do not know, become those of 32.
void Narrow(TiffFields& fields, bool bigEndian) {
  for (TiffField& field : fields) {
    if (field.type < kTypeLong8) continue;
    Bytes narrow(field.value.size() / 2);
    for (size_t i = 0; i < narrow.size() / 4; ++i)
      PutNumber(&narrow[4 * i], 4, NumberAt(&field.value[8 * i], 8, bigEndian), bigEndian);
    field = {field.tag, kTypeLong, std::move(narrow)};
  }
}

void SetInPlace(Bytes& exif, int32_t width, int32_t height) {
  const auto structure = TiffStructure::Open(FromMemory(exif));
  if (!structure || structure->Form().wide) return;
  const TiffDirectory inner = Below(*structure, structure->Read(structure->First()), kTagExif);
  SetNumbers(exif, structure->Form(), inner, {{kTagPixelXDimension, width}, {kTagPixelYDimension, height}});
  const TiffDirectory first = structure->Read(structure->First());
  SetNumbers(exif, structure->Form(), first,
             {{kTagImageWidth, width}, {kTagImageLength, height}, {kTagOrientation, 1}});
  const TiffDirectory gps = Below(*structure, first, kTagGps), interop = Below(*structure, inner, kTagInterop);
  DropThumbnail(exif, *structure, first, EndOf({&first, &inner, &gps, &interop}));
}

}  // namespace

bool IsExif(std::span<const uint8_t> bytes) {
  const auto structure = TiffStructure::Open(FromMemory(bytes));
  return structure && !structure->Form().wide;
}

int32_t OrientationOf(double number) { return number >= 1 && number <= 8 ? static_cast<int32_t>(number) : 0; }

int32_t ExifOrientation(std::span<const uint8_t> exif) {
  const FirstDirectory first(exif);
  for (const TiffEntry& entry : first.directory.entries) {
    if (entry.tag != kTagOrientation || !IsPlainNumber(entry)) continue;
    return OrientationOf(first.structure->Number(entry));
  }
  return 0;
}

std::optional<Resolution> ExifResolution(std::span<const uint8_t> exif) {
  const FirstDirectory first(exif);
  const double x = first.Number(kTagXResolution);
  const double down = first.Number(kTagYResolution), y = down > 0 ? down : x;
  const double unit = first.Number(kTagResolutionUnit);
  if (x <= 0) return {};
  if (unit == 3) return Resolution{100 * x, 100 * y, ResolutionUnit::metre};
  return Resolution{x, y, unit == 1 ? ResolutionUnit::none : ResolutionUnit::inch};
}

std::string ExifComment(std::span<const uint8_t> exif) {
  const FirstDirectory first(exif);
  for (const TiffEntry& entry : first.directory.entries)
    if (entry.tag == kTagComment) return Utf8OfUtf16(first.structure->Value(entry));
  return "";
}

TiffFields ResolutionFields(const Resolution& resolution, bool bigEndian) {
  const bool metre = resolution.unit == ResolutionUnit::metre;
  const double scale = metre ? 0.01 : 1;
  return {RationalField(kTagXResolution, resolution.x * scale, bigEndian),
          RationalField(kTagYResolution, resolution.y * scale, bigEndian),
          NumberField(kTagResolutionUnit, kTypeShort,
                      resolution.unit == ResolutionUnit::none ? 1
                      : metre                                 ? 3
                                                              : 2,
                      bigEndian)};
}

void PutExifRight(Bytes& exif, int32_t width, int32_t height) {
  SetInPlace(exif, width, height);
  Bytes again = exif;
  SetInPlace(again, width, height);
  if (again == exif) return;
  // Directories that lie over each other: what one says overwrites another.
  Warn("the EXIF block is damaged and is left out");
  exif.clear();
}

void AddToExif(Bytes& exif, const std::function<TiffFields(bool bigEndian)>& make) {
  if (exif.empty()) {
    exif = ExifBlock({false, make(false), {}, {}, {}});
    return;
  }
  const FirstDirectory first(exif);
  if (!first.structure || first.structure->Form().wide) return;
  const TiffForm form = first.structure->Form();
  const std::vector<TiffEntry>& old = first.directory.entries;
  TiffFields fields = make(form.bigEndian);
  std::erase_if(
      fields, [&](const TiffField& field) { return std::ranges::find(old, field.tag, &TiffEntry::tag) != old.end(); });
  if (fields.empty()) return;
  // A directory at the end of the block: old entries as they are, new ones with their values behind it.
  constexpr size_t kCount = 2, kEntry = 12;
  exif.resize(exif.size() + exif.size() % 2);
  const size_t at = exif.size();
  const Bytes fresh = DirectoryBytes(fields, at + kEntry * old.size(), form);
  std::vector<std::pair<uint16_t, Bytes>> entries;
  const auto take = [&](uint16_t tag, auto from) { entries.emplace_back(tag, Bytes(from, from + kEntry)); };
  for (const TiffEntry& entry : old) take(entry.tag, exif.begin() + entry.at);
  for (size_t i = 0; i < fields.size(); ++i) {
    const auto from = fresh.begin() + static_cast<ptrdiff_t>(kCount + kEntry * i);
    take(static_cast<uint16_t>(NumberAt(&*from, 2, form.bigEndian)), from);
  }
  std::ranges::stable_sort(entries, {}, &std::pair<uint16_t, Bytes>::first);
  exif.resize(at + kCount);
  PutNumber(&exif[at], kCount, entries.size(), form.bigEndian);
  for (const auto& [tag, bytes] : entries) exif.insert(exif.end(), bytes.begin(), bytes.end());
  exif.insert(exif.end(), fresh.begin() + static_cast<ptrdiff_t>(kCount + kEntry * fields.size()), fresh.end());
  PutNumber(&exif[4], 4, at, form.bigEndian);
}

ExifTree ReadExifTree(const TiffStructure& structure, int64_t directory) {
  ExifTree tree;
  tree.bigEndian = structure.Form().bigEndian;
  int64_t room = structure.Size();
  const TiffDirectory first = structure.Read(directory), inner = Below(structure, first, kTagExif);
  const auto take = [&](const TiffDirectory& from, bool (*skip)(uint16_t)) {
    TiffFields fields = FieldsOf(structure, from, skip, room, tree.damaged);
    Narrow(fields, tree.bigEndian);
    return fields;
  };
  tree.image = take(first, [](uint16_t tag) { return IsPointer(tag) || IsOfPixels(tag) || IsCarriedApart(tag); });
  tree.exif = take(inner, IsPointer);
  tree.gps = take(Below(structure, first, kTagGps), IsPointer);
  tree.interop = take(Below(structure, inner, kTagInterop), IsPointer);
  return tree;
}

Bytes TreeBytes(ExifTree tree, uint64_t at, bool wide) {
  const TiffForm form{tree.bigEndian, wide};
  const auto pointer = [&](uint16_t tag, uint64_t to) {
    return NumberField(tag, wide ? uint16_t{18} : uint16_t{kTypeLong}, to, form.bigEndian);
  };
  // The fields count before the offsets in them are known.
  const bool hasExif = !tree.exif.empty() || !tree.interop.empty();
  if (hasExif) tree.image.push_back(pointer(kTagExif, 0));
  if (!tree.gps.empty()) tree.image.push_back(pointer(kTagGps, 0));
  if (!tree.interop.empty()) tree.exif.push_back(pointer(kTagInterop, 0));
  const uint64_t exifAt = at + DirectorySize(tree.image, form);
  const uint64_t gpsAt = exifAt + (hasExif ? DirectorySize(tree.exif, form) : 0);
  const uint64_t interopAt = gpsAt + (tree.gps.empty() ? 0 : DirectorySize(tree.gps, form));
  for (TiffField& field : tree.image)
    if (IsPointer(field.tag)) field = pointer(field.tag, field.tag == kTagExif ? exifAt : gpsAt);
  if (!tree.interop.empty()) tree.exif.back() = pointer(kTagInterop, interopAt);
  Bytes bytes = DirectoryBytes(tree.image, at, form);
  const auto append = [&](const TiffFields& fields) {
    if (fields.empty()) return;
    const Bytes more = DirectoryBytes(fields, at + bytes.size(), form);
    bytes.insert(bytes.end(), more.begin(), more.end());
  };
  append(tree.exif);
  append(tree.gps);
  append(tree.interop);
  return bytes;
}

Bytes ExifBlock(const ExifTree& tree) {
  if (tree.image.empty() && tree.exif.empty() && tree.gps.empty() && tree.interop.empty()) return {};
  Bytes block(8, static_cast<uint8_t>(tree.bigEndian ? 'M' : 'I'));
  PutNumber(&block[2], 2, 42, tree.bigEndian);
  PutNumber(&block[4], 4, block.size(), tree.bigEndian);
  const Bytes directories = TreeBytes(tree, block.size(), false);
  block.insert(block.end(), directories.begin(), directories.end());
  return block;
}

}  // namespace norv
