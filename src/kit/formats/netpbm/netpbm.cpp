#include "kit/formats/netpbm/netpbm.h"

#include <algorithm>
#include <charconv>
#include <cstring>

#include "kit/failure.h"

namespace norv {
namespace {

bool IsSpace(int c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

}  // namespace

bool StartsWithMark(std::span<const uint8_t> start, char mark) {
  return start.size() > 2 && start[0] == 'P' && start[1] == static_cast<uint8_t>(mark) &&
         (IsSpace(start[2]) || start[2] == '#');
}

NetpbmHeader::NetpbmHeader(const ByteSource& source, const char* name)
    : cursor(source, 2), size_(source.size), name_(name) {}

std::string NetpbmHeader::Word() {
  constexpr size_t kLongest = 70;
  int c = cursor.Next();
  while (IsSpace(c) || c == '#') {
    if (c == '#')
      while (c != '\n' && c != '\r' && c >= 0) c = cursor.Next();
    c = cursor.Next();
  }
  std::string word;
  for (; c >= 0 && !IsSpace(c) && word.size() < kLongest; c = cursor.Next()) word += static_cast<char>(c);
  return word;
}

int32_t NetpbmHeader::Number(const char* what, int32_t most) {
  const std::string word = Word();
  int32_t number = 0;
  const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), number);
  if (error != std::errc() || end != word.data() + word.size() || number < 1 || number > most)
    Fail("%s: a %s of \"%s\"", name_, what, word.c_str());
  return number;
}

void NetpbmHeader::FailWith(const char* reason) const { Fail("%s: %s", name_, reason); }

void NetpbmHeader::RequireRows(int32_t height, int64_t rowBytes) const {
  if ((size_ - cursor.Position()) / rowBytes < height) FailWith("the file ends early");
}

bool NetpbmScale::Put(uint32_t value, size_t at, uint8_t* target) const {
  if (value > most_) return false;
  const uint32_t full = most_ > 255 ? 65535 : 255, scaled = (value * full + most_ / 2) / most_;
  if (most_ > 255)
    reinterpret_cast<uint16_t*>(target)[at] = static_cast<uint16_t>(scaled);
  else
    target[at] = static_cast<uint8_t>(scaled);
  return true;
}

bool NetpbmScale::Unfold(const uint8_t* source, size_t count, uint8_t* target) const {
  bool inside = true;
  for (size_t i = 0; i < count; ++i)
    inside &= Put(most_ > 255 ? uint32_t{source[2 * i]} << 8 | source[2 * i + 1] : source[i], i, target);
  return inside;
}

void FoldSamples(const uint8_t* source, size_t count, int32_t bits, uint8_t* target) {
  if (bits == 8) {
    std::copy_n(source, count, target);
    return;
  }
  for (size_t i = 0; i < count; ++i) {
    uint16_t value;
    std::memcpy(&value, source + 2 * i, 2);
    target[2 * i] = static_cast<uint8_t>(value >> 8);
    target[2 * i + 1] = static_cast<uint8_t>(value);
  }
}

NetpbmWriter::NetpbmWriter(const ByteSink& sink, const std::string& header, const char* name)
    : sink_(sink), name_(name) {
  Append(header.data(), header.size());
}

void NetpbmWriter::Append(const void* bytes, size_t size) {
  if (!sink_(position_, bytes, size)) Fail("%s: cannot be written", name_);
  position_ += static_cast<int64_t>(size);
}

}  // namespace norv
