#define NORV_TRAIN_LEVEL avx2
#include "simd/train_level-inl.h"
