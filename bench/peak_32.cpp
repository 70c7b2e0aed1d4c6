#define NORV_LEVEL bytes_32
#define NORV_VECTOR_BYTES 32
#include "peak-inl.h"
