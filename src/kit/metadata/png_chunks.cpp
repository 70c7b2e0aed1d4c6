// PNG's chunks (ISO/IEC 15948, 11.3): profile, gamma, chromaticities, size of a pixel, texts, EXIF; XMP in an
// international text, image resources in a text of hexadecimal digits.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <zlib.h>

#include "kit/metadata/containers.h"
#include "kit/metadata/exif.h"
#include "kit/metadata/image_resources.h"
#include "kit/metadata/text.h"
#include "platform/console.h"

namespace norv {
namespace {

constexpr std::string_view kXmpKeyword = "XML:com.adobe.xmp", kRawProfile = "Raw profile type ";
constexpr double kPerUnit = 100000;  // of gamma and chromaticities
constexpr double kInch = 0.0254;     // metres

// What a compressed part of a chunk holds; nothing where it is damaged or too long.
std::optional<Bytes> Inflated(std::span<const uint8_t> bytes) {
  const size_t most = MostCarriedBytes();
  Bytes whole;
  z_stream stream = {};
  stream.next_in = const_cast<Bytef*>(bytes.data());
  stream.avail_in = static_cast<uInt>(bytes.size());
  if (inflateInit(&stream) != Z_OK) return {};
  int state = Z_OK;
  while (state == Z_OK && whole.size() < most) {
    const size_t at = whole.size(), piece = std::min(std::max<size_t>(4096, at), most - at);
    whole.resize(at + piece);
    stream.next_out = whole.data() + at;
    stream.avail_out = static_cast<uInt>(piece);
    state = inflate(&stream, Z_NO_FLUSH);
    whole.resize(at + piece - stream.avail_out);
  }
  inflateEnd(&stream);
  if (state != Z_STREAM_END) return {};
  return whole;
}

Bytes Deflated(std::span<const uint8_t> bytes) {
  uLongf size = compressBound(static_cast<uLong>(bytes.size()));
  Bytes packed(size);
  compress2(packed.data(), &size, bytes.data(), static_cast<uLong>(bytes.size()), Z_BEST_COMPRESSION);
  packed.resize(size);
  return packed;
}

std::span<const uint8_t> BytesOf(std::string_view text) {
  return {reinterpret_cast<const uint8_t*>(text.data()), text.size()};
}

// The bytes up to the next zero, which is taken away with them; nothing without one.
std::optional<std::string_view> TakeWord(std::span<const uint8_t>& bytes) {
  const auto end = std::ranges::find(bytes, uint8_t{0});
  if (end == bytes.end()) return {};
  const auto word = bytes.first(static_cast<size_t>(end - bytes.begin()));
  bytes = bytes.subspan(word.size() + 1);
  return CharactersOf(word);
}

class PngMetadataReader {
 public:
  bool Knows(std::string_view name) const { return RowOf(name); }
  void Take(std::string_view name, std::span<const uint8_t> bytes) { (this->*RowOf(name)->take)(bytes); }
  Metadata Finish() {
    if (found_.exif.empty()) found_.exif = std::move(olderExif_);
    return std::move(found_);
  }

 private:
  struct Row {
    std::string_view name;
    void (PngMetadataReader::*take)(std::span<const uint8_t>);
  };
  static const Row* RowOf(std::string_view name) {
    static constexpr Row kRows[] = {
        {"iCCP", &PngMetadataReader::TakeProfile},        {"eXIf", &PngMetadataReader::TakeExif},
        {"gAMA", &PngMetadataReader::TakeGamma},          {"cHRM", &PngMetadataReader::TakeChromaticities},
        {"sRGB", &PngMetadataReader::TakeIntent},         {"cICP", &PngMetadataReader::TakeCodePoints},
        {"pHYs", &PngMetadataReader::TakeResolution},     {"tEXt", &PngMetadataReader::TakeText},
        {"zTXt", &PngMetadataReader::TakeCompressedText}, {"iTXt", &PngMetadataReader::TakeInternationalText},
    };
    const auto row = std::ranges::find(kRows, name, &Row::name);
    return row == std::end(kRows) ? nullptr : row;
  }

  void TakeProfile(std::span<const uint8_t> bytes) {
    if (!TakeWord(bytes) || bytes.empty()) return;
    if (const auto icc = Inflated(bytes.subspan(1)))
      found_.icc = *icc;
    else
      Warn("the colour profile is damaged and is left out");
  }
  void TakeExif(std::span<const uint8_t> bytes) { found_.exif.assign(bytes.begin(), bytes.end()); }
  void TakeGamma(std::span<const uint8_t> bytes) {
    if (bytes.size() == 4) found_.gamma = static_cast<double>(NumberAt(bytes.data(), 4, true)) / kPerUnit;
  }
  void TakeChromaticities(std::span<const uint8_t> bytes) {
    if (bytes.size() != 32) return;
    std::array<double, 8>& values = found_.chromaticities.emplace();
    for (size_t i = 0; i < 8; ++i) values[i] = static_cast<double>(NumberAt(&bytes[4 * i], 4, true)) / kPerUnit;
  }
  void TakeIntent(std::span<const uint8_t> bytes) {
    if (bytes.size() == 1 && bytes[0] < 4) found_.intent = bytes[0];
  }
  void TakeCodePoints(std::span<const uint8_t> bytes) {
    if (bytes.size() == 4) std::ranges::copy(bytes, found_.codePoints.emplace().begin());
  }
  // Dots a metre that stand for a whole number of dots an inch become that number, which gives them again.
  void TakeResolution(std::span<const uint8_t> bytes) {
    if (bytes.size() != 9) return;
    const double x = static_cast<double>(NumberAt(&bytes[0], 4, true));
    const double y = static_cast<double>(NumberAt(&bytes[4], 4, true));
    if (x <= 0 || y <= 0) return;
    const auto isOfInches = [](double dots) { return std::abs(dots - std::round(dots * kInch) / kInch) < 0.5; };
    if (bytes[8] == 1 && isOfInches(x) && isOfInches(y))
      found_.resolution = {std::round(x * kInch), std::round(y * kInch), ResolutionUnit::inch};
    else
      found_.resolution = {x, y, bytes[8] == 1 ? ResolutionUnit::metre : ResolutionUnit::none};
  }

  void TakeText(std::span<const uint8_t> bytes) {
    const auto keyword = TakeWord(bytes);
    if (keyword) Add(*keyword, bytes, false);
  }
  void TakeCompressedText(std::span<const uint8_t> bytes) {
    const auto keyword = TakeWord(bytes);
    if (!keyword || bytes.empty()) return;
    if (const auto text = Inflated(bytes.subspan(1))) Add(*keyword, *text, true);
  }
  void TakeInternationalText(std::span<const uint8_t> bytes) {
    const auto keyword = TakeWord(bytes);
    if (!keyword || bytes.size() < 2) return;
    const bool compressed = bytes[0] != 0;
    bytes = bytes.subspan(2);
    const auto language = TakeWord(bytes), translated = language ? TakeWord(bytes) : std::nullopt;
    if (!translated) return;
    std::optional<Bytes> text = Bytes(bytes.begin(), bytes.end());
    if (compressed) text = Inflated(bytes);
    if (!text) return;
    if (*keyword == kXmpKeyword)
      found_.xmp = *text;
    else
      found_.text.push_back({Utf8OfLatin1(*keyword), std::string(CharactersOf(*text)), false, compressed,
                             std::string(*language), std::string(*translated)});
  }
  void Add(std::string_view keyword, std::span<const uint8_t> text, bool compressed) {
    if (keyword.starts_with(kRawProfile)) return AddRawProfile(keyword.substr(kRawProfile.size()), CharactersOf(text));
    found_.text.push_back({Utf8OfLatin1(keyword), Utf8OfLatin1(CharactersOf(text)), true, compressed, "", ""});
  }
  // A chunk of its own counts more than what older programs put into a text.
  void AddRawProfile(std::string_view name, std::string_view text) {
    constexpr std::string_view kExif("Exif\0\0", 6), kXmp("http://ns.adobe.com/xap/1.0/\0", 29);
    const auto bytes = BytesOfRawProfile(text);
    if (!bytes) return;
    std::span<const uint8_t> rest = *bytes;
    const auto take = [&](std::string_view mark) {
      const bool begins = CharactersOf(rest).starts_with(mark);
      if (begins) rest = rest.subspan(mark.size());
      return begins;
    };
    const auto give = [&](Bytes& to) {
      if (to.empty()) to.assign(rest.begin(), rest.end());
    };
    if (take(kXmp) || name == "xmp")
      give(found_.xmp);
    else if (take(kExif) || name == "exif")
      give(olderExif_);
    else if (name == "icc" || name == "icm")
      give(found_.icc);
    else if (CharactersOf(rest).starts_with("8BIM"))
      ReadResources(rest, found_);
    else if (name == "iptc")
      give(found_.iptc);
  }

  Metadata found_;
  Bytes olderExif_;
};

void Append(Bytes& chunks, const char* name, std::initializer_list<std::span<const uint8_t>> parts) {
  const size_t at = chunks.size();
  chunks.resize(at + 4);
  chunks.insert(chunks.end(), name, name + 4);
  for (const auto part : parts) chunks.insert(chunks.end(), part.begin(), part.end());
  PutNumber(&chunks[at], 4, chunks.size() - at - 8, true);
  const auto sum = crc32(0, &chunks[at + 4], static_cast<uInt>(chunks.size() - at - 4));
  chunks.resize(chunks.size() + 4);
  PutNumber(&chunks[chunks.size() - 4], 4, sum, true);
}

template <size_t kCount>
std::array<uint8_t, 4 * kCount> Words(const std::array<double, kCount>& numbers) {
  std::array<uint8_t, 4 * kCount> bytes;
  for (size_t i = 0; i < kCount; ++i)
    PutNumber(&bytes[4 * i], 4, static_cast<uint64_t>(std::llround(std::clamp(numbers[i], 0.0, 2147483647.0))), true);
  return bytes;
}

void AppendColours(Bytes& chunks, const Metadata& metadata) {
  if (metadata.codePoints) Append(chunks, "cICP", {*metadata.codePoints});
  if (metadata.gamma) Append(chunks, "gAMA", {Words<1>({*metadata.gamma * kPerUnit})});
  if (metadata.chromaticities) {
    std::array<double, 8> values = *metadata.chromaticities;
    for (double& value : values) value *= kPerUnit;
    Append(chunks, "cHRM", {Words(values)});
  }
  const auto name = BytesOf({"ICC profile\0\0", 13});  // and the method
  if (!metadata.icc.empty()) return Append(chunks, "iCCP", {name, Deflated(metadata.icc)});
  const auto intent = static_cast<uint8_t>(metadata.intent.value_or(0));
  if (metadata.intent) Append(chunks, "sRGB", {{&intent, 1}});
}

void AppendResolution(Bytes& chunks, const Metadata& metadata) {
  const auto resolution = ResolutionOf(metadata);
  if (!resolution) return;
  const double scale = resolution->unit == ResolutionUnit::inch ? 1 / kInch : 1;
  const uint8_t unit = resolution->unit != ResolutionUnit::none;
  Append(chunks, "pHYs", {Words<2>({resolution->x * scale, resolution->y * scale}), {&unit, 1}});
}

void AppendText(Bytes& chunks, const TextEntry& entry) {
  std::string text = entry.text;
  std::erase(text, '\0');
  constexpr size_t kMostOfKeyword = 79;
  const auto keyword = Latin1OfUtf8(entry.keyword), latin = Latin1OfUtf8(text);
  const std::string head = (keyword && !keyword->empty() ? keyword->substr(0, kMostOfKeyword) : "Comment") + '\0';
  if (entry.latin && latin && !entry.compressed) return Append(chunks, "tEXt", {BytesOf(head), BytesOf(*latin)});
  if (entry.latin && latin)
    return Append(chunks, "zTXt", {BytesOf(head), BytesOf({"\0", 1}), Deflated(BytesOf(*latin))});
  const std::string rest =
      std::string(1, static_cast<char>(entry.compressed)) + '\0' + entry.language + '\0' + entry.translated + '\0';
  const Bytes packed = entry.compressed ? Deflated(BytesOf(text)) : Bytes(text.begin(), text.end());
  Append(chunks, "iTXt", {BytesOf(head), BytesOf(rest), packed});
}

void AppendResources(Bytes& chunks, const Metadata& metadata) {
  const char* name = metadata.iptc.empty() ? "8bim" : "iptc";
  const Bytes resources = ResourcesOf(metadata);
  if (!resources.empty())
    AppendText(chunks, {std::string(kRawProfile) + name, RawProfileOf(name, resources), true, true, "", ""});
}

}  // namespace

SharedMetadata ReadPngMetadata(const ByteSource& png) {
  PngMetadataReader reader;
  size_t room = MostCarriedBytes();
  uint8_t head[8];
  int64_t at = 8;
  while (png.read(at, head, 8) == 8) {
    const std::string_view name = CharactersOf({head + 4, 4});
    const size_t length = static_cast<size_t>(NumberAt(head, 4, true));
    const bool there = static_cast<int64_t>(length) <= png.size - at - 12;
    if (name == "IEND" || !there) break;
    if (reader.Knows(name) && length <= room) {
      room -= length;
      Bytes chunk(length + 8);  // the name and the sum too
      if (png.read(at + 4, chunk.data(), chunk.size()) != chunk.size()) break;
      const auto sum = crc32(0, chunk.data(), static_cast<uInt>(length + 4));
      if (sum == NumberAt(&chunk[length + 4], 4, true)) reader.Take(name, {&chunk[4], length});
    }
    at += static_cast<int64_t>(length) + 12;
  }
  Metadata metadata = reader.Finish();
  metadata.orientation = ExifOrientation(metadata.exif);
  return std::make_shared<const Metadata>(std::move(metadata));
}

Bytes PngChunks(const Metadata& metadata) {
  Bytes chunks;
  AppendColours(chunks, metadata);
  AppendResolution(chunks, metadata);
  if (!metadata.exif.empty()) Append(chunks, "eXIf", {metadata.exif});
  if (!metadata.xmp.empty()) {
    const std::string head = std::string(kXmpKeyword) + std::string(5, '\0');
    Append(chunks, "iTXt", {BytesOf(head), metadata.xmp});
  }
  for (const TextEntry& entry : metadata.text) AppendText(chunks, entry);
  AppendResources(chunks, metadata);
  return chunks;
}

}  // namespace norv
