// Launches every kernel against the host's result, on lengths around those of warps, blocks and grids. Exit code 77:
// this machine has no graphics processor that could run them.
#include <cmath>
#include <cstdio>
#include <vector>

#include "gpu/kernels.h"

using namespace norv::gpu;

namespace {

int failures = 0;

void Check(cudaError_t error, const char* what) {
  if (error == cudaSuccess) return;
  std::printf("%s: %s\n", what, cudaGetErrorString(error));
  ++failures;
}

// A vector in the processor's memory.
class DeviceVector {
 public:
  explicit DeviceVector(size_t n) : size_(n) {
    Check(cudaMalloc(&data_, (n + 1) * sizeof(float)), "memory");
    Check(cudaMemset(data_, 0, (n + 1) * sizeof(float)), "memory");
  }
  explicit DeviceVector(const std::vector<float>& values) : DeviceVector(values.size()) {
    Check(cudaMemcpy(data_, values.data(), values.size() * sizeof(float), cudaMemcpyHostToDevice), "copy there");
  }
  ~DeviceVector() { cudaFree(data_); }
  DeviceVector(const DeviceVector&) = delete;
  DeviceVector& operator=(const DeviceVector&) = delete;

  float* Data() { return data_; }
  std::vector<float> Values() const {
    std::vector<float> values(size_);
    Check(cudaMemcpy(values.data(), data_, size_ * sizeof(float), cudaMemcpyDeviceToHost), "copy back");
    return values;
  }
  double Sum() const {
    double sum = 0;
    for (const float value : Values()) sum += value;
    return sum;
  }

 private:
  float* data_ = nullptr;
  size_t size_;
};

void CheckEqual(const char* kernel, const std::vector<float>& found, const std::vector<float>& expected) {
  Check(cudaGetLastError(), kernel);
  if (found == expected) return;
  std::printf("%s: wrong for %zu elements\n", kernel, expected.size());
  ++failures;
}

void CheckNear(const char* kernel, double found, double expected, double magnitude) {
  Check(cudaGetLastError(), kernel);
  if (std::abs(found - expected) <= 1e-5 * magnitude) return;
  std::printf("%s: %.9g instead of %.9g\n", kernel, found, expected);
  ++failures;
}

// All kernels on vectors of n elements and a grid of the given number of blocks.
void TestKernels(int64_t n, int blocks) {
  const size_t size = static_cast<size_t>(n), threads = static_cast<size_t>(blocks) * kBlockSize;
  std::vector<float> a(size), b(size), sums(size), products(size);
  double expected = 0, magnitude = 0;
  for (size_t i = 0; i < size; ++i) {
    a[i] = static_cast<float>(i % 1013) - 400.25f;
    b[i] = 0.5f + static_cast<float>(i % 61) / 64.0f;
    sums[i] = a[i] + b[i];
    products[i] = a[i] * b[i];
    expected += static_cast<double>(a[i]) * b[i];
    magnitude += std::abs(static_cast<double>(a[i]) * b[i]);
  }
  DeviceVector x(a), y(b), plain(size), strided(size), product(size);
  DeviceVector ofThreads(threads), atomic(1), ofBlocks(static_cast<size_t>(blocks));
  addKernel<<<static_cast<unsigned>(n / kBlockSize + 1), kBlockSize>>>(x.Data(), y.Data(), plain.Data(), n);
  CheckEqual("addKernel", plain.Values(), sums);
  add<<<blocks, kBlockSize>>>(x.Data(), y.Data(), strided.Data(), n);
  CheckEqual("add", strided.Values(), sums);
  prod<<<blocks, kBlockSize>>>(x.Data(), y.Data(), product.Data(), n);
  CheckEqual("prod", product.Values(), products);
  dot<<<blocks, kBlockSize>>>(x.Data(), y.Data(), ofThreads.Data(), n);
  CheckNear("dot", ofThreads.Sum(), expected, magnitude);
  dotatomicAdd<<<blocks, kBlockSize>>>(x.Data(), y.Data(), atomic.Data(), n);
  CheckNear("dotatomicAdd", atomic.Sum(), expected, magnitude);
  dotcache<<<blocks, kBlockSize>>>(x.Data(), y.Data(), ofBlocks.Data(), n);
  CheckNear("dotcache", ofBlocks.Sum(), expected, magnitude);

  DeviceVector partial(static_cast<size_t>(blocks)), ended(1), total(1);
  float first = 0;
  for (int run = 0; run < 3; ++run) {
    full_dot<<<blocks, kBlockSize>>>(x.Data(), y.Data(), partial.Data(), reinterpret_cast<unsigned*>(ended.Data()),
                                     total.Data(), n);
    CheckNear("full_dot", total.Sum(), expected, magnitude);
    const float found = total.Values()[0];
    if (run == 0) first = found;
    CheckEqual("full_dot in another run", {found}, {first});
  }
}

}  // namespace

int main() {
  int processors = 0;
  if (cudaGetDeviceCount(&processors) != cudaSuccess || processors == 0) {
    std::printf("skipped: no graphics processor\n");
    return 77;
  }
  cudaDeviceProp properties;
  Check(cudaGetDeviceProperties(&properties, 0), "properties");
  for (const int64_t n : {0, 1, 31, 256, 257, 65536, 1000003})
    for (const int blocks : {1, 3, 132}) TestKernels(n, blocks);
  std::printf("%s: %d failures\n", properties.name, failures);
  return failures > 0;
}
