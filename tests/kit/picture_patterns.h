// Samples and files of them for tests of picture formats.
#pragma once

#include <array>

#include "kit/failure.h"
#include "kit/formats/codec.h"

namespace norv::test {

// Every value of a channel, every channel different, no two rows alike; of floats those from 0 to below 2.
inline Samples Pattern(int32_t width, int32_t height, int32_t channels, int32_t bits) {
  Samples samples({width, height, channels, bits});
  uint32_t state = 12345;
  for (uint8_t& byte : samples.bytes) byte = static_cast<uint8_t>((state = state * 1664525 + 1013904223) >> 24);
  if (bits == 32)
    for (size_t i = 3; i < samples.bytes.size(); i += 4) samples.bytes[i] = 0x3F;
  return samples;
}

inline std::array<int32_t, 4> Shape(const Samples& samples) {
  return {samples.width, samples.height, samples.channels, samples.bits};
}

// The reason for which these bytes are no picture, empty when they are one.
inline std::string Refusal(const Codec& codec, const Bytes& bytes, const ReadChoice& choice = {}) {
  try {
    codec.Decode(bytes, choice);
    return "";
  } catch (const Failure& failure) {
    return failure.what();
  }
}

}  // namespace norv::test
