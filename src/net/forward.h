// One forward pass on the record: the plain reference of every faster form.
#pragma once

#include "net/neural_net.h"

namespace norv {

// Eight running sums over whole blocks of eight elements (lane k takes elements 8j + k), the remaining products one by
// one to lane 0, then lanes 1 to 7 added to it in order; all in single precision. The contract with the graphical
// program asks for this order, which is therefore that of every faster form.
float DotProduct(const float* a, const float* b, int32_t n);

// Evaluates every unit, layer by layer, and leaves its X, z and a in the record. input has N0 elements (asserted).
// 1 thread: units in order. 4, 8, 16: a team of exactly that size for every layer, but for the last one with 8 and 16
// only when its units divide evenly; a single layer needs no team. Any other count: returns at once, nothing evaluated.
// Every unit must have an activation (asserted).
void ForwardPass(NeuralNet& net, const matrix& input, int32_t threads);

}  // namespace norv
