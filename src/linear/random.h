// The program's pseudo-random numbers: the same sequence in every run.
#pragma once

#include <cstdint>

namespace norv {

// Three additive counters and the previous value, mixed modulo 2^32.
struct RandomGenerator {
  uint32_t s1 = 971, s2 = 11113, s3 = 104322, s4 = 4181;
  // The next of the values 0 .. 9999.
  int32_t Next();
};

// From one generator for the whole process, never reseeded; for one thread at a time.
int32_t NextRandom();

}  // namespace norv
