#include "kit/proof/stored_receipt.h"

#include <cstring>
#include <filesystem>
#include <string_view>
#include <zlib.h>

#include "kit/failure.h"
#include "kit/formats/streams.h"
#include "kit/metadata/metadata.h"
#include "platform/paths.h"

namespace norv {
namespace {

constexpr int64_t kMostBytes = 1 << 17;  // of a chunk or a file with a receipt

uint32_t NumberAt(const uint8_t* bytes) {
  return uint32_t{bytes[0]} << 24 | uint32_t{bytes[1]} << 16 | uint32_t{bytes[2]} << 8 | bytes[3];
}

// The text of a chunk with the receipt's keyword (ISO/IEC 15948, 11.3.4), uncompressed, as they are written here.
std::optional<std::string> TextOf(std::string_view name, std::string_view data) {
  const std::string head = std::string(kReceiptKeyword) + '\0';
  if (!data.starts_with(head)) return {};
  data.remove_prefix(head.size());
  if (name == "tEXt") return std::string(data);
  const std::string plain(4, '\0');  // uncompressed; no language, no translated keyword
  if (name == "iTXt" && data.starts_with(plain)) return std::string(data.substr(plain.size()));
  Fail("the receipt is damaged: it is kept in another way than norvkit does");
}

}  // namespace

std::string ReceiptBeside(const std::string& picture) { return picture + ".receipt.json"; }

std::optional<StoredReceipt> ReceiptInPng(const ByteSource& png) {
  constexpr uint8_t kMark[] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1a, '\n'};
  uint8_t head[8];
  if (png.read(0, head, 8) != 8 || std::memcmp(head, kMark, 8) != 0) return {};
  std::optional<StoredReceipt> found;
  for (int64_t at = 8; png.read(at, head, 8) == 8;) {
    const std::string_view name(reinterpret_cast<const char*>(head) + 4, 4);
    const int64_t length = NumberAt(head), whole = length + 12;
    if (name == "IEND" || whole > png.size - at) break;
    if ((name == "tEXt" || name == "iTXt" || name == "zTXt") && length <= kMostBytes) {
      Bytes chunk(static_cast<size_t>(length) + 8);  // from the name to the sum
      if (png.read(at + 4, chunk.data(), chunk.size()) != chunk.size()) break;
      const auto text = TextOf(name, {reinterpret_cast<const char*>(chunk.data()) + 4, static_cast<size_t>(length)});
      const auto sum = crc32(0, chunk.data(), static_cast<uInt>(length + 4));
      if (text && sum != NumberAt(&chunk[static_cast<size_t>(length) + 4])) Fail("the receipt is damaged: its sum");
      if (text && found) Fail("the file carries several receipts");
      if (text) found = {*text, at, whole};
    }
    at += whole;
  }
  return found;
}

StoredReceipt FindReceipt(const std::string& picture) {
  if (std::optional<StoredReceipt> inside = ReceiptInPng(FromFile(picture))) return *inside;
  const std::string beside = ReceiptBeside(picture);
  std::error_code ignored;
  if (!std::filesystem::is_regular_file(ToNative(beside), ignored))
    Fail("%s carries no receipt, and there is none beside it (%s)", picture.c_str(), beside.c_str());
  const ByteSource file = FromFile(beside);
  if (file.size > kMostBytes) Fail("the receipt is damaged: it is too long");
  const Bytes bytes = AllBytes(file);
  return {std::string(bytes.begin(), bytes.end())};
}

}  // namespace norv
