// SHA-256 (FIPS 180-4), by which receipts know files.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

namespace norv {

class Sha256 {
 public:
  // Further bytes of the message.
  void Add(const void* bytes, size_t size);
  // Of all that was added, 64 hexadecimal digits in lower case. Call once.
  std::string Digits();

 private:
  void Block(const uint8_t* block);

  std::array<uint32_t, 8> state_ = {0x6a09e667, 0xbb67ae85, 0x3c6ef372, 0xa54ff53a,
                                    0x510e527f, 0x9b05688c, 0x1f83d9ab, 0x5be0cd19};
  std::array<uint8_t, 64> rest_{};  // of the message that is no block yet
  uint64_t size_ = 0;               // bytes that were added
};

// Of what the file holds; of what passes once (streams.h) all that it brought. Throws a Failure when it cannot be read.
std::string Sha256OfFile(const std::string& path);

}  // namespace norv
