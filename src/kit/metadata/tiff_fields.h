// Directories of fields, as TIFF files and EXIF blocks have them (TIFF 6.0, section 2; BigTIFF with offsets of 64
// bits).
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "kit/formats/byte_stream.h"

namespace norv {

struct TiffForm {
  bool bigEndian = false;  // "MM", else "II"
  bool wide = false;       // BigTIFF

  bool operator==(const TiffForm&) const = default;
};

enum TiffType : uint16_t {
  kTypeByte = 1,
  kTypeAscii = 2,
  kTypeShort = 3,
  kTypeLong = 4,
  kTypeRational = 5,
  kTypeUndefined = 7,
  kTypeLong8 = 16,
};

// Bytes of one value; 0 for an unknown type.
size_t BytesOfType(uint16_t type);

uint64_t NumberAt(const uint8_t* at, size_t bytes, bool bigEndian);
void PutNumber(uint8_t* at, size_t bytes, uint64_t number, bool bigEndian);

// A field with its value in the byte order of the structure that it comes from or goes to.
struct TiffField {
  uint16_t tag, type;
  Bytes value;
};
using TiffFields = std::vector<TiffField>;

// A field of one number, which the type holds.
TiffField NumberField(uint16_t tag, uint16_t type, uint64_t number, bool bigEndian);
// A fraction near to a number that is not negative.
TiffField RationalField(uint16_t tag, double number, bool bigEndian);
TiffField AsciiField(uint16_t tag, const std::string& text);

// Where a field lies in the bytes.
struct TiffEntry {
  uint16_t tag, type;
  uint64_t count;   // values
  int64_t at;       // of the entry itself
  int64_t valueAt;  // of the value, which lies inside of the bytes
  size_t bytes;     // of the value
};

struct TiffDirectory {
  std::vector<TiffEntry> entries;  // in the file's order; only whole ones of known types
  int64_t nextAt = 0;              // where the offset of the next directory stands; 0: nowhere
  bool damaged = false;            // some entries were left out, or all
};

// A file or a block whose header makes sense. Nothing in it is trusted: what reaches over the end is not there.
class TiffStructure {
 public:
  static std::optional<TiffStructure> Open(const ByteSource& bytes);

  TiffForm Form() const { return form_; }
  int64_t First() const { return first_; }
  int64_t Size() const { return bytes_.size; }
  TiffDirectory Read(int64_t directory) const;
  // The value's bytes, and one of its numbers without a sign (of a rational the quotient); 0 for what there is not.
  Bytes Value(const TiffEntry& entry) const;
  double Number(const TiffEntry& entry, size_t index = 0) const;
  // Of an offset that a field or a directory's end holds; 0: none.
  int64_t Offset(int64_t at, size_t bytes) const;

 private:
  uint64_t NumberOf(int64_t at, size_t bytes) const;

  ByteSource bytes_;
  TiffForm form_;
  int64_t first_ = 0;
};

// Bytes of a directory of these fields with the values that do not fit into it.
size_t DirectorySize(const TiffFields& fields, TiffForm form);
// The same as it stands at the offset `at`, in the order of the tags; no directory follows it.
Bytes DirectoryBytes(TiffFields fields, uint64_t at, TiffForm form);

}  // namespace norv
