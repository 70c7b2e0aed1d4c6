#include "linear/index_sort.h"

#include <utility>

#include "platform/memory.h"

namespace norv {
namespace {

// The key travels with its index, so that comparisons read neighbouring memory.
template <typename Key>
struct Entry {
  Key key;
  int32_t index;
};

struct Part {
  int32_t low, high;
};

constexpr int32_t kInsertionLength = 11;

// Orders the first, middle and last entry; returns the middle key. Written with "not (a <= b)" so that no scan leaves
// its range whatever NaN there are.
template <typename Key>
Key OrderThree(Entry<Key>& first, Entry<Key>& middle, Entry<Key>& last) {
  if (!(first.key <= middle.key)) std::swap(first, middle);
  if (!(last.key >= middle.key)) {
    std::swap(last, middle);
    if (!(first.key <= middle.key)) std::swap(first, middle);
  }
  return middle.key;
}

// Positions, counted from one end of a block, of entries that belong to the other side of the pivot.
struct Misplaced {
  static constexpr int32_t kBlock = 64;
  uint8_t place[kBlock];
  int32_t count = 0, used = 0;

  bool Done() const { return used == count; }
  // Without a branch on the keys, which nobody could foretell.
  template <typename Test>
  void Find(const Test& isMisplaced) {
    count = used = 0;
    for (int32_t i = 0; i < kBlock; ++i) {
      place[count] = static_cast<uint8_t>(i);
      count += isMisplaced(i);
    }
  }
};

// The first swaps of a partition with the scans at up and down: whole blocks from both ends, their misplaced entries
// swapped in the order in which the scans would meet (Edelkamp and Weiss 2016), as long as the blocks stay apart.
template <typename Key>
void SwapBlocks(Entry<Key>* a, Key pivot, int32_t& up, int32_t& down) {
  constexpr int32_t kBlock = Misplaced::kBlock;
  Misplaced left, right;
  int32_t leftEnd = up + 1, rightEnd = down - 1;  // beyond the blocks, which reach from here back to the ends
  for (;;) {
    if (left.Done()) {
      if (rightEnd - leftEnd < kBlock) return;
      left.Find([&](int32_t i) { return !(a[leftEnd + i].key < pivot); });
      leftEnd += kBlock;
    }
    if (right.Done()) {
      if (rightEnd - leftEnd < kBlock) return;
      right.Find([&](int32_t i) { return !(a[rightEnd - i].key > pivot); });
      rightEnd -= kBlock;
    }
    while (!left.Done() && !right.Done()) {
      up = leftEnd - kBlock + left.place[left.used++];
      down = rightEnd + kBlock - right.place[right.used++];
      std::swap(a[up], a[down]);
    }
  }
}

// Parts [low, return.high] with keys up to the pivot and [return.low, high] with keys from the pivot on.
template <typename Key>
Part Partition(Entry<Key>* a, Part range) {
  const Key pivot = OrderThree(a[range.low], a[range.low + (range.high - range.low) / 2], a[range.high]);
  int32_t up = range.low, down = range.high;
  SwapBlocks(a, pivot, up, down);
  for (;;) {
    do --down;
    while (a[down].key > pivot);
    do ++up;
    while (a[up].key < pivot);
    if (up > down) return {up, down};
    std::swap(a[up], a[down]);
  }
}

template <typename Key>
void Insert(Entry<Key>* a, Part range) {
  for (int32_t i = range.low + 1; i <= range.high; ++i) {
    const Entry<Key> entry = a[i];
    int32_t k = i;
    for (; k > range.low && entry.key < a[k - 1].key; --k) a[k] = a[k - 1];
    a[k] = entry;
  }
}

// Ranges at index 0 are partitioned down to one element; the order of equal keys depends on it.
template <typename Key>
void Sort(Entry<Key>* a, int32_t n) {
  Part pending[32];  // the smaller part goes first, so never more than log2(n)
  int32_t count = 0;
  Part range = {0, n - 1};
  for (;;) {
    const int32_t length = range.high - range.low + 1;
    if (length > kInsertionLength || (range.low == 0 && length > 1)) {
      const Part gap = Partition(a, range);
      const Part left = {range.low, gap.high}, right = {gap.low, range.high};
      const bool leftFirst = left.high - left.low <= right.high - right.low;
      pending[count++] = leftFirst ? right : left;
      range = leftFirst ? left : right;
      continue;
    }
    Insert(a, range);
    if (count == 0) return;
    range = pending[--count];
  }
}

template <typename Key>
void SortKeys(int32_t* index, const Key* keys, int32_t n) {
  if (n <= 0) return;
  const AlignedArray<Entry<Key>> entries = MakeAligned<Entry<Key>>(static_cast<size_t>(n));
  for (int32_t i = 0; i < n; ++i) entries[i] = {keys[i], i};
  Sort(entries.get(), n);
  for (int32_t i = 0; i < n; ++i) index[i] = entries[i].index;
}

}  // namespace

void IndexSort(int32_t* index, const float* keys, int32_t n) { SortKeys(index, keys, n); }
void IndexSort(int32_t* index, const double* keys, int32_t n) { SortKeys(index, keys, n); }

}  // namespace norv
