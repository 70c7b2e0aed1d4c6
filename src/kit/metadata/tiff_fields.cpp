#include "kit/metadata/tiff_fields.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace norv {
namespace {

constexpr size_t kBytesOfTypes[] = {0, 1, 1, 2, 4, 8, 1, 1, 2, 4, 8, 4, 8, 4, 0, 0, 8, 8, 8};

// What differs with the width of offsets.
struct Widths {
  size_t count, entry, valueAt, offset;
};
constexpr Widths WidthsOf(TiffForm form) { return form.wide ? Widths{8, 20, 12, 8} : Widths{2, 12, 8, 4}; }

size_t Even(size_t bytes) { return bytes + bytes % 2; }

}  // namespace

size_t BytesOfType(uint16_t type) { return type < std::size(kBytesOfTypes) ? kBytesOfTypes[type] : 0; }

uint64_t NumberAt(const uint8_t* at, size_t bytes, bool bigEndian) {
  uint64_t number = 0;
  for (size_t i = 0; i < bytes; ++i) number = number << 8 | at[bigEndian ? i : bytes - 1 - i];
  return number;
}

void PutNumber(uint8_t* at, size_t bytes, uint64_t number, bool bigEndian) {
  for (size_t i = 0; i < bytes; ++i, number >>= 8) at[bigEndian ? bytes - 1 - i : i] = static_cast<uint8_t>(number);
}

TiffField NumberField(uint16_t tag, uint16_t type, uint64_t number, bool bigEndian) {
  TiffField field{tag, type, Bytes(BytesOfType(type))};
  PutNumber(field.value.data(), field.value.size(), number, bigEndian);
  return field;
}

TiffField RationalField(uint16_t tag, double number, bool bigEndian) {
  constexpr double kMost = 4294967295.0;
  number = number >= 0 ? std::min(number, kMost) : 0;  // a NaN too
  uint32_t below = 1;
  while (below < 10000 && number * below * 10 <= kMost && std::abs(number * below - std::round(number * below)) > 1e-4)
    below *= 10;
  TiffField field{tag, kTypeRational, Bytes(8)};
  PutNumber(field.value.data(), 4, static_cast<uint64_t>(std::llround(number * below)), bigEndian);
  PutNumber(field.value.data() + 4, 4, below, bigEndian);
  return field;
}

TiffField AsciiField(uint16_t tag, const std::string& text) {
  TiffField field{tag, kTypeAscii, Bytes(text.begin(), text.end())};
  field.value.push_back(0);
  return field;
}

std::optional<TiffStructure> TiffStructure::Open(const ByteSource& bytes) {
  uint8_t start[16];
  const size_t got = bytes.read(0, start, sizeof start);
  if (got < 8 || (std::memcmp(start, "II", 2) != 0 && std::memcmp(start, "MM", 2) != 0)) return {};
  TiffStructure structure;
  structure.bytes_ = bytes;
  structure.form_.bigEndian = start[0] == 'M';
  const uint64_t mark = NumberAt(start + 2, 2, structure.form_.bigEndian);
  structure.form_.wide = mark == 43;
  if (mark != 42 && !(mark == 43 && got == 16)) return {};
  structure.first_ = mark == 42 ? structure.Offset(4, 4) : structure.Offset(8, 8);
  if (structure.first_ == 0) return {};
  return structure;
}

uint64_t TiffStructure::NumberOf(int64_t at, size_t bytes) const {
  uint8_t held[8];
  return bytes <= sizeof held && bytes_.read(at, held, bytes) == bytes ? NumberAt(held, bytes, form_.bigEndian) : 0;
}

int64_t TiffStructure::Offset(int64_t at, size_t bytes) const {
  const uint64_t offset = NumberOf(at, bytes);
  return offset < static_cast<uint64_t>(bytes_.size) ? static_cast<int64_t>(offset) : 0;
}

TiffDirectory TiffStructure::Read(int64_t directory) const {
  const Widths widths = WidthsOf(form_);
  TiffDirectory found;
  const int64_t first = directory + static_cast<int64_t>(widths.count);
  const uint64_t count = NumberOf(directory, widths.count);
  // Tags have 16 bits: more entries cannot be meant.
  if (directory <= 0 || first > bytes_.size || count > 0xFFFF) return {{}, 0, true};
  const uint64_t there = std::min(count, static_cast<uint64_t>(bytes_.size - first) / widths.entry);
  Bytes held(there * widths.entry);
  found.damaged = there < count || bytes_.read(first, held.data(), held.size()) != held.size();
  for (size_t i = 0; i < there && !held.empty(); ++i) {
    const uint8_t* entry = held.data() + i * widths.entry;
    const auto number = [&](size_t at, size_t bytes) { return NumberAt(entry + at, bytes, form_.bigEndian); };
    TiffEntry field{static_cast<uint16_t>(number(0, 2)),
                    static_cast<uint16_t>(number(2, 2)),
                    number(4, widths.offset),
                    first + static_cast<int64_t>(i * widths.entry),
                    0,
                    0};
    const size_t size = BytesOfType(field.type);
    const uint64_t total = static_cast<uint64_t>(bytes_.size);
    const bool possible = size > 0 && field.count > 0 && field.count <= total / size;
    field.bytes = possible ? static_cast<size_t>(field.count) * size : 0;
    const uint64_t offset = number(widths.valueAt, widths.offset);
    const bool within = field.bytes <= widths.offset;
    field.valueAt = within ? field.at + static_cast<int64_t>(widths.valueAt) : static_cast<int64_t>(offset);
    if (possible && (within || (offset <= total && field.bytes <= total - offset)))
      found.entries.push_back(field);
    else
      found.damaged = true;
  }
  const int64_t end = first + static_cast<int64_t>(count * widths.entry);
  if (there == count && end + static_cast<int64_t>(widths.offset) <= bytes_.size) found.nextAt = end;
  return found;
}

Bytes TiffStructure::Value(const TiffEntry& entry) const {
  Bytes value(entry.bytes);
  if (bytes_.read(entry.valueAt, value.data(), value.size()) != value.size()) return {};
  return value;
}

double TiffStructure::Number(const TiffEntry& entry, size_t index) const {
  const size_t size = BytesOfType(entry.type);
  if (index >= entry.count) return 0;
  const int64_t at = entry.valueAt + static_cast<int64_t>(index * size);
  if (entry.type == kTypeByte || entry.type == kTypeShort || entry.type == kTypeLong)
    return static_cast<double>(NumberOf(at, size));
  if (entry.type != kTypeRational) return 0;
  const double below = static_cast<double>(NumberOf(at + 4, 4));
  return below > 0 ? static_cast<double>(NumberOf(at, 4)) / below : 0;
}

size_t DirectorySize(const TiffFields& fields, TiffForm form) {
  const Widths widths = WidthsOf(form);
  size_t size = widths.count + fields.size() * widths.entry + widths.offset;
  for (const TiffField& field : fields)
    if (field.value.size() > widths.offset) size += Even(field.value.size());
  return size;
}

Bytes DirectoryBytes(TiffFields fields, uint64_t at, TiffForm form) {
  const Widths widths = WidthsOf(form);
  std::ranges::stable_sort(fields, {}, &TiffField::tag);
  Bytes bytes(DirectorySize(fields, form));
  const auto put = [&](uint8_t* to, size_t size, uint64_t number) { PutNumber(to, size, number, form.bigEndian); };
  put(bytes.data(), widths.count, fields.size());
  uint8_t* entry = bytes.data() + widths.count;
  size_t end = widths.count + fields.size() * widths.entry + widths.offset;
  for (const TiffField& field : fields) {
    put(entry, 2, field.tag);
    put(entry + 2, 2, field.type);
    put(entry + 4, widths.offset, field.value.size() / std::max<size_t>(BytesOfType(field.type), 1));
    const bool within = field.value.size() <= widths.offset;
    if (!within) put(entry + widths.valueAt, widths.offset, at + end);
    std::ranges::copy(field.value, within ? entry + widths.valueAt : bytes.data() + end);
    if (!within) end += Even(field.value.size());
    entry += widths.entry;
  }
  return bytes;
}

}  // namespace norv
