#define NORV_LEVEL wide
#define NORV_VECTOR_BYTES 64
#include "peak-inl.h"
