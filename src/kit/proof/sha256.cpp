#include "kit/proof/sha256.h"

#include <algorithm>
#include <bit>

#include "kit/failure.h"
#include "kit/formats/byte_stream.h"

namespace norv {
namespace {

constexpr uint32_t kRounds[64] = {
    0x428a2f98, 0x71374491, 0xb5c0fbcf, 0xe9b5dba5, 0x3956c25b, 0x59f111f1, 0x923f82a4, 0xab1c5ed5,
    0xd807aa98, 0x12835b01, 0x243185be, 0x550c7dc3, 0x72be5d74, 0x80deb1fe, 0x9bdc06a7, 0xc19bf174,
    0xe49b69c1, 0xefbe4786, 0x0fc19dc6, 0x240ca1cc, 0x2de92c6f, 0x4a7484aa, 0x5cb0a9dc, 0x76f988da,
    0x983e5152, 0xa831c66d, 0xb00327c8, 0xbf597fc7, 0xc6e00bf3, 0xd5a79147, 0x06ca6351, 0x14292967,
    0x27b70a85, 0x2e1b2138, 0x4d2c6dfc, 0x53380d13, 0x650a7354, 0x766a0abb, 0x81c2c92e, 0x92722c85,
    0xa2bfe8a1, 0xa81a664b, 0xc24b8b70, 0xc76c51a3, 0xd192e819, 0xd6990624, 0xf40e3585, 0x106aa070,
    0x19a4c116, 0x1e376c08, 0x2748774c, 0x34b0bcb5, 0x391c0cb3, 0x4ed8aa4a, 0x5b9cca4f, 0x682e6ff3,
    0x748f82ee, 0x78a5636f, 0x84c87814, 0x8cc70208, 0x90befffa, 0xa4506ceb, 0xbef9a3f7, 0xc67178f2};

uint32_t BigEndian(const uint8_t* bytes) {
  return uint32_t{bytes[0]} << 24 | uint32_t{bytes[1]} << 16 | uint32_t{bytes[2]} << 8 | bytes[3];
}

}  // namespace

// The message schedule and the 64 rounds (6.2.2).
void Sha256::Block(const uint8_t* block) {
  uint32_t w[64];
  for (int t = 0; t < 16; ++t) w[t] = BigEndian(block + 4 * t);
  for (int t = 16; t < 64; ++t) {
    const uint32_t a = w[t - 15], b = w[t - 2];
    w[t] = (std::rotr(b, 17) ^ std::rotr(b, 19) ^ b >> 10) + w[t - 7] + (std::rotr(a, 7) ^ std::rotr(a, 18) ^ a >> 3) +
           w[t - 16];
  }
  auto [a, b, c, d, e, f, g, h] = state_;
  for (int t = 0; t < 64; ++t) {
    const uint32_t first =
        h + (std::rotr(e, 6) ^ std::rotr(e, 11) ^ std::rotr(e, 25)) + ((e & f) ^ (~e & g)) + kRounds[t] + w[t];
    const uint32_t second = (std::rotr(a, 2) ^ std::rotr(a, 13) ^ std::rotr(a, 22)) + ((a & b) ^ (a & c) ^ (b & c));
    h = g;
    g = f;
    f = e;
    e = d + first;
    d = c;
    c = b;
    b = a;
    a = first + second;
  }
  const uint32_t sums[8] = {a, b, c, d, e, f, g, h};
  for (size_t i = 0; i < 8; ++i) state_[i] += sums[i];
}

void Sha256::Add(const void* bytes, size_t size) {
  const auto* at = static_cast<const uint8_t*>(bytes);
  while (size > 0) {
    const size_t held = size_ % 64, part = std::min(size, 64 - held);
    std::copy_n(at, part, rest_.begin() + static_cast<ptrdiff_t>(held));
    size_ += part;
    at += part;
    size -= part;
    if (held + part == 64) Block(rest_.data());
  }
}

// Behind the message a bit, zeros, and its length in bits (5.1.1).
std::string Sha256::Digits() {
  const uint64_t bits = 8 * size_;
  const uint8_t one = 0x80, zero = 0;
  Add(&one, 1);
  while (size_ % 64 != 56) Add(&zero, 1);
  for (int shift = 56; shift >= 0; shift -= 8) {
    const uint8_t byte = static_cast<uint8_t>(bits >> shift);
    Add(&byte, 1);
  }
  std::string digits;
  for (const uint32_t word : state_)
    for (int shift = 28; shift >= 0; shift -= 4) digits += "0123456789abcdef"[word >> shift & 15];
  return digits;
}

std::string Sha256OfFile(const std::string& path) {
  const ByteSource file = FromFile(path);
  Sha256 sum;
  Bytes part(size_t{1} << 16);
  int64_t at = 0;
  while (const size_t size = file.read(at, part.data(), part.size())) {
    sum.Add(part.data(), size);
    at += static_cast<int64_t>(size);
  }
  if (at != file.size) Fail("%s cannot be read to its end", path.c_str());
  return sum.Digits();
}

}  // namespace norv
