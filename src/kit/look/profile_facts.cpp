#include "kit/look/profile_facts.h"

#include <algorithm>

#include "kit/look/safe_text.h"
#include "kit/metadata/text.h"
#include "kit/metadata/tiff_fields.h"

namespace norv {
namespace {

using Span = std::span<const uint8_t>;

// The part of the bytes; empty where it is not wholly there.
Span Part(Span bytes, uint64_t at, uint64_t size) {
  if (at > bytes.size() || size > bytes.size() - at) return {};
  return bytes.subspan(at, size);
}

uint64_t Word(Span bytes, uint64_t at) {
  const Span part = Part(bytes, at, 4);
  return part.empty() ? 0 : NumberAt(part.data(), 4, true);
}

Span TagOf(Span icc, std::string_view name) {
  constexpr uint64_t kTable = 128, kMost = 1000;
  const uint64_t count = std::min(Word(icc, kTable), kMost);
  for (uint64_t i = 0; i < count; ++i) {
    const uint64_t at = kTable + 4 + 12 * i;
    if (CharactersOf(Part(icc, at, 4)) == name) return Part(icc, Word(icc, at + 4), Word(icc, at + 8));
  }
  return {};
}

// A text of several languages: the English one, else the first.
std::string TextOfLanguages(Span tag) {
  constexpr uint64_t kRecords = 16, kRecord = 12, kMost = 1000;
  const uint64_t count = std::min(Word(tag, 8), kMost);
  uint64_t chosen = kRecords;
  for (uint64_t i = count; i-- > 0;)
    if (CharactersOf(Part(tag, kRecords + kRecord * i, 2)) == "en") chosen = kRecords + kRecord * i;
  const Span text = Part(tag, Word(tag, chosen + 8), Word(tag, chosen + 4));
  std::vector<uint8_t> turned(text.begin(), text.end());
  for (size_t i = 0; i + 1 < turned.size(); i += 2) std::swap(turned[i], turned[i + 1]);
  return Utf8OfUtf16(turned);
}

std::string NameOf(Span icc) {
  const Span tag = TagOf(icc, "desc");
  const std::string_view type = CharactersOf(Part(tag, 0, 4));
  if (type == "mluc") return TextOfLanguages(tag);
  if (type != "desc") return "";
  const std::string text(CharactersOf(Part(tag, 12, Word(tag, 8))));
  return text.substr(0, text.find('\0'));
}

std::string KindOf(std::string_view mark) {
  constexpr std::pair<std::string_view, const char*> kKinds[] = {
      {"mntr", "display"}, {"scnr", "input"},    {"prtr", "output"},       {"spac", "colour space"},
      {"link", "link"},    {"abst", "abstract"}, {"nmcl", "named colours"}};
  for (const auto& [known, name] : kKinds)
    if (known == mark) return name;
  return SafeText(mark);
}

std::string WithoutSpaces(std::string_view mark) { return SafeText(mark.substr(0, mark.find_last_not_of(' ') + 1)); }

}  // namespace

void AddProfileFacts(Span icc, Facts& facts) {
  if (icc.empty()) return;
  const std::string name = NameOf(icc);
  const std::string size = std::to_string(icc.size()) + " bytes";
  facts.Add("colour profile", name.empty() ? size : SafeText(name) + " (" + size + ")");
  if (CharactersOf(Part(icc, 36, 4)) != "acsp") return;
  facts.Add("profile colours", WithoutSpaces(CharactersOf(Part(icc, 16, 4))));
  facts.Add("profile kind", KindOf(CharactersOf(Part(icc, 12, 4))) + Printed(", version %d.%d", icc[8], icc[9] >> 4));
}

}  // namespace norv
