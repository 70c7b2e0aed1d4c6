#include "kit/codec.h"

#include <algorithm>
#include <limits>

#include "kit/failure.h"
#include "platform/memory.h"

namespace norv {
namespace {

const Codec* const kCodecs[] = {
    &kPng,
    &kJpeg,
    &kTiff,
#ifdef NORV_WEBP
    &kWebp,
#endif
};

}  // namespace

void Samples::Allocate(int64_t newWidth, int64_t newHeight, int32_t newChannels, int32_t newBits) {
  if (newWidth <= 0 || newHeight <= 0) Fail("the picture has no pixels");
  if (newWidth > std::numeric_limits<int32_t>::max() / newHeight) Fail("the picture has more than 2^31 pixels");
  const int64_t pixels = newWidth * newHeight;
  const int64_t needed = pixels * newChannels * (newBits / 8 + static_cast<int64_t>(sizeof(float)));
  if (static_cast<size_t>(needed) > AvailableMemory())
    Fail("the picture of %d x %d pixels does not fit into memory", int(newWidth), int(newHeight));
  width = static_cast<int32_t>(newWidth);
  height = static_cast<int32_t>(newHeight);
  channels = newChannels;
  bits = newBits;
  bytes.assign(RowBytes() * newHeight, 0);
}

const Codec* CodecOfContents(std::span<const uint8_t> start) {
  for (const Codec* codec : kCodecs)
    if (codec->recognise(start)) return codec;
  return nullptr;
}

std::string KnownFormats() {
  std::string names;
  for (const Codec* codec : kCodecs) names += (names.empty() ? "" : ", ") + std::string(codec->name);
  return names;
}

const Codec* CodecOfName(const std::string& path) {
  const std::string extension = ExtensionOf(path);
  for (const Codec* codec : kCodecs)
    if (std::ranges::find(codec->extensions, extension) != codec->extensions.end()) return codec;
  return nullptr;
}

std::string ExtensionOf(const std::string& path) {
  const size_t name = path.find_last_of('/') + 1, point = path.find_last_of('.');
  if (point == std::string::npos || point < name) return "";
  std::string extension = path.substr(point + 1);
  for (char& c : extension)
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c + 'a' - 'A');
  return extension;
}

int32_t TurnOfOrientationTag(int32_t tag) {
  constexpr int32_t kTurns[] = {0, 0, 1, 4, 2, 7, 3, 6, 5};
  return tag >= 1 && tag <= 8 ? kTurns[tag] : 0;
}

}  // namespace norv
