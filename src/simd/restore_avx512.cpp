// The restoration's row kernels for the level avx512.
#define NORV_LEVEL restore_avx512
#define NORV_VECTOR_BYTES 64
#include "simd/restore-inl.h"
