// JPEG's segments (ITU-T T.81 B.1): EXIF and XMP in APP1, the profile in APP2 (ICC.1, B.4), image resources in APP13,
// comments, JFIF's density.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <map>

#include "kit/metadata/containers.h"
#include "kit/metadata/exif.h"
#include "kit/metadata/image_resources.h"
#include "kit/metadata/text.h"
#include "kit/metadata/xmp.h"
#include "platform/console.h"

namespace norv {
namespace {

constexpr size_t kMostOfSegment = 0xFFFF - 2;
constexpr uint8_t kApp0 = 0xE0, kApp1 = 0xE1, kApp2 = 0xE2, kApp13 = 0xED, kComment = 0xFE;

// What the segments begin with, their zeros included.
using namespace std::string_view_literals;
constexpr std::string_view kJfif = "JFIF\0"sv, kExif = "Exif\0\0"sv, kXmp = "http://ns.adobe.com/xap/1.0/\0"sv,
                           kXmpMore = "http://ns.adobe.com/xmp/extension/\0"sv, kIcc = "ICC_PROFILE\0"sv,
                           kResources = "Photoshop 3.0\0"sv;
constexpr size_t kNameLength = 32;  // of an extension

bool Begins(std::span<const uint8_t> bytes, std::string_view mark) { return CharactersOf(bytes).starts_with(mark); }

// Texts that PNG has a keyword for keep it in front of a comment; other words before a colon are the comment's own.
constexpr std::string_view kKeywords[] = {"Title",    "Author",     "Description", "Copyright", "Creation Time",
                                          "Software", "Disclaimer", "Warning",     "Source"};

class JpegMetadataReader {
 public:
  // The segment behind the marker.
  void Take(uint8_t marker, std::span<const uint8_t> bytes) {
    if (marker == kApp0 && Begins(bytes, kJfif) && bytes.size() >= 12) TakeDensity(bytes);
    if (marker == kApp1 && Begins(bytes, kExif) && found_.exif.empty())
      found_.exif.assign(bytes.begin() + kExif.size(), bytes.end());
    if (marker == kApp1 && Begins(bytes, kXmp) && found_.xmp.empty())
      found_.xmp.assign(bytes.begin() + kXmp.size(), bytes.end());
    if (marker == kApp1 && Begins(bytes, kXmpMore)) TakeExtension(bytes.subspan(kXmpMore.size()));
    if (marker == kApp2 && Begins(bytes, kIcc) && bytes.size() > kIcc.size() + 2)
      TakeProfile(bytes.subspan(kIcc.size()));
    if (marker == kApp13 && Begins(bytes, kResources))
      resources_.insert(resources_.end(), bytes.begin() + kResources.size(), bytes.end());
    if (marker == kComment) TakeComment(CharactersOf(bytes));
  }

  Metadata Finish() {
    if (!profile_.empty()) JoinProfile();
    ReadResources(resources_, found_);
    found_.xmpMore = Extension();
    return std::move(found_);
  }

 private:
  void TakeDensity(std::span<const uint8_t> jfif) {
    const uint8_t unit = jfif[7];
    const double scale = unit == 2 ? 100 : 1;
    const Resolution resolution{static_cast<double>(NumberAt(&jfif[8], 2, true)) * scale,
                                static_cast<double>(NumberAt(&jfif[10], 2, true)) * scale,
                                unit == 1   ? ResolutionUnit::inch
                                : unit == 2 ? ResolutionUnit::metre
                                            : ResolutionUnit::none};
    const bool says = resolution.unit != ResolutionUnit::none || resolution.x != resolution.y;
    if (says && resolution.x > 0 && resolution.y > 0) found_.resolution = resolution;
  }

  void TakeProfile(std::span<const uint8_t> part) {
    parts_ = part[1];
    profile_.emplace(part[0], Bytes(part.begin() + 2, part.end()));
  }
  void JoinProfile() {
    if (profile_.size() != parts_ || profile_.begin()->first != 1 || profile_.rbegin()->first != parts_)
      return Warn("the colour profile is not whole and is left out");
    for (const auto& [number, part] : profile_) found_.icc.insert(found_.icc.end(), part.begin(), part.end());
  }

  // Name, size of the whole, offset, bytes.
  void TakeExtension(std::span<const uint8_t> part) {
    if (part.size() < kNameLength + 8) return;
    const std::string name(CharactersOf(part.first(kNameLength)));
    const auto offset = static_cast<uint32_t>(NumberAt(&part[kNameLength + 4], 4, true));
    extensions_[name].emplace(offset, Bytes(part.begin() + kNameLength + 8, part.end()));
  }
  // Of the extension that the packet names what comes without a gap.
  Bytes Extension() {
    Bytes whole;
    for (const auto& [offset, part] : extensions_[ExtensionOfXmp(found_.xmp)]) {
      if (offset != whole.size()) break;
      whole.insert(whole.end(), part.begin(), part.end());
    }
    return whole;
  }

  void TakeComment(std::string_view comment) {
    const bool isUtf8 = IsUtf8(comment);
    TextEntry entry{"Comment", isUtf8 ? std::string(comment) : Utf8OfLatin1(comment)};
    entry.latin = !isUtf8 || Utf8OfLatin1(comment) == comment;
    for (const std::string_view keyword : kKeywords)
      if (entry.text.starts_with(std::string(keyword) + ": ")) {
        entry.keyword = keyword;
        entry.text.erase(0, keyword.size() + 2);
        break;
      }
    found_.text.push_back(std::move(entry));
  }

  Metadata found_;
  std::map<uint8_t, Bytes> profile_;
  size_t parts_ = 0;
  std::map<std::string, std::map<uint32_t, Bytes>> extensions_;
  Bytes resources_;
};

bool IsCarried(uint8_t marker) {
  return marker == kApp0 || marker == kApp1 || marker == kApp2 || marker == kApp13 || marker == kComment;
}

// Appends segments that begin with `head(i)` and hold the bytes one after another.
template <typename Head>
void Split(std::vector<JpegSegment>& segments, uint8_t marker, size_t headSize, std::span<const uint8_t> bytes,
           const Head& head) {
  const size_t most = kMostOfSegment - headSize;
  for (size_t at = 0; at < bytes.size(); at += most) {
    Bytes segment = head(at / most, at);
    const auto part = bytes.subspan(at, std::min(most, bytes.size() - at));
    segment.insert(segment.end(), part.begin(), part.end());
    segments.push_back({marker, std::move(segment)});
  }
}

Bytes Marked(std::string_view mark, std::span<const uint8_t> bytes = {}) {
  Bytes segment(mark.begin(), mark.end());
  segment.insert(segment.end(), bytes.begin(), bytes.end());
  return segment;
}

void AppendExif(std::vector<JpegSegment>& segments, const Bytes& exif) {
  if (exif.empty()) return;
  if (exif.size() > kMostOfSegment - kExif.size())
    return Warn("JPEG has no place for EXIF of %zu bytes, which is left out", exif.size());
  segments.push_back({kApp1, Marked(kExif, exif)});
}

// Names an extension by its contents; readers only compare the names.
std::string NameOf(std::span<const uint8_t> extension) {
  uint64_t sums[2] = {0xCBF29CE484222325, 0x84222325CBF29CE4};
  for (const uint8_t byte : extension)
    for (uint64_t& sum : sums) sum = (sum ^ byte) * 0x100000001B3;
  char name[kNameLength + 1];
  std::snprintf(name, sizeof name, "%016llX%016llX", static_cast<unsigned long long>(sums[0]),
                static_cast<unsigned long long>(sums[1]));
  return name;
}

// A packet longer than a segment is the extension of one that only says so.
void AppendXmp(std::vector<JpegSegment>& segments, const Metadata& metadata) {
  if (metadata.xmp.empty()) return;
  Bytes packet = metadata.xmp, more = metadata.xmpMore;
  if (packet.size() > kMostOfSegment - kXmp.size()) {
    more = more.empty() ? packet : JoinedXmp(packet, more);
    packet = XmpThatNames(NameOf(more));
  }
  const std::string name = ExtensionOfXmp(packet);
  segments.push_back({kApp1, Marked(kXmp, packet)});
  Split(segments, kApp1, kXmpMore.size() + kNameLength + 8, more, [&](size_t, size_t at) {
    Bytes head = Marked(kXmpMore, {reinterpret_cast<const uint8_t*>(name.data()), name.size()});
    head.resize(head.size() + 8);
    PutNumber(&head[head.size() - 8], 4, more.size(), true);
    PutNumber(&head[head.size() - 4], 4, at, true);
    return head;
  });
}

void AppendProfile(std::vector<JpegSegment>& segments, const Bytes& icc) {
  const size_t headSize = kIcc.size() + 2, most = kMostOfSegment - headSize, parts = (icc.size() + most - 1) / most;
  if (parts > 255) return Warn("JPEG has no place for a colour profile of %zu bytes, which is left out", icc.size());
  Split(segments, kApp2, headSize, icc, [&](size_t part, size_t) {
    Bytes head = Marked(kIcc);
    head.push_back(static_cast<uint8_t>(part + 1));
    head.push_back(static_cast<uint8_t>(parts));
    return head;
  });
}

}  // namespace

SharedMetadata ReadJpegMetadata(const ByteSource& jpeg) {
  JpegMetadataReader reader;
  constexpr int kMostStray = 1 << 16;
  size_t room = MostCarriedBytes();
  uint8_t head[4];
  int stray = 0;
  for (int64_t at = 2; stray < kMostStray && jpeg.read(at, head, 4) == 4;) {
    // Stray bytes between segments are passed over, as the decoder does; 0xFF may fill.
    if (head[0] != 0xFF || head[1] == 0xFF || head[1] < 0xC0) {
      ++at;
      ++stray;
      continue;
    }
    const uint8_t marker = head[1];
    const size_t length = static_cast<size_t>(NumberAt(head + 2, 2, true));
    if (marker == 0xDA || marker == 0xD9 || length < 2) break;
    if (marker >= 0xD0 && marker <= 0xD8) {
      at += 2;
      continue;
    }
    if (IsCarried(marker) && length - 2 <= room) {
      Bytes bytes(length - 2);
      bytes.resize(jpeg.read(at + 4, bytes.data(), bytes.size()));
      room -= bytes.size();
      reader.Take(marker, bytes);
    }
    at += 2 + static_cast<int64_t>(length);
  }
  Metadata metadata = reader.Finish();
  metadata.orientation = ExifOrientation(metadata.exif);
  return std::make_shared<const Metadata>(std::move(metadata));
}

std::vector<JpegSegment> JpegSegments(const Metadata& metadata) {
  std::vector<JpegSegment> segments;
  AppendExif(segments, metadata.exif);
  AppendXmp(segments, metadata);
  AppendProfile(segments, metadata.icc);
  Split(segments, kApp13, kResources.size(), ResourcesOf(metadata), [](size_t, size_t) { return Marked(kResources); });
  for (const TextEntry& entry : metadata.text) {
    std::string text = entry.keyword == "Comment" ? entry.text : entry.keyword + ": " + entry.text;
    if (const auto latin = Latin1OfUtf8(text); entry.latin && latin) text = *latin;
    const std::span<const uint8_t> bytes{reinterpret_cast<const uint8_t*>(text.data()), text.size()};
    Split(segments, kComment, 0, bytes, [](size_t, size_t) { return Bytes(); });
  }
  return segments;
}

JpegDensity JpegDensityOf(const Metadata& metadata) {
  const auto resolution = ResolutionOf(metadata);
  if (!resolution) return {};
  const bool metre = resolution->unit == ResolutionUnit::metre;
  const auto whole = [&](double dots) {
    return static_cast<uint16_t>(std::clamp(std::round(metre ? dots / 100 : dots), 1.0, 65535.0));
  };
  const auto unit = static_cast<uint8_t>(resolution->unit == ResolutionUnit::none ? 0 : metre ? 2 : 1);
  return {unit, whole(resolution->x), whole(resolution->y)};
}

}  // namespace norv
