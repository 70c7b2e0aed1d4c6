// Dot product and scaled sums of plain vectors. To be included like vectors-inl.h, after it.

namespace norv::NORV_LEVEL {

// Eight sums at every level: they belong to the result.
inline float Dot(const float* x, const float* y, int64_t n) {
  using Eight = float __attribute__((vector_size(32)));
  Eight sums = {};
  int64_t i = 0;
  for (; i + 8 <= n; i += 8) sums += Load<Eight>(x + i) * Load<Eight>(y + i);
  float sum = sums[0];
  for (; i < n; ++i) sum += x[i] * y[i];
  for (int lane = 1; lane < 8; ++lane) sum += sums[lane];
  return sum;
}

inline void AddScaled(float* y, float s, const float* x, int64_t n) {
  for (int64_t i = 0; i < n; ++i) y[i] += s * x[i];
}

inline void Add(float* y, const float* x, int64_t n) {
  for (int64_t i = 0; i < n; ++i) y[i] += x[i];
}

inline void Scale(float* y, float s, int64_t n) {
  for (int64_t i = 0; i < n; ++i) y[i] *= s;
}

}  // namespace norv::NORV_LEVEL
