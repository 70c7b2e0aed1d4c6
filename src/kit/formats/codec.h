// Picture formats: rows of samples in and out of a file's bytes. One file a format, one row a format in the table.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <vector>

#include "kit/formats/byte_stream.h"
#include "kit/formats/encoding.h"
#include "kit/formats/samples.h"

namespace norv {

// Whether a format changes samples to save bytes.
enum class Loss { never, byChoice, always };

// What EncodingChoice::compression may be: nothing, "none", or a degree as well.
enum class Compressing { unasked, orNot, byDegrees };

// Where the rows of a file stand that has places for them: one behind the other from some byte on, their numbers in the
// machine's byte order or in the other one.
struct RowPlaces {
  int64_t first;
  bool swapped;
};

struct Codec {
  const char* name;
  std::vector<std::string> extensions;  // lower case, without the point; the usual one first
  int32_t leastBits = 8, mostBits = 8;  // of a sample that is written: 8, 16, or 32 for floats
  bool alpha = false;                   // whether it can hold that
  Loss loss = Loss::never;              // of what is written
  int32_t mostSide = INT32_MAX;         // pixels
  Compressing compressing = Compressing::unasked;
  const char* several = nullptr;  // what a file can hold several of, any of which is read: "pages"
  uint32_t carries = 0;           // the kinds of metadata that it has a place for (metadata/carry.h)
  bool (*recognise)(std::span<const uint8_t> start);
  // Both throw a Failure: for a damaged or unknown file, for a page that is not there, for a picture that the format
  // cannot hold. Without `create` the format is only read.
  SampleSource (*open)(const ByteSource& source, const ReadChoice& choice);
  SampleSink (*create)(const ByteSink& sink, const PictureShape& shape, const EncodingChoice& choice) = nullptr;

  // Before any row is written; null, or nothing, where rows have no places. What `create` then lacks when it finishes
  // is held to be there. Of the metadata those that the picture came with count.
  std::optional<RowPlaces> (*places)(const PictureShape& shape, const EncodingChoice& choice) = nullptr;

  // Whole files in memory.
  Samples Decode(const Bytes& bytes, const ReadChoice& choice = {}) const;
  Bytes Encode(const Samples& samples, const EncodingChoice& choice) const;
};

// All of them.
std::span<const Codec* const> Codecs();

// The format of a file that starts so, or of a file so named; null for none of ours.
const Codec* CodecOfContents(std::span<const uint8_t> start);
const Codec* CodecOfName(const std::string& path);
// The one with that extension or, in lower case, name.
const Codec* CodecOfWord(const std::string& word);

extern const Codec kPng, kJpeg, kTiff, kBmp, kPpm, kPgm, kPbm, kPam, kPfm;
#ifdef NORV_WEBP
extern const Codec kWebp;
#endif
#ifdef NORV_JXL
extern const Codec kJxl;
#endif
#ifdef NORV_HEIF
extern const Codec kAvif, kHeic;
#endif

// For a format's own file: a source or sink from an object that reads or writes a single row at a time.
//   Reader  { PictureShape shape; void ReadRow(uint8_t*); }      Writer  { void WriteRow(const uint8_t*); void
//   Finish(); }
template <typename Reader>
SampleSource RowByRow(std::shared_ptr<Reader> reader) {
  return {reader->shape, [reader](Samples& rows, int32_t at, int32_t count) {
            for (int32_t r = at; r < at + count; ++r) reader->ReadRow(rows.Row(r));
          }};
}
template <typename Writer>
SampleSink ToRowByRow(std::shared_ptr<Writer> writer) {
  const auto write = [writer](const Samples& rows) {
    for (int32_t r = 0; r < rows.height; ++r) writer->WriteRow(rows.Row(r));
  };
  return {write, [writer] { writer->Finish(); }};
}

}  // namespace norv
