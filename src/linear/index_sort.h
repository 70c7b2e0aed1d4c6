// The order of keys as a permutation.
#pragma once

#include <cstdint>

namespace norv {

// Fills index with 0 .. n - 1 such that keys[index[.]] ascends; not stable, but the same permutation on every machine.
// Quicksort by the median of the first, middle and last element with ranges of up to 11 left to insertion (Singleton,
// CACM algorithm 347, 1969). NaN keys end anywhere. Throws std::bad_alloc.
void IndexSort(int32_t* index, const float* keys, int32_t n);
void IndexSort(int32_t* index, const double* keys, int32_t n);

}  // namespace norv
