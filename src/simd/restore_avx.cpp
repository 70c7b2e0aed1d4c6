// The restoration's row kernels for the level avx.
#define NORV_LEVEL avx
#include "simd/restore-inl.h"
