// Small kernels on vectors of floats in the graphics processor's memory. They travel with the tool, registered at its
// start by the linked run-time; no operation launches them.
#pragma once

#include <cstdint>

namespace norv::gpu {

// Threads in a block of the kernels that add up a whole block.
inline constexpr int kBlockSize = 256;

// c = a + b, one thread an element; threads beyond n do nothing.
__global__ void addKernel(const float* a, const float* b, float* c, int64_t n);

// c = a + b and c = a * b, element-wise, for a grid of any size.
__global__ void add(const float* a, const float* b, float* c, int64_t n);
__global__ void prod(const float* a, const float* b, float* c, int64_t n);

// One partial sum of a . b a thread of the grid, to be added up by the caller.
__global__ void dot(const float* a, const float* b, float* partial, int64_t n);

// Adds a . b to *sum, which the caller has set to 0; the order of the threads decides the last bits.
__global__ void dotatomicAdd(const float* a, const float* b, float* sum, int64_t n);

// One partial sum of a . b a block, to be added up by the caller. Blocks of kBlockSize threads.
__global__ void dotcache(const float* a, const float* b, float* partial, int64_t n);

// *sum = a . b in one launch, for a grid of any size, with the same bits in every run: the block that ends last adds up
// the others' partial sums (one a block, room from the caller) in their order. Blocks of kBlockSize threads; *ended is
// 0 before and after.
__global__ void full_dot(const float* a, const float* b, float* partial, unsigned* ended, float* sum, int64_t n);

}  // namespace norv::gpu
