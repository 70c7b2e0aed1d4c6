// Reads a source from front to back in large pieces.
#pragma once

#include "kit/formats/byte_stream.h"

namespace norv {

class ByteCursor {
 public:
  explicit ByteCursor(const ByteSource& source, int64_t position = 0) : source_(source), position_(position) {}

  // The next byte; -1 behind the end.
  int Next() { return at_ < held_ || Fill() ? buffer_[at_++] : -1; }
  // False when there are fewer; what there was is then used up.
  bool Take(uint8_t* target, size_t bytes);
  // Of the byte that comes next.
  int64_t Position() const { return position_ - static_cast<int64_t>(held_ - at_); }

 private:
  bool Fill();

  ByteSource source_;
  int64_t position_;  // behind what is held
  Bytes buffer_;
  size_t at_ = 0, held_ = 0;
};

}  // namespace norv
