#define NORV_LEVEL train_avx2
#define NORV_VECTOR_BYTES 32
#include "simd/train_level-inl.h"
