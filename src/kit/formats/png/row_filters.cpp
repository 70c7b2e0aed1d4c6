#include "kit/formats/png/row_filters.h"

#include <algorithm>
#include <cstdlib>

namespace norv {
namespace {

// target[i] = row[i] - predict(left, above, above left); loops that the compiler turns into vectors.
template <typename Predict>
void Subtract(const uint8_t* row, const uint8_t* above, int64_t bytes, int32_t pixelBytes, uint8_t* __restrict target,
              const Predict& predict) {
  const uint8_t *left = row - pixelBytes, *aboveLeft = above - pixelBytes;
  for (int64_t i = 0; i < bytes; ++i)
    target[i] = static_cast<uint8_t>(row[i] - predict(int16_t{left[i]}, int16_t{above[i]}, int16_t{aboveLeft[i]}));
}

int16_t Distance(int a, int b) { return static_cast<int16_t>(std::abs(a - b)); }

int16_t Paeth(int16_t left, int16_t above, int16_t aboveLeft) {
  const int16_t fromLeft = Distance(above, aboveLeft), fromAbove = Distance(left, aboveLeft),
                fromBoth = Distance(left + above, 2 * aboveLeft);
  const int16_t other = fromAbove <= fromBoth ? above : aboveLeft;
  return fromLeft <= fromAbove && fromLeft <= fromBoth ? left : other;
}

// As two's complement: small changes of either sign count as small.
int64_t SumOfAbsolutes(const uint8_t* bytes, int64_t count) {
  int64_t sum = 0;
  // 32 bits hold the sum of a part, and are twice as many lanes.
  for (int64_t part = 0; part < count; part += 1 << 20) {
    const int64_t end = std::min<int64_t>(part + (1 << 20), count);
    int32_t partSum = 0;
    for (int64_t i = part; i < end; ++i) partSum += std::abs(static_cast<int8_t>(bytes[i]));
    sum += partSum;
  }
  return sum;
}

}  // namespace

void FilterRow(int filter, const uint8_t* row, const uint8_t* above, int64_t bytes, int32_t pixelBytes,
               uint8_t* target) {
  *target++ = static_cast<uint8_t>(filter);
  const auto subtract = [&](const auto& predict) { Subtract(row, above, bytes, pixelBytes, target, predict); };
  switch (filter) {
    case 0:
      std::copy_n(row, bytes, target);
      break;
    case 1:
      subtract([](int16_t left, int16_t, int16_t) { return left; });
      break;
    case 2:
      subtract([](int16_t, int16_t up, int16_t) { return up; });
      break;
    case 3:
      subtract([](int16_t left, int16_t up, int16_t) { return static_cast<int16_t>((left + up) >> 1); });
      break;
    default:
      subtract(Paeth);
  }
}

void FilterRowBest(const uint8_t* row, const uint8_t* above, int64_t bytes, int32_t pixelBytes, uint8_t* target,
                   uint8_t* scratch) {
  FilterRow(0, row, above, bytes, pixelBytes, target);
  int64_t least = SumOfAbsolutes(target + 1, bytes);
  for (int filter = 1; filter < kRowFilters; ++filter) {
    FilterRow(filter, row, above, bytes, pixelBytes, scratch);
    const int64_t sum = SumOfAbsolutes(scratch + 1, bytes);
    if (sum >= least) continue;
    least = sum;
    std::copy_n(scratch, bytes + 1, target);
  }
}

}  // namespace norv
