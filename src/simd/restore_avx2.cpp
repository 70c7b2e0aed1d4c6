// The restoration's row kernels for the level avx2.
#define NORV_LEVEL avx2
#include "simd/restore-inl.h"
