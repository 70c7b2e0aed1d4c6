// The restoration's row kernels for the level avx.
#define NORV_LEVEL restore_avx
#define NORV_VECTOR_BYTES 32
#include "simd/restore-inl.h"
