#define NORV_LEVEL avx512
#define NORV_VECTOR_BYTES 64
#include "simd/kernels-inl.h"
