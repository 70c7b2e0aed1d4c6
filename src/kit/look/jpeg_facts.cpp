#include <algorithm>
#include <array>
#include <cstring>

#include "kit/look/format_facts.h"
#include "kit/metadata/tiff_fields.h"

namespace norv {
namespace {

struct Component {
  uint8_t id, across, down;  // sampling factors
};

struct Headers {
  uint8_t frame = 0;  // the marker that says how coefficients are coded
  int32_t bits = 0, components = 0;
  std::array<Component, 4> component{};
  int32_t adobe = -1;  // the transform of its marker; -1: none
  bool jfif = false;
  int32_t restart = 0;
};

bool IsFrame(uint8_t marker) {
  return marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC;
}

void TakeFrame(std::span<const uint8_t> bytes, uint8_t marker, Headers& headers) {
  if (bytes.size() < 6 || headers.frame != 0) return;
  headers.frame = marker;
  headers.bits = bytes[0];
  headers.components = bytes[5];
  for (size_t k = 0; k < headers.component.size() && 9 + 3 * k <= bytes.size(); ++k)
    headers.component[k] = {bytes[6 + 3 * k], static_cast<uint8_t>(bytes[7 + 3 * k] >> 4),
                            static_cast<uint8_t>(bytes[7 + 3 * k] & 15)};
}

// Of the segments before the first scan.
Headers ReadHeaders(const ByteSource& file) {
  Headers headers;
  uint8_t head[4], body[32];
  for (int64_t at = 2; file.read(at, head, 4) == 4;) {
    if (head[0] != 0xFF) break;
    const uint8_t marker = head[1];
    if (marker == 0xFF) {  // a fill byte
      ++at;
      continue;
    }
    const auto length = static_cast<int64_t>(NumberAt(head + 2, 2, true));
    if (marker == 0xDA || marker == 0xD9 || length < 2) break;
    const size_t got = file.read(at + 4, body, std::min<size_t>(sizeof body, static_cast<size_t>(length - 2)));
    if (IsFrame(marker)) TakeFrame({body, got}, marker, headers);
    if (marker == 0xDD && got >= 2) headers.restart = static_cast<int32_t>(NumberAt(body, 2, true));
    if (marker == 0xE0 && got >= 5 && std::memcmp(body, "JFIF", 5) == 0) headers.jfif = true;
    if (marker == 0xEE && got >= 12 && std::memcmp(body, "Adobe", 5) == 0) headers.adobe = body[11];
    at += 2 + length;
  }
  return headers;
}

std::string ColourOf(const Headers& headers) {
  const auto& c = headers.component;
  const bool lettered = c[0].id == 'R' && c[1].id == 'G' && c[2].id == 'B' && !headers.jfif;
  switch (headers.components) {
    case 1:
      return "grey";
    case 3:
      return headers.adobe == 0 || (headers.adobe < 0 && lettered) ? "RGB" : "YCbCr";
    case 4:
      return headers.adobe == 2 ? "YCCK (inks)" : "CMYK (inks)";
    default:
      return "";
  }
}

// Of the colours against the first component: 4:2:0 and the like where there is such a name.
std::string SubsamplingOf(const Headers& headers) {
  struct Row {
    int32_t across, down;
    const char* name;
  };
  constexpr Row kRows[] = {{1, 1, "4:4:4 (none)"}, {2, 1, "4:2:2"}, {2, 2, "4:2:0"},
                           {1, 2, "4:4:0"},        {4, 1, "4:1:1"}, {4, 2, "4:1:0"}};
  const Component &first = headers.component[0], &colour = headers.component[1];
  for (const Row& row : kRows)
    if (first.across == row.across * colour.across && first.down == row.down * colour.down) return row.name;
  return Printed("%d x %d against %d x %d", first.across, first.down, colour.across, colour.down);
}

// By the marker's bits: 0 baseline, 1 extended, 2 progressive, 3 lossless; 8: arithmetic coding.
std::string ProcessOf(uint8_t frame) {
  constexpr const char* kNames[] = {"baseline", "extended sequential", "progressive", "lossless"};
  return std::string(kNames[frame & 3]) + (frame >= 0xC8 ? ", arithmetic coding" : ", Huffman coding");
}

}  // namespace

StoredForm JpegForm(const ByteSource& file, const PictureShape& shape, int32_t) {
  const Headers headers = ReadHeaders(file);
  StoredForm form{ColourOf(headers), headers.bits, {}};
  if (headers.frame != 0) form.facts.Add("process", ProcessOf(headers.frame));
  if (shape.jpegQuality > 0)
    form.facts.Add("quality", Printed("about %d of 100 (estimated from its tables)", shape.jpegQuality));
  if (headers.components >= 3) form.facts.Add("subsampling", SubsamplingOf(headers));
  if (headers.restart > 0) form.facts.Add("restart interval", Printed("%d blocks", headers.restart));
  return form;
}

}  // namespace norv
