#include "kit/formats/codec.h"

#include <algorithm>
#include <utility>

namespace norv {
namespace {

const Codec* const kCodecs[] = {
    &kPng,  &kJpeg, &kTiff,
#ifdef NORV_WEBP
    &kWebp,
#endif
    &kBmp,  &kPpm,  &kPgm,  &kPbm, &kPam, &kPfm,
#ifdef NORV_JXL
    &kJxl,
#endif
#ifdef NORV_HEIF
    &kAvif, &kHeic,
#endif
};

// With commas and, where one is asked for, a last word between.
std::string ListOf(const char* lastWord, std::span<const std::string> words) {
  std::string list = words[0];
  for (size_t i = 1; i < words.size(); ++i) {
    const bool last = lastWord && i + 1 == words.size();
    list += (last ? std::string(" ") + lastWord + " " : ", ") + words[i];
  }
  return list;
}

// The usual extensions of those formats that are asked for.
template <typename Asked>
std::string ExtensionsOf(const char* lastWord, const Asked& asked) {
  std::vector<std::string> names;
  for (const Codec* codec : kCodecs)
    if (asked(*codec)) names.push_back("." + codec->extensions[0]);
  return ListOf(lastWord, names);
}

}  // namespace

Samples Codec::Decode(const Bytes& bytes, const ReadChoice& choice) const {
  return AllSamples(open(FromMemory(bytes), choice));
}

Bytes Codec::Encode(const Samples& samples, const EncodingChoice& choice) const {
  Bytes bytes;
  const SampleSink sink = create(ToMemory(bytes), samples, choice);
  sink.write(samples);
  sink.finish();
  return bytes;
}

std::span<const Codec* const> Codecs() { return kCodecs; }

const Codec* CodecOfContents(std::span<const uint8_t> start) {
  for (const Codec* codec : kCodecs)
    if (codec->recognise(start)) return codec;
  return nullptr;
}

const Codec* CodecOfName(const std::string& path) {
  const std::string extension = ExtensionOf(path);
  for (const Codec* codec : kCodecs)
    if (std::ranges::find(codec->extensions, extension) != codec->extensions.end()) return codec;
  return nullptr;
}

std::string ReadFormats(const char* lastWord) {
  std::vector<std::string> names;
  for (const Codec* codec : kCodecs) names.emplace_back(codec->name);
  return ListOf(lastWord, names);
}

std::string WrittenExtensions(const char* lastWord) {
  return ExtensionsOf(lastWord, [](const Codec& codec) { return codec.create != nullptr; });
}

std::string LosslessExtensions(const char* lastWord) {
  return ExtensionsOf(lastWord, [](const Codec& codec) { return codec.create && codec.loss != Loss::always; });
}

bool HasPictureName(const std::string& path) { return CodecOfName(path); }

std::string ExtensionOf(const std::string& path) {
  const size_t name = path.find_last_of('/') + 1, point = path.find_last_of('.');
  if (point == std::string::npos || point < name) return "";
  std::string extension = path.substr(point + 1);
  for (char& c : extension)
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c + 'a' - 'A');
  return extension;
}

}  // namespace norv
