#define NORV_LEVEL narrow
#define NORV_VECTOR_BYTES 32
#include "peak-inl.h"
