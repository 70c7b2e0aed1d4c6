#include "kit/formats/tiff/values.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <type_traits>

namespace norv {
namespace {

// Numbers that libtiff has brought into the machine's own order.
template <typename T>
T Whole(const uint8_t* source, size_t i) {
  T value;
  std::memcpy(&value, source + i * sizeof(T), sizeof(T));
  return value;
}

uint32_t Three(const uint8_t* source, size_t i) {
  const uint8_t* at = source + 3 * i;
  if constexpr (std::endian::native == std::endian::little) return at[0] | at[1] << 8 | at[2] << 16;
  return at[2] | at[1] << 8 | at[0] << 16;
}

// Of fewer than 32 bits the high ones come first.
uint32_t BitsAt(const uint8_t* source, size_t i, int32_t bits) {
  uint32_t value = 0;
  for (size_t at = i * bits, end = at + bits; at < end; ++at) value = value << 1 | (source[at / 8] >> (7 - at % 8) & 1);
  return value;
}

uint32_t IntegerAt(const uint8_t* source, size_t i, int32_t bits) {
  switch (bits) {
    case 8:
      return source[i];
    case 16:
      return Whole<uint16_t>(source, i);
    case 24:
      return Three(source, i);
    case 32:
      return Whole<uint32_t>(source, i);
    default:
      return BitsAt(source, i, bits);
  }
}

// From a sign, bits of exponent and bits of mantissa (IEEE 754).
float SmallFloat(uint32_t value, int exponentBits, int mantissaBits) {
  const uint32_t mantissa = value & ((1u << mantissaBits) - 1), most = (1u << exponentBits) - 1;
  const uint32_t exponent = value >> mantissaBits & most;
  const int bias = static_cast<int>(most / 2);
  const double sign = value >> (exponentBits + mantissaBits) & 1 ? -1 : 1;
  if (exponent == most) return static_cast<float>(mantissa ? NAN : sign * INFINITY);
  const uint32_t hidden = exponent ? 1u << mantissaBits : 0;
  const int shift = static_cast<int>(exponent ? exponent : 1) - bias - mantissaBits;
  return static_cast<float>(sign * std::ldexp(hidden + mantissa, shift));
}

float FloatAt(const uint8_t* source, size_t i, int32_t bits) {
  if (bits == 16) return SmallFloat(Whole<uint16_t>(source, i), 5, 10);
  if (bits == 24) return SmallFloat(Three(source, i), 7, 16);
  return bits == 32 ? Whole<float>(source, i) : static_cast<float>(Whole<double>(source, i));
}

template <typename T>
T FromFloat(float value) {
  if constexpr (std::is_floating_point_v<T>)
    return value;
  else
    return static_cast<T>(value > 0 ? std::min(value, 1.0f) * static_cast<T>(-1) + 0.5f : 0);
}

template <typename T>
T FromInteger(uint32_t value, uint32_t most) {
  if constexpr (std::is_floating_point_v<T>)
    return static_cast<T>(value / static_cast<double>(most));
  else
    return static_cast<T>((uint64_t{value} * static_cast<T>(-1) + most / 2) / most);
}

}  // namespace

uint32_t IntegerOf(const SampleRun& run, size_t i) { return IntegerAt(run.source, run.first + i * run.step, run.bits); }

template <typename T>
void UnfoldSamples(const SampleRun& run, size_t count, T* target, size_t step) {
  const bool floating = run.kind == SampleKind::floating;
  if (run.bits == 8 * sizeof(T) && floating == std::is_floating_point_v<T> && run.kind != SampleKind::signedInteger) {
    for (size_t i = 0; i < count; ++i) target[i * step] = Whole<T>(run.source, run.first + i * run.step);
    return;
  }
  const uint32_t most = run.bits == 32 ? UINT32_MAX : (1u << run.bits % 32) - 1;
  const uint32_t half = run.kind == SampleKind::signedInteger ? 1u << (run.bits - 1) : 0;
  for (size_t i = 0; i < count; ++i, target += step)
    if (floating)
      *target = FromFloat<T>(FloatAt(run.source, run.first + i * run.step, run.bits));
    else
      *target = FromInteger<T>(IntegerOf(run, i) ^ half, most);
}

template void UnfoldSamples<uint8_t>(const SampleRun&, size_t, uint8_t*, size_t);
template void UnfoldSamples<uint16_t>(const SampleRun&, size_t, uint16_t*, size_t);
template void UnfoldSamples<float>(const SampleRun&, size_t, float*, size_t);

}  // namespace norv
