#include "kit/formats/png/strip.h"

#include <algorithm>
#include <new>
#include <span>
#include <utility>
#include <zlib.h>

#include "platform/assert.h"

namespace norv {
namespace {

constexpr size_t kStripBytes = size_t{1} << 18, kLongStripBytes = size_t{1} << 21;
constexpr size_t kReach = size_t{1} << 15;  // of matches
constexpr size_t kSample = size_t{1} << 13;
constexpr int kBestFilters = kRowFilters;  // beside each of them everywhere: the best for every row

using Span = std::span<const uint8_t>;

// One way to compress.
struct Way {
  int level, strategy;
};
constexpr Way kRuns = {6, Z_RLE};

// The piece of a deflate stream that stands behind `before`; it ends on a whole byte.
Bytes Deflate(Span before, Span data, Way way, bool last) {
  constexpr int kNoHeader = -15, kMostMemory = 9;
  z_stream stream{};
  if (deflateInit2(&stream, way.level, Z_DEFLATED, kNoHeader, kMostMemory, way.strategy) != Z_OK)
    throw std::bad_alloc();
  if (!before.empty()) deflateSetDictionary(&stream, before.data(), static_cast<uInt>(before.size()));
  constexpr size_t kFlush = 16;
  Bytes bytes(deflateBound(&stream, static_cast<uLong>(data.size())) + kFlush);
  stream.next_in = const_cast<uint8_t*>(data.data());
  stream.avail_in = static_cast<uInt>(data.size());
  stream.next_out = bytes.data();
  stream.avail_out = static_cast<uInt>(bytes.size());
  const int result = deflate(&stream, last ? Z_FINISH : Z_SYNC_FLUSH);
  NORV_ASSERT(result == (last ? Z_STREAM_END : Z_OK) && stream.avail_out > 0);
  bytes.resize(bytes.size() - stream.avail_out);
  deflateEnd(&stream);
  return bytes;
}

Bytes Shorter(Bytes a, Bytes b) { return b.size() < a.size() ? std::move(b) : std::move(a); }

// The strip's rows filtered, behind as many of those before it as are referred to.
Bytes Filtered(const PngStrip& strip, int filter) {
  const size_t stride = strip.Stride(), length = strip.rowBytes + 1, count = strip.rows.size() / stride - 1;
  Bytes filtered(count * length), scratch(length);
  for (size_t r = 0; r < count; ++r) {
    const uint8_t *above = strip.rows.data() + r * stride + kRowMargin, *row = above + stride;
    uint8_t* target = filtered.data() + r * length;
    if (filter == kBestFilters)
      FilterRowBest(row, above, static_cast<int64_t>(strip.rowBytes), strip.pixelBytes, target, scratch.data());
    else
      FilterRow(filter, row, above, static_cast<int64_t>(strip.rowBytes), strip.pixelBytes, target);
  }
  return filtered;
}

// What stands before place `at`, as far as matches reach.
Span WithinReach(Span filtered, size_t at) { return filtered.first(at).last(std::min(at, kReach)); }

// Whether matches pay, from two parts of what stands from `at` on. Quicker levels than the third miss those of text.
bool MatchesPay(Span filtered, size_t at) {
  constexpr Way kLook = {3, Z_DEFAULT_STRATEGY};
  constexpr double kWorthIt = 0.9;
  const size_t length = filtered.size() - at, part = std::min(kSample, length);
  size_t matches = 0, runs = 0;
  for (const size_t third : {1, 2}) {
    const size_t first = at + (length - part) * third / 3;
    const Span sample = filtered.subspan(first, part);
    matches += Deflate(WithinReach(filtered, first), sample, kLook, true).size();
    runs += Deflate({}, sample, kRuns, true).size();
  }
  return static_cast<double>(matches) < kWorthIt * static_cast<double>(runs);
}

// Of the filters for all rows of the strip that which a quick look likes best.
Bytes FilteredBest(const PngStrip& strip) {
  constexpr Way kLooks[] = {{1, Z_DEFAULT_STRATEGY}, kRuns};
  Bytes best;
  size_t least = SIZE_MAX;
  for (const int filter : {kBestFilters, 0, 1, 2, 3, 4}) {
    Bytes filtered = Filtered(strip, filter);
    for (const Way look : kLooks)
      if (const size_t size = Deflate({}, filtered, look, true).size(); size < least) {
        least = size;
        best = filtered;
      }
  }
  return best;
}

}  // namespace

StripCompressor::StripCompressor(int32_t compression, size_t rowBytes)
    : compression_(compression), rowBytes_(rowBytes) {}

int64_t StripCompressor::Rows() const {
  return std::max<int64_t>((compression_ == 9 ? kLongStripBytes : kStripBytes) / (rowBytes_ + 1), 1);
}

// Where filters are tried, nobody knows those of the strip before: matches then begin anew, in longer strips.
int64_t StripCompressor::Before() const {
  const bool matches = compression_ >= 2 && compression_ <= 8;
  return 1 + (matches ? static_cast<int64_t>((kReach + rowBytes_) / (rowBytes_ + 1)) : 0);
}

CompressedStrip StripCompressor::Compress(const PngStrip& strip) const {
  const Bytes filtered =
      compression_ == 9 ? FilteredBest(strip) : Filtered(strip, compression_ == 0 ? 0 : kBestFilters);
  const size_t at = static_cast<size_t>(strip.before - 1) * (rowBytes_ + 1);
  const Span data = Span(filtered).subspan(at), before = WithinReach(filtered, at);
  const Way matches = {compression_, Z_DEFAULT_STRATEGY};
  CompressedStrip result;
  result.length = static_cast<int64_t>(data.size());
  result.adler = static_cast<uint32_t>(adler32_z(1, data.data(), data.size()));
  if (compression_ == 0)
    result.bytes = Deflate({}, data, matches, strip.last);
  else if (compression_ >= 6)
    result.bytes = Shorter(Deflate(before, data, matches, strip.last), Deflate({}, data, kRuns, strip.last));
  else if (compression_ > 1 && MatchesPay(filtered, at))
    result.bytes = Deflate(before, data, matches, strip.last);
  else
    result.bytes = Deflate({}, data, kRuns, strip.last);
  return result;
}

}  // namespace norv
