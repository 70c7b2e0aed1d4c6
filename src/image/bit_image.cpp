#include "image/bit_image.h"

#include <cstdio>
#include <cstring>
#include <limits>
#include <utility>

#include "platform/console.h"
#include "platform/paths.h"

namespace norv {
namespace {

// One text for both directions: the graphical program's users know it.
constexpr char kCannotOpen[] = "PROBLEM OPENING FILE FOR WRITING!";

[[noreturn]] void ThrowPixelsMissing(double bytes) {
  thread_local char message[128];
  std::snprintf(message, sizeof message,
                "Out of memory!\n\nFailed to allocate %.2f MB memory for BitImage pixels member.", bytes * 1e-6);
  throw static_cast<const char*>(message);
}

// Bytes of the store. Possible sizes only.
int64_t StoreBytes(int32_t width, int32_t height) { return BitStride(width) * height; }

}  // namespace

bool BitImageHeader::Possible() const {
  if (width < 0 || height < 0) return false;
  return height == 0 || BitStride(width) <= std::numeric_limits<int32_t>::max() / height;
}

int64_t BitImageHeader::FileBytes() const { return HeaderBytes<BitImageHeader>() + StoreBytes(width, height); }

BitImage::BitImage(const BitImage& other) : BitImage(other.width, other.height) {
  if (size > 0) std::memcpy(pixels.get(), other.pixels.get(), static_cast<size_t>(size));
}

void BitImage::swap(BitImage& other) noexcept {
  std::swap(width, other.width);
  std::swap(height, other.height);
  std::swap(count, other.count);
  std::swap(rows, other.rows);
  std::swap(size, other.size);
  std::swap(pixels, other.pixels);
}

void BitImage::Redim(int32_t newWidth, int32_t newHeight) {
  rows.reset();
  pixels.reset();
  width = height = count = size = 0;
  const BitImageHeader sizes{newWidth, newHeight};
  if (!sizes.Possible()) ThrowPixelsMissing(static_cast<double>(BitStride(newWidth)) * newHeight);
  const int64_t bytes = StoreBytes(newWidth, newHeight);
  if (bytes > 0) {
    try {
      pixels = MakeAligned<uint8_t>(static_cast<size_t>(bytes));
      rows = MakeAligned<uint8_t*>(static_cast<size_t>(newHeight));
    } catch (const std::bad_alloc&) {
      pixels.reset();
      ThrowPixelsMissing(static_cast<double>(bytes));
    }
  }
  width = newWidth;
  height = newHeight;
  count = bytes > 0 ? width * height : 0;
  size = static_cast<int32_t>(bytes);
  for (int32_t k = 0; size > 0 && k < height; ++k) {
    rows[k] = pixels.get() + k * BitStride(width);
    std::memset(rows[k] + 3 * int64_t{width}, 0, static_cast<size_t>(BitStride(width) - 3 * int64_t{width}));
  }
}

BitImage& BitImage::Load(const std::string& name, Folder folder) {
  FileIn file(PathOf(name, folder));
  if (!file.IsOpen()) {
    Complain("cannot read %s: %s", file.Path().c_str(), file.Reason().c_str());
    throw kCannotOpen;
  }
  const auto header = ReadHeader<BitImageHeader>(file);
  if (!header.Possible())
    Complain("%s is damaged: an image of %d x %d pixels", file.Path().c_str(), header.width, header.height);
  Redim(header.width, header.height);
  file.Array(pixels.get(), static_cast<size_t>(size));
  file.WarnIfShort();
  return *this;
}

const BitImage& BitImage::Save(const std::string& name, Folder folder) const {
  FileOut file(PathOf(name, folder));
  WriteHeader(file, BitImageHeader{width, height});
  file.Array(pixels.get(), static_cast<size_t>(size));
  if (!file.Commit()) throw kCannotOpen;
  return *this;
}

}  // namespace norv
