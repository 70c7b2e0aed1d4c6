#define NORV_LEVEL avx2
#define NORV_VECTOR_BYTES 32
#include "simd/kernels-inl.h"
