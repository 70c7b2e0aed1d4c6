#include <algorithm>

#include "kit/look/format_facts.h"
#include "kit/metadata/text.h"
#include "kit/metadata/tiff_fields.h"

namespace norv {
namespace {

const char* ColourOf(uint8_t type) {
  constexpr const char* kNames[] = {"grey", "", "RGB", "palette", "grey and alpha", "", "RGB and alpha"};
  return type < std::size(kNames) ? kNames[type] : "";
}

void TakeHeader(const uint8_t* bytes, StoredForm& form) {
  form.bits = bytes[8];
  form.colour = ColourOf(bytes[9]);
  form.facts.Add("interlace", bytes[12] == 0 ? "none" : "Adam7");
}

std::string TimeOf(const uint8_t* bytes) {
  return Printed("%04d-%02d-%02d %02d:%02d:%02d UTC", static_cast<int>(NumberAt(bytes, 2, true)), bytes[2], bytes[3],
                 bytes[4], bytes[5], bytes[6]);
}

}  // namespace

StoredForm PngForm(const ByteSource& file, const PictureShape&, int32_t) {
  StoredForm form;
  uint8_t head[8], body[16];
  for (int64_t at = 8; file.read(at, head, 8) == 8;) {
    const auto length = static_cast<int64_t>(NumberAt(head, 4, true));
    const std::string_view name = CharactersOf({head + 4, 4});
    if (length > file.size - at - 12) break;
    const size_t got = file.read(at + 8, body, static_cast<size_t>(std::min<int64_t>(length, sizeof body)));
    if (name == "IHDR" && got >= 13) TakeHeader(body, form);
    if (name == "PLTE" && form.colour == "palette") form.colour += " of " + std::to_string(length / 3) + " colours";
    if (name == "tRNS")
      form.facts.Add("transparency", form.colour.starts_with("palette") ? "in the palette" : "one colour");
    if (name == "sBIT" && got > 0) form.facts.AddNumber("significant bits", body[0]);
    if (name == "tIME" && got >= 7) form.facts.Add("modified", TimeOf(body));
    if (name == "acTL" && got >= 8) {
      const auto plays = NumberAt(body + 4, 4, true);
      form.facts.Add("animation", plays == 0 ? "plays without end" : "plays " + std::to_string(plays) + " times");
    }
    at += length + 12;
  }
  return form;
}

}  // namespace norv
