// The pseudo-random sequence and the sort by index, whose permutation is a contract.
#include "linear/index_sort.h"
#include "linear/random.h"
#include "support/test.h"

namespace {

// The procedure on the index array itself, keys looked up, written down plainly.
template <typename Key>
std::vector<int32_t> SortedByLookUp(const std::vector<Key>& key) {
  const int n = static_cast<int>(key.size());
  std::vector<int32_t> idx(key.size());
  for (int i = 0; i < n; ++i) idx[i] = i;
  const auto k = [&](int i) { return key[idx[i]]; };
  std::vector<std::pair<int, int>> stack = {{0, n - 1}};
  while (!stack.empty()) {
    auto [lo, hi] = stack.back();
    stack.pop_back();
    while (hi - lo + 1 > 11 || (lo == 0 && hi > 0)) {
      const int mid = (lo + hi) / 2;
      if (k(lo) > k(mid)) std::swap(idx[lo], idx[mid]);
      if (k(mid) > k(hi)) std::swap(idx[mid], idx[hi]);
      if (k(lo) > k(mid)) std::swap(idx[lo], idx[mid]);
      const Key pivot = k(mid);
      int i = lo + 1, j = hi - 1;
      for (;; ++i, --j) {
        while (k(j) > pivot) --j;
        while (k(i) < pivot) ++i;
        if (i > j) break;
        std::swap(idx[i], idx[j]);
      }
      if (j - lo > hi - i) {
        stack.push_back({lo, j});
        lo = i;
      } else {
        stack.push_back({i, hi});
        hi = j;
      }
    }
    for (int i = lo + 1; i <= hi; ++i)
      for (int j = i; j > lo && k(j) < k(j - 1); --j) std::swap(idx[j], idx[j - 1]);
  }
  return idx;
}

template <typename Key>
std::vector<int32_t> Sorted(const std::vector<Key>& keys) {
  std::vector<int32_t> index(keys.size(), -1);
  IndexSort(index.data(), keys.data(), static_cast<int32_t>(keys.size()));
  return index;
}

std::vector<float> RandomKeys(int n, int distinct, RandomGenerator& random) {
  std::vector<float> keys(static_cast<size_t>(n));
  for (float& key : keys) key = static_cast<float>(random.Next() % distinct);
  return keys;
}

}  // namespace

TEST_CASE("the pseudo-random sequence") {
  RandomGenerator random;
  for (int32_t expected : {8029, 7945, 3194, 1715, 3125}) CHECK(random.Next() == expected);
  bool beyond = false;
  for (int i = 0; i < 100000; random.Next(), ++i)
    beyond = beyond || random.s1 >= 9973 || random.s2 >= 99991 || random.s3 >= 224729;
  CHECK(!beyond);
  // One generator for the process: it goes on where the last caller stopped.
  bool moved = false;
  for (int i = 0, first = NextRandom(); i < 10; ++i) moved |= NextRandom() != first;
  CHECK(moved);
}

TEST_CASE("the sort gives the permutation of the procedure by looked-up keys, ties included") {
  RandomGenerator random;
  const auto check = [](const std::vector<float>& keys, int distinct) {
    INFO(keys.size(), " ", distinct);
    REQUIRE(Sorted(keys) == SortedByLookUp(keys));
    REQUIRE(Sorted(std::vector<double>(keys.begin(), keys.end())) == SortedByLookUp(keys));
  };
  for (int n = 0; n <= 420; n += n < 100 ? 1 : 16)
    for (int distinct : {1, 2, 5, 10000}) check(RandomKeys(n, distinct, random), distinct);
  for (int distinct : {3, 100, 10000}) {
    std::vector<float> keys = RandomKeys(50000, distinct, random);
    check(keys, distinct);
    std::sort(keys.begin(), keys.end(), std::greater<>());
    check(keys, distinct);
  }
}

TEST_CASE("the sort of NaN keys is still a permutation") {
  RandomGenerator random;
  for (int n : {1, 2, 3, 4, 12, 13, 40, 1000}) {
    std::vector<float> keys = RandomKeys(n, 50, random);
    for (float& key : keys)
      if (random.Next() % 3 == 0) key = std::numeric_limits<float>::quiet_NaN();
    std::vector<int32_t> index = Sorted(keys);
    std::sort(index.begin(), index.end());
    for (int i = 0; i < n; ++i) REQUIRE(index[i] == i);
  }
}
