#define NORV_LEVEL bytes_16
#define NORV_VECTOR_BYTES 16
#include "peak-inl.h"
