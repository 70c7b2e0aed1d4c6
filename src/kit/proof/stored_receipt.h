// Where receipts are kept: in a text of a PNG, in a file beside any other picture.
#pragma once

#include <optional>
#include <string>

#include "kit/formats/byte_stream.h"

namespace norv {

struct StoredReceipt {
  std::string text;
  int64_t chunk = 0, chunkBytes = 0;  // the PNG's chunk that holds it; beside a picture both 0
};

// photo.jpg.receipt.json
std::string ReceiptBeside(const std::string& picture);

// The one that a PNG carries; nothing where the bytes are none or carry none. Throws a Failure for several.
std::optional<StoredReceipt> ReceiptInPng(const ByteSource& png);

// A picture's. Throws a Failure that says where it was looked for.
StoredReceipt FindReceipt(const std::string& picture);

}  // namespace norv
