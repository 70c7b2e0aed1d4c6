// The level that runs, and the rows of the activation kinds.
#include <cstdlib>
#include <random>

#include "net/activation.h"
#include "simd/columns/kernels.h"
#include "simd/family.h"
#include "simd/restore/kernels.h"
#include "simd/train/kernels.h"
#include "support/levels.h"
#include "support/test.h"

namespace {

// Random bits: every exponent, infinities and NaN among them.
std::vector<float> AnyFloats(size_t n) {
  std::mt19937 random(1);
  std::vector<float> floats(n);
  for (float& x : floats) {
    const auto bits = static_cast<uint32_t>(random());
    std::memcpy(&x, &bits, sizeof x);
  }
  for (const float x : {0.f, -0.f, HUGE_VALF, -HUGE_VALF, NAN, 88.72284f, -103.97208f, 709.7827f, 1e-45f, -1e-45f, 1.f})
    floats.push_back(x);
  return floats;
}

template <typename T>
size_t Differences(const std::vector<T>& a, const std::vector<T>& b) {
  size_t different = 0;
  for (size_t i = 0; i < a.size(); ++i)
    different += std::memcmp(&a[i], &b[i], sizeof(T)) != 0 && !(std::isnan(a[i]) && std::isnan(b[i]));
  return different;
}

}  // namespace

TEST_CASE("the level asked for is the level that runs") {
  for (const VectorLevel level : AvailableLevels()) {
    const ForcedLevel forced(level);
    CHECK(ActiveLevel() == level);
    CHECK(&ActiveRestoreKernels() == &RestoreKernelsOf(level));
  }
  // What the compiler was asked for in the very files that the tables are made in.
  REQUIRE(Family::first);
  for (const Family* family = Family::first; family; family = family->next) {
    CAPTURE(std::string(family->name));
    for (const VectorLevel level : kLevels) CHECK(family->levelOf(level) == level);
  }
  if (const char* word = std::getenv("NORV_SIMD"); word && *word) CHECK(std::string(NameOf(ActiveLevel())) == word);
}

TEST_CASE("activation rows have the bits of the single functions at every level") {
  const std::vector<float> x = AnyFloats(20001);
  const size_t padded = x.size() + kTrainBlock;  // training's rows write whole blocks
  for (int32_t kind = 1; kind < kActivationKinds; ++kind) {
    CAPTURE(kind);
    const Activation& single = ActivationOf(kind);
    std::vector<float> f(x.size());
    std::vector<double> df(x.size());
    for (size_t i = 0; i < x.size(); ++i) f[i] = static_cast<float>(single.f(x[i])), df[i] = single.df(x[i]);
    for (const VectorLevel level : AvailableLevels()) {
      std::vector<float> row(x.size()), values(padded), z(x);
      std::vector<double> slopes(padded);
      z.resize(padded);
      EvaluateKernelsOf(level).activation[kind](x.data(), row.data(), static_cast<int64_t>(x.size()));
      TrainKernelsOf(level).activate[kind](z.data(), static_cast<int32_t>(x.size()), values.data(), slopes.data());
      values.resize(x.size()), slopes.resize(x.size());
      CHECK(Differences(row, f) == 0);
      CHECK(Differences(values, f) == 0);
      CHECK(Differences(slopes, df) == 0);
    }
  }
}

TEST_CASE("the logistic row decides results near the middle between two floats as the single function does") {
  std::vector<float> x, f;
  for (int i = 0; i < 3000000; ++i) {
    const float argument = static_cast<float>(i) * 6e-6f - 9;
    const double value = ActivationOf(1).f(argument);
    uint64_t bits;
    std::memcpy(&bits, &value, sizeof bits);
    if (std::abs(static_cast<int64_t>(bits & 0x1fffffff) - 0x10000000) > 0x4000) continue;
    x.push_back(argument);
    f.push_back(static_cast<float>(value));
  }
  CHECK(x.size() > 50);
  for (const VectorLevel level : AvailableLevels()) {
    std::vector<float> row(x.size());
    EvaluateKernelsOf(level).activation[1](x.data(), row.data(), static_cast<int64_t>(x.size()));
    CHECK(Differences(row, f) == 0);
  }
}

TEST_CASE("products of the elements of rows are added in the rows' order at every level") {
  std::mt19937 random(2);
  for (const int32_t length : {1, 2, 5, 16, 36, 67, 144}) {
    CAPTURE(length);
    constexpr int32_t kRows = 9;
    std::vector<double> rows(kRows * static_cast<size_t>(length)), start(static_cast<size_t>(length));
    for (double& value : rows) value = std::ldexp(static_cast<double>(random()), -static_cast<int>(random() % 40));
    for (double& value : start) value = static_cast<double>(random());
    const int32_t j = length / 2;
    std::vector<double> plain = start;
    for (int32_t k = 0; k < kRows; ++k)
      for (int32_t i = 0; i < length; ++i) plain[i] += rows[k * length + j] * rows[k * length + i];
    for (const VectorLevel level : AvailableLevels()) {
      std::vector<double> sums = start;
      ColumnKernelsOf(level).addProducts(rows.data(), kRows, length, j, sums.data());
      CHECK(Differences(sums, plain) == 0);
    }
  }
}
