#define NORV_TRAIN_LEVEL avx
#include "simd/train_level-inl.h"
