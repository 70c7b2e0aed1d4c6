#include "kit/formats/byte_cursor.h"

#include <algorithm>

namespace norv {

bool ByteCursor::Fill() {
  constexpr size_t kPiece = size_t{1} << 16;
  buffer_.resize(kPiece);
  at_ = 0;
  held_ = source_.read(position_, buffer_.data(), kPiece);
  position_ += static_cast<int64_t>(held_);
  return held_ > 0;
}

bool ByteCursor::Take(uint8_t* target, size_t bytes) {
  while (bytes > 0) {
    if (at_ == held_ && !Fill()) return false;
    const size_t part = std::min(bytes, held_ - at_);
    target = std::copy_n(buffer_.data() + at_, part, target);
    at_ += part;
    bytes -= part;
  }
  return true;
}

}  // namespace norv
