// The dot product whose speed the benchmark measures.
#pragma once

#include "linear/matrix2.h"

namespace norv {

// Sum of a[k] * b[k] over a's elements (b's length is not checked): eight lane sums over whole blocks of eight,
// multiply and add as separate instructions; then lane 0, the products of the rest one by one, and lanes 1 to 7, in
// this order.
//
// In a file of its own and never inlined, so that no compiler sees through it what a loop around it computes.
float dot(const matrix& a, const matrix& b);

}  // namespace norv
