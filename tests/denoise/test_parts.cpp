// The parts of the denoisers against plain second ways.
#include "denoise/components.h"
#include "denoise/low_rank.h"
#include "denoise/noise_level.h"
#include "denoise/patch_search.h"
#include "linear/dmatrix.h"
#include "support/noisy_pictures.h"
#include "support/random_plane.h"
#include "support/test.h"

TEST_CASE("the estimate of the noise") {
  for (const double sigma : {10.0, 20.0, 50.0}) {
    CAPTURE(sigma);
    matrix plane = Scene(160, 130);
    AddNoise(plane, sigma, 3);
    CHECK(EstimateNoise(plane, 1) == doctest::Approx(sigma).epsilon(sigma < 15 ? 0.25 : 0.1));
    std::vector<float> differences;
    for (int32_t r = 0; r + 1 < plane.n; ++r)
      for (int32_t c = 0; c + 1 < plane.m; ++c)
        differences.push_back(std::abs(plane.z[r][c] - plane.z[r][c + 1] - plane.z[r + 1][c] + plane.z[r + 1][c + 1]));
    std::sort(differences.begin(), differences.end());
    for (const int threads : {1, 2, 3, 16, 500})
      CHECK(EstimateNoise(plane, threads) == differences[differences.size() / 2] / 2 / 0.6744897501960817);
  }
  matrix flat(9, 1), constant(6, 5), corner(2, 2);
  flat.fill(7);
  constant.fill(7);
  corner.fill(0);
  corner.x[3] = 2;
  CHECK(EstimateNoise(flat, 2) == 0);
  CHECK(EstimateNoise(constant, 3) == 0);
  CHECK(EstimateNoise(corner, 16) == doctest::Approx(1 / 0.67448975));
}

TEST_CASE("the search finds the nearest patches of its window") {
  matrix plane = Scene(37, 29);
  for (int32_t i = 0; i < plane.mn; ++i) plane.x[i] = std::floor(plane.x[i] / 8);  // exact sums, and many equal ones
  const PatchPlane patches(plane);
  for (const SearchWindow window : {SearchWindow{6, 1}, SearchWindow{9, 2}, SearchWindow{40, 3}})
    for (const int32_t side : {2, 5, 12}) {
      PatchSearch search(patches, side, window);
      for (const auto& [row, column] : {std::pair{0, 0}, {29 - side, 37 - side}, {9, 20}, {17, 3}}) {
        std::vector<std::pair<float, uint32_t>> all;
        for (int32_t r = 0; r <= 29 - side; ++r)
          for (int32_t c = 0; c <= 37 - side; ++c) {
            const int32_t down = std::abs(r - row), right = std::abs(c - column);
            if (std::max(down, right) > window.radius || down % window.step || right % window.step) continue;
            float distance = r == row && c == column ? -1.0f : 0.0f;  // itself before its equals
            for (int32_t i = 0; i < side; ++i)
              for (int32_t j = 0; j < side; ++j)
                distance += std::pow(plane.z[row + i][column + j] - plane.z[r + i][c + j], 2.0f);
            all.push_back({distance, static_cast<uint32_t>(r * patches.stride + c)});
          }
        const size_t count = std::min<size_t>(20, all.size());
        std::sort(all.begin(), all.end());
        std::vector<uint32_t> expected, found;
        for (size_t k = 0; k < count; ++k) expected.push_back(all[k].second);
        std::sort(expected.begin(), expected.end());
        search.Find(row, column, 20, found);
        CHECK(found == expected);
      }
    }
}

TEST_CASE("the low-rank approximation is the closed form on the singular values") {
  LowRank lowRank;
  for (const auto& [length, count] : {std::pair{9, 24}, {25, 14}, {16, 16}, {4, 1}}) {
    CAPTURE(length);
    CAPTURE(count);
    std::vector<float> vectors(static_cast<size_t>(length * count));
    for (int32_t i = 0; i < length * count; ++i)
      vectors[i] =
          static_cast<float>(50 + 30 * std::sin(i % length) * std::cos(0.4 * (i / length)) + 9 * std::sin(i * i));
    dmatrix group(length, count), U, W, V;
    std::vector<double> mean(static_cast<size_t>(length));
    for (int32_t i = 0; i < group.mn; ++i) mean[i % length] += vectors[i] / static_cast<double>(count);
    for (int32_t i = 0; i < group.mn; ++i) group.x[i] = vectors[i] - mean[i % length];
    group.svd(U, W, V);
    constexpr float kSigma = 2, kStrength = 2.83f;
    const double threshold = 4.8 * kStrength * std::sqrt(count) * kSigma * kSigma;
    int32_t rank = 0;
    for (int32_t k = 0; k < W.m; ++k) {
      const double s = W.x[k], rest = s * s - threshold;
      rank += rest > 0;
      W.x[k] = rest > 0 ? (s + std::sqrt(rest)) / 2 : 0;
    }
    CHECK(lowRank.Approximate(vectors.data(), length, count, kSigma, kStrength) == rank);
    if (count > 1) CHECK(rank > 0);
    double error = 0;
    for (int32_t j = 0; j < count; ++j)
      for (int32_t i = 0; i < length; ++i) {
        double value = mean[i];
        for (int32_t k = 0; k < W.m; ++k) value += U.z[k][i] * W.x[k] * V.z[k][j];
        error = std::max(error, std::abs(value - vectors[j * length + i]));
      }
    CHECK(error < 1e-3);
  }
}

TEST_CASE("learned components are orthonormal, without correlation and of one sign") {
  matrix plane(12, 9), components, again;
  for (int32_t i = 0; i < plane.mn; ++i) plane.x[i] = static_cast<float>(i % 12 * (i % 7) + i / 12 * 5 + i % 5);
  LearnComponents(plane, 3, 1, components);
  LearnComponents(plane, 3, 3, again);
  CHECK(SameBits(components, again));
  REQUIRE(AreComponents(components, 3));
  CHECK_FALSE(AreComponents(components, 4));
  for (int32_t k = 1; k <= 9; ++k) {
    const float* one = components.z[k];
    CHECK(*std::max_element(one, one + 9, [](float a, float b) { return std::abs(a) < std::abs(b); }) > 0);
    for (int32_t j = 1; j <= k; ++j) {
      double dot = 0, correlation = 0;
      for (int32_t i = 0; i < 9; ++i) dot += one[i] * components.z[j][i];
      for (int32_t at = 0; at < 7 * 10; ++at) {
        double a = 0, b = 0;
        for (int32_t i = 0; i < 9; ++i) {
          const double value = plane.z[at / 10 + i / 3][at % 10 + i % 3] - components.z[0][i];
          a += one[i] * value;
          b += components.z[j][i] * value;
        }
        correlation += a * b;
      }
      CHECK(dot == doctest::Approx(j == k).epsilon(1e-5));
      CHECK((j == k || std::abs(correlation) < 0.5));
    }
  }
  components.z[3][0] = std::nanf("");
  CHECK_FALSE(AreComponents(components, 3));
}
