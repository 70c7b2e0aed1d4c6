// The restoration's row kernels for the level avx512.
#define NORV_LEVEL avx512
#include "simd/restore-inl.h"
