#include "gpu/kernels.h"

namespace norv::gpu {
namespace {

__device__ int64_t ThreadOfGrid() { return int64_t{blockIdx.x} * blockDim.x + threadIdx.x; }
__device__ int64_t ThreadsInGrid() { return int64_t{gridDim.x} * blockDim.x; }

// This thread's share of a . b.
__device__ float PartialDot(const float* a, const float* b, int64_t n) {
  float sum = 0;
  for (int64_t i = ThreadOfGrid(); i < n; i += ThreadsInGrid()) sum += a[i] * b[i];
  return sum;
}

// The sum over the block, as a tree in shared memory; whole in thread 0 only.
__device__ float SumOfBlock(float value) {
  __shared__ float cache[kBlockSize];
  cache[threadIdx.x] = value;
  for (int half = kBlockSize / 2; half > 0; half /= 2) {
    __syncthreads();
    if (threadIdx.x < half) cache[threadIdx.x] += cache[threadIdx.x + half];
  }
  return cache[0];
}

}  // namespace

__global__ void addKernel(const float* a, const float* b, float* c, int64_t n) {
  const int64_t i = ThreadOfGrid();
  if (i < n) c[i] = a[i] + b[i];
}

__global__ void add(const float* a, const float* b, float* c, int64_t n) {
  for (int64_t i = ThreadOfGrid(); i < n; i += ThreadsInGrid()) c[i] = a[i] + b[i];
}

__global__ void prod(const float* a, const float* b, float* c, int64_t n) {
  for (int64_t i = ThreadOfGrid(); i < n; i += ThreadsInGrid()) c[i] = a[i] * b[i];
}

__global__ void dot(const float* a, const float* b, float* partial, int64_t n) {
  partial[ThreadOfGrid()] = PartialDot(a, b, n);
}

__global__ void dotatomicAdd(const float* a, const float* b, float* sum, int64_t n) {
  atomicAdd(sum, PartialDot(a, b, n));
}

__global__ void dotcache(const float* a, const float* b, float* partial, int64_t n) {
  const float sum = SumOfBlock(PartialDot(a, b, n));
  if (threadIdx.x == 0) partial[blockIdx.x] = sum;
}

__global__ void full_dot(const float* a, const float* b, float* partial, unsigned* ended, float* sum, int64_t n) {
  const float own = SumOfBlock(PartialDot(a, b, n));
  if (threadIdx.x != 0) return;
  partial[blockIdx.x] = own;
  __threadfence();  // the partial sum is seen before the count that says so
  if (atomicAdd(ended, 1u) + 1 < gridDim.x) return;
  __threadfence();
  float total = 0;
  for (unsigned block = 0; block < gridDim.x; ++block) total += static_cast<volatile float*>(partial)[block];
  *sum = total;
  *ended = 0;
}

}  // namespace norv::gpu
