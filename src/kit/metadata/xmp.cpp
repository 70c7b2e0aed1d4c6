#include "kit/metadata/xmp.h"

#include <cstring>
#include <string_view>

#include "kit/metadata/text.h"

namespace norv {
namespace {

constexpr char kHasExtension[] = "HasExtendedXMP";
constexpr char kSpaces[] = " \t\r\n";

// Where the text of a property begins that starts with its name at `at`: behind ="  or >; npos for another use of it.
size_t TextOf(const std::string& xmp, size_t at) {
  at = xmp.find_first_not_of(kSpaces, at);
  if (at == std::string::npos) return at;
  if (xmp[at] == '>') return at + 1;
  if (xmp[at] != '=') return std::string::npos;
  at = xmp.find_first_not_of(kSpaces, at + 1);
  return at != std::string::npos && (xmp[at] == '"' || xmp[at] == '\'') ? at + 1 : std::string::npos;
}

// The numbers of a property, as an attribute or as an element.
void SetProperty(std::string& xmp, std::string_view name, int32_t number) {
  for (size_t at = xmp.find(name); at != std::string::npos; at = xmp.find(name, at + name.size())) {
    const size_t first = TextOf(xmp, at + name.size());
    if (first == std::string::npos) continue;
    const size_t last = xmp.find_first_not_of("0123456789", first);
    if (last != std::string::npos && last > first) xmp.replace(first, last - first, std::to_string(number));
  }
}

void RemoveElement(std::string& xmp, const std::string& name) {
  const std::string open = "<" + name + ">", close = "</" + name + ">";
  for (size_t at = xmp.find(open); at != std::string::npos; at = xmp.find(open, at)) {
    const size_t end = xmp.find(close, at);
    if (end == std::string::npos) return;
    xmp.erase(at, end + close.size() - at);
  }
}

std::vector<uint8_t> BytesOf(std::string_view text) { return {text.begin(), text.end()}; }

// Without the note that there is an extension.
void ForgetExtension(std::string& xmp) {
  const size_t at = xmp.find(std::string("xmpNote:") + kHasExtension);
  if (at == std::string::npos || at == 0) return;
  if (xmp[at - 1] == '<') return RemoveElement(xmp, std::string("xmpNote:") + kHasExtension);
  const size_t first = TextOf(xmp, at + std::strlen("xmpNote:") + std::strlen(kHasExtension));
  if (first == std::string::npos) return;
  const size_t last = xmp.find(xmp[first - 1], first);
  if (last != std::string::npos) xmp.erase(at, last + 1 - at);
}

}  // namespace

void PutXmpRight(std::vector<uint8_t>& xmp, int32_t width, int32_t height, bool upright) {
  std::string text(CharactersOf(xmp));
  if (upright) SetProperty(text, "tiff:Orientation", 1);
  SetProperty(text, "tiff:ImageWidth", width);
  SetProperty(text, "tiff:ImageLength", height);
  SetProperty(text, "exif:PixelXDimension", width);
  SetProperty(text, "exif:PixelYDimension", height);
  RemoveElement(text, "xmp:Thumbnails");
  RemoveElement(text, "xap:Thumbnails");
  xmp = BytesOf(text);
}

std::string ExtensionOfXmp(std::span<const uint8_t> xmp) {
  constexpr size_t kNameLength = 32;
  const std::string text(CharactersOf(xmp));
  const size_t at = text.find(kHasExtension);
  const size_t first = at == std::string::npos ? at : TextOf(text, at + std::strlen(kHasExtension));
  if (first == std::string::npos || first + kNameLength > text.size()) return "";
  const std::string name = text.substr(first, kNameLength);
  return name.find_first_not_of("0123456789ABCDEFabcdef") == std::string::npos ? name : "";
}

std::vector<uint8_t> JoinedXmp(std::span<const uint8_t> packet, std::span<const uint8_t> extension) {
  std::string text(CharactersOf(packet));
  const std::string_view more = CharactersOf(extension);
  const size_t first = more.find("<rdf:Description"), last = more.rfind("</rdf:RDF>"), end = text.rfind("</rdf:RDF>");
  if (first == std::string_view::npos || last == std::string_view::npos || last < first || end == std::string::npos)
    return BytesOf(text);
  text.insert(end, more.substr(first, last - first));
  ForgetExtension(text);
  return BytesOf(text);
}

std::vector<uint8_t> XmpThatNames(const std::string& extension) {
  return BytesOf(
      "<x:xmpmeta xmlns:x=\"adobe:ns:meta/\"><rdf:RDF xmlns:rdf=\"http://www.w3.org/1999/02/22-rdf-syntax-ns#\">"
      "<rdf:Description rdf:about=\"\" xmlns:xmpNote=\"http://ns.adobe.com/xmp/note/\" xmpNote:HasExtendedXMP=\"" +
      extension + "\"/></rdf:RDF></x:xmpmeta>");
}

}  // namespace norv
