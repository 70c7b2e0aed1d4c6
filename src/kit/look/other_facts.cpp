// Formats whose headers are short: WebP, BMP, the netpbm family; and the table of all.
#include <algorithm>
#include <cctype>
#include <cstring>

#include "kit/look/format_facts.h"
#include "kit/metadata/text.h"
#include "kit/metadata/tiff_fields.h"

namespace norv {
namespace {

struct Row {
  const char* format;
  StoredForm (*form)(const ByteSource&, const PictureShape&, int32_t);
};
constexpr Row kRows[] = {{"PNG", PngForm},    {"JPEG", JpegForm},  {"TIFF", TiffFileForm}, {"WebP", WebpForm},
                         {"BMP", BmpForm},    {"PPM", NetpbmForm}, {"PGM", NetpbmForm},    {"PBM", NetpbmForm},
                         {"PAM", NetpbmForm}, {"PFM", NetpbmForm}};

const char* CompressionOfBmp(uint64_t code) {
  constexpr const char* kNames[] = {
      "none", "runs of 8 bits", "runs of 4 bits", "none, bit fields", "JPEG", "PNG", "none, bit fields with alpha"};
  return code < std::size(kNames) ? kNames[code] : "unknown";
}

// The words of a netpbm header, comments left out.
std::vector<std::string> HeaderWords(std::string_view text, size_t most) {
  std::vector<std::string> words;
  for (size_t at = 0; at < text.size() && words.size() < most;) {
    if (text[at] == '#') {
      at = std::min(text.find('\n', at), text.size());
    } else if (std::isspace(static_cast<unsigned char>(text[at]))) {
      ++at;
    } else {
      const size_t end = std::min(text.find_first_of(" \t\r\n#", at), text.size());
      words.emplace_back(text.substr(at, end - at));
      at = end;
    }
  }
  return words;
}

}  // namespace

StoredForm StoredFormOf(const std::string& format, const ByteSource& file, const PictureShape& shape, int32_t page) {
  const auto row = std::ranges::find(kRows, format, &Row::format);
  return row == std::end(kRows) ? StoredForm() : row->form(file, shape, page);
}

StoredForm WebpForm(const ByteSource& file, const PictureShape&, int32_t) {
  StoredForm form;
  uint8_t head[8];
  bool lossy = false, lossless = false;
  for (int64_t at = 12; file.read(at, head, 8) == 8;) {
    const std::string_view name = CharactersOf({head, 4});
    const auto length = static_cast<int64_t>(NumberAt(head + 4, 4, false));
    lossy |= name == "VP8 ";
    lossless |= name == "VP8L";
    // A frame of an animation holds its own pieces behind a header.
    at += name == "ANMF" ? 8 + 16 : 8 + length + length % 2;
  }
  if (lossy || lossless)
    form.facts.Add("compression", lossy && lossless ? "lossy and lossless" : lossy ? "lossy" : "lossless");
  return form;
}

StoredForm BmpForm(const ByteSource& file, const PictureShape&, int32_t) {
  StoredForm form;
  uint8_t bytes[54];
  if (file.read(0, bytes, sizeof bytes) != sizeof bytes) return form;
  const uint64_t size = NumberAt(bytes + 14, 4, false);
  const bool oldest = size == 12;
  const auto bits = static_cast<int64_t>(NumberAt(bytes + (oldest ? 24 : 28), 2, false));
  form.facts.Add("header", Printed("%lld bytes", static_cast<long long>(size)));
  form.facts.AddNumber("bits a pixel", bits);
  if (bits <= 8) form.colour = "palette";
  if (oldest) return form;
  form.facts.Add("compression", CompressionOfBmp(NumberAt(bytes + 30, 4, false)));
  form.facts.Add("rows", bytes[25] & 0x80 ? "from the top" : "from the bottom");
  return form;
}

StoredForm NetpbmForm(const ByteSource& file, const PictureShape&, int32_t) {
  StoredForm form;
  char text[4096];
  const std::vector<std::string> words = HeaderWords({text, file.read(0, text, sizeof text)}, 24);
  if (words.empty() || words[0].size() != 2) return form;
  const char kind = words[0][1];
  form.facts.Add("kind", words[0] + (kind >= '1' && kind <= '3' ? ", in plain text" : ", binary"));
  if (kind == '1' || kind == '4') form.bits = 1;
  const auto named = std::ranges::find(words, "MAXVAL");
  if (kind == '7' && named != words.end() && named + 1 != words.end()) form.facts.AddText("largest value", named[1]);
  if ((kind == '2' || kind == '3' || kind == '5' || kind == '6') && words.size() > 3)
    form.facts.AddText("largest value", words[3]);
  return form;
}

}  // namespace norv
