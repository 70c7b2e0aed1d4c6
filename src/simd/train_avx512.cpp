#define NORV_LEVEL train_avx512
#define NORV_VECTOR_BYTES 64
#include "simd/train_level-inl.h"
