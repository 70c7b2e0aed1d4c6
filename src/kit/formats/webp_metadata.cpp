#ifdef NORV_WEBP

#include "kit/formats/webp_metadata.h"

#include <cstring>
#include <webp/mux.h>

#include "kit/failure.h"
#include "kit/metadata/containers.h"
#include "kit/metadata/exif.h"
#include "kit/metadata/image_resources.h"
#include "kit/metadata/text.h"
#include "platform/console.h"

namespace norv {
namespace {

struct MuxDelete {
  void operator()(WebPMux* mux) const { WebPMuxDelete(mux); }
};

// On bytes that outlive it; null for no container.
std::unique_ptr<WebPMux, MuxDelete> Open(const Bytes& webp) {
  const WebPData data = {webp.data(), webp.size()};
  return std::unique_ptr<WebPMux, MuxDelete>(WebPMuxCreate(&data, 0));
}

// The first chunk of this name. The library would refuse the whole container for a flag that is wrong.
std::span<const uint8_t> ChunkOf(const Bytes& webp, const char* name) {
  constexpr size_t kFirst = 12, kHead = 8;
  for (size_t at = kFirst; at + kHead <= webp.size();) {
    const size_t size = static_cast<size_t>(NumberAt(&webp[at + 4], 4, false));
    if (size > webp.size() - at - kHead) break;
    if (std::memcmp(&webp[at], name, 4) == 0) return std::span(webp).subspan(at + kHead, size);
    at += kHead + size + size % 2;
  }
  return {};
}

// Image resources have no place in the container: like any chunk that readers do not know they are passed over.
constexpr char kResources[] = "8BIM";

// Some writers put JPEG's mark in front of the block.
void DropMark(Bytes& exif) {
  constexpr size_t kMark = 6;
  if (exif.size() > kMark && std::memcmp(exif.data(), "Exif\0\0", kMark) == 0)
    exif.erase(exif.begin(), exif.begin() + kMark);
}

// A picture of this format always has colours, which a profile of grey says nothing about.
bool IsOfGrey(const Bytes& icc) { return icc.size() > 20 && CharactersOf({&icc[16], 4}) == "GRAY"; }

}  // namespace

std::shared_ptr<const Metadata> ReadWebpMetadata(const Bytes& webp) {
  Metadata metadata;
  const auto take = [&](const char* name) {
    const auto chunk = ChunkOf(webp, name);
    return Bytes(chunk.begin(), chunk.end());
  };
  metadata.icc = take("ICCP");
  metadata.exif = take("EXIF");
  metadata.xmp = take("XMP ");
  ReadResources(take(kResources), metadata);
  DropMark(metadata.exif);
  metadata.orientation = ExifOrientation(metadata.exif);
  TakeExifComment(metadata);
  return std::make_shared<const Metadata>(std::move(metadata));
}

Bytes WithWebpMetadata(Bytes webp, const Metadata* metadata) {
  if (!metadata) return webp;
  const auto mux = Open(webp);
  bool fine = mux != nullptr;
  const auto put = [&](const char* name, const Bytes& bytes) {
    const WebPData data = {bytes.data(), bytes.size()};
    if (fine && !bytes.empty()) fine = WebPMuxSetChunk(mux.get(), name, &data, 1) == WEBP_MUX_OK;
  };
  if (IsOfGrey(metadata->icc))
    Warn("WebP holds colours, which the profile of a grey picture does not fit: it is left out");
  else
    put("ICCP", metadata->icc);
  put("EXIF", metadata->exif);
  put("XMP ", metadata->xmp);
  put(kResources, ResourcesOf(*metadata));
  WebPData whole = {nullptr, 0};
  fine = fine && WebPMuxAssemble(mux.get(), &whole) == WEBP_MUX_OK;
  Bytes bytes(whole.bytes, whole.bytes + whole.size);
  WebPDataClear(&whole);
  if (!fine) Fail("WebP: metadata cannot be written");
  return bytes;
}

}  // namespace norv

#endif
