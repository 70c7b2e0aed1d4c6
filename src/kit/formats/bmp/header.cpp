#include "kit/formats/bmp/header.h"

#include <algorithm>

#include "kit/failure.h"
#include "kit/formats/samples.h"

namespace norv {
namespace {

constexpr uint32_t kFileHeader = 14, kCore = 12, kOs2Short = 16, kInfo = 40, kWithAlphaMask = 56, kOs2 = 64;
constexpr uint32_t kInfoSizes[] = {kCore, kOs2Short, kInfo, 52, kWithAlphaMask, kOs2, 108, 124};

uint32_t Short(std::span<const uint8_t> bytes, size_t at) { return bytes[at] | uint32_t{bytes[at + 1]} << 8; }
uint32_t Long(std::span<const uint8_t> bytes, size_t at) { return Short(bytes, at) | Short(bytes, at + 2) << 16; }

bool IsOneOf(std::span<const uint32_t> values, uint32_t value) {
  return std::ranges::find(values, value) != values.end();
}

constexpr uint32_t kDepths[] = {1, 4, 8, 16, 24, 32};

}  // namespace

bool IsBmp(std::span<const uint8_t> start) {
  if (start.size() < kFileHeader + kCore || start[0] != 'B' || start[1] != 'M') return false;
  const uint32_t size = Long(start, 14);
  if (size != kCore && start.size() < kFileHeader + 16) return false;
  const size_t planes = size == kCore ? 22 : 26;
  return IsOneOf(kInfoSizes, size) && Short(start, planes) == 1 && IsOneOf(kDepths, Short(start, planes + 2));
}

BmpHeader::BmpHeader(const ByteSource& source) {
  std::array<uint8_t, kFileHeader + 124> bytes = {};  // zeros where a header is shorter
  const size_t got = source.read(0, bytes.data(), bytes.size());
  if (!IsBmp({bytes.data(), got})) Fail("BMP: a header that makes no sense");
  pixels = Long(bytes, 10);
  const uint32_t size = Long(bytes, kFileHeader);
  if (got < kFileHeader + size) Fail("BMP: the file ends early");
  // A short header stands before its bit masks or its palette, which are no fields of it.
  const size_t fields = size == kInfo ? kInfo + 16 : size;
  const std::span<const uint8_t> info(bytes.data() + kFileHeader, std::max<size_t>(fields, kInfo));
  if (size < kInfo) std::fill(bytes.begin() + kFileHeader + size, bytes.end(), uint8_t{0});
  if (size == kCore) {
    width = static_cast<int32_t>(Short(info, 4));
    height = static_cast<int32_t>(Short(info, 6));
    bits = static_cast<int32_t>(Short(info, 10));
    RequirePossible(width, height);
    ReadPalette(source, kFileHeader + size, 3, 0);
    return;
  }
  ReadSizes(info);
  ReadPacking(size == kOs2 && Long(info, 16) > 2 ? UINT32_MAX : Long(info, 16), info);
  const int64_t separateMasks = size == kInfo && Long(info, 16) == 3   ? 12
                                : size == kInfo && Long(info, 16) == 6 ? 16
                                                                       : 0;
  if (HasPalette()) ReadPalette(source, kFileHeader + size + separateMasks, 4, Long(info, 32));
}

void BmpHeader::ReadSizes(std::span<const uint8_t> info) {
  width = static_cast<int32_t>(Long(info, 4));
  const int64_t signedHeight = static_cast<int32_t>(Long(info, 8));
  topDown = signedHeight < 0;
  RequirePossible(width, std::abs(signedHeight));
  height = static_cast<int32_t>(std::abs(signedHeight));
  bits = static_cast<int32_t>(Short(info, 14));
  const auto x = static_cast<int32_t>(Long(info, 24)), y = static_cast<int32_t>(Long(info, 28));
  if (x > 0 && y > 0) resolution = {static_cast<double>(x), static_cast<double>(y), ResolutionUnit::metre};
}

void BmpHeader::ReadPacking(uint32_t compression, std::span<const uint8_t> info) {
  constexpr uint32_t kPlain = 0, kRuns8 = 1, kRuns4 = 2, kMasks = 3, kMasksWithAlpha = 6;
  const uint32_t size = Long(info, 0);
  if (compression == kRuns8 && bits == 8 && !topDown) {
    packing = BmpPacking::runsOfBytes;
  } else if (compression == kRuns4 && bits == 4 && !topDown) {
    packing = BmpPacking::runsOfNibbles;
  } else if ((compression == kMasks || compression == kMasksWithAlpha) && (bits == 16 || bits == 32)) {
    for (size_t k = 0; k < 3; ++k) masks[k] = Long(info, 40 + 4 * k);
    if (compression == kMasksWithAlpha || size >= kWithAlphaMask) masks[3] = Long(info, 52);
  } else if (compression != kPlain) {
    Fail("BMP: compression %u of %d bits a pixel", compression, bits);
  } else if (bits == 16) {
    masks = {0x7C00, 0x3E0, 0x1F, 0};
  } else if (bits == 32) {
    masks = {0xFF0000, 0xFF00, 0xFF, 0};
  }
}

// used: how many entries there are, 0 for all.
void BmpHeader::ReadPalette(const ByteSource& source, int64_t position, int32_t entryBytes, uint32_t used) {
  if (!HasPalette()) return;
  const uint32_t most = 1u << bits, count = used == 0 ? most : std::min(used, most);
  std::array<uint8_t, 4 * 256> entries = {};
  // What begins with the pixels is no entry.
  const int64_t room = std::clamp<int64_t>(pixels - position, 0, int64_t{count} * entryBytes);
  source.read(position, entries.data(), static_cast<size_t>(room));
  greyPalette = true;
  for (uint32_t i = 0; i < count; ++i) {
    const uint8_t* entry = &entries[i * entryBytes];
    for (uint32_t k = 0; k < 3; ++k) colours[3 * i + k] = entry[2 - k];
    greyPalette &= entry[0] == entry[1] && entry[1] == entry[2];
  }
}

}  // namespace norv
