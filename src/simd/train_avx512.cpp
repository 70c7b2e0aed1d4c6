#define NORV_TRAIN_LEVEL avx512
#include "simd/train_level-inl.h"
