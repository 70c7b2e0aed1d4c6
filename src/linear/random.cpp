#include "linear/random.h"

namespace norv {

int32_t RandomGenerator::Next() {
  s1 += 7;
  if (s1 >= 9973) s1 -= 9871;
  s2 += 1907;
  if (s2 >= 99991) s2 -= 89989;
  s3 += 73939;
  if (s3 >= 224729) s3 -= 96233;
  const uint32_t mixed = s1 * s4 + s3 + s2;
  s4 = mixed % 100000 / 10;
  return static_cast<int32_t>(s4);
}

int32_t NextRandom() {
  static RandomGenerator generator;
  return generator.Next();
}

}  // namespace norv
