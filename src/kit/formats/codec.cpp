#include "kit/formats/codec.h"

#include <algorithm>
#include <utility>

#include "platform/paths.h"

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

std::string InLowerCase(std::string text) {
  for (char& c : text)
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c + 'a' - 'A');
  return text;
}

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

// All words for what can be written.
std::vector<std::string> FormatWords() {
  std::vector<std::string> words = {"fdib", "mat", "bit"};
  for (const Codec* codec : kCodecs) {
    if (!codec->create) continue;
    words.insert(words.end(), codec->extensions.begin(), codec->extensions.end());
    words.push_back(InLowerCase(codec->name));
  }
  std::ranges::sort(words);
  words.erase(std::unique(words.begin(), words.end()), words.end());
  return words;
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

const Codec* CodecOfName(const std::string& path) { return CodecOfWord(ExtensionOf(path)); }

const Codec* CodecOfWord(const std::string& word) {
  for (const Codec* codec : kCodecs)
    if (InLowerCase(codec->name) == word || std::ranges::find(codec->extensions, word) != codec->extensions.end())
      return codec;
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

std::string WhyNoFormat(const std::string& word) {
  const std::vector<std::string> words = FormatWords();
  if (std::ranges::find(words, InLowerCase(word)) != words.end()) return "";
  std::string reason = "--to takes ";
  reason += ListOf("or", words);
  return reason += ", not " + word;
}

std::string LosslessExtensions(const char* lastWord) {
  return ExtensionsOf(lastWord, [](const Codec& codec) { return codec.create && codec.loss != Loss::always; });
}

bool HasPictureName(const std::string& path) { return CodecOfName(path); }

std::string ExtensionOf(const std::string& path) {
  const std::string name = FileNameOf(path);
  const size_t point = name.find_last_of('.');
  return point == std::string::npos ? "" : InLowerCase(name.substr(point + 1));
}

std::string FormatWord(const std::string& path, const WriteChoice& choice) {
  return choice.to.empty() ? ExtensionOf(path) : InLowerCase(choice.to);
}

}  // namespace norv
