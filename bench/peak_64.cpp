#define NORV_LEVEL bytes_64
#define NORV_VECTOR_BYTES 64
#include "peak-inl.h"
