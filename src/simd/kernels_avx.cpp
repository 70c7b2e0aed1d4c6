#define NORV_LEVEL avx
#define NORV_VECTOR_BYTES 32
#include "simd/kernels-inl.h"
