// The restoration's row kernels for the level avx2.
#define NORV_LEVEL restore_avx2
#define NORV_VECTOR_BYTES 32
#include "simd/restore-inl.h"
