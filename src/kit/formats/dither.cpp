#include "kit/formats/dither.h"

#include <algorithm>
#include <vector>

namespace norv {
namespace {

constexpr int32_t kSide = kDitherSide, kCells = kSide * kSide;

// The cells of a torus, some of them set; how crowded it is at each: the set ones around, weighed by a bell.
class Torus {
 public:
  void Set(int32_t cell, bool set) {
    set_[cell] = set;
    const int32_t y = cell / kSide, x = cell % kSide;
    for (int32_t dy = -kReach; dy <= kReach; ++dy)
      for (int32_t dx = -kReach; dx <= kReach; ++dx) {
        const int32_t share = kBell[dy + kReach] * kBell[dx + kReach];
        crowd_[Wrapped(y + dy) * kSide + Wrapped(x + dx)] += set ? share : -share;
      }
  }
  bool IsSet(int32_t cell) const { return set_[cell]; }
  // The most crowded of the set cells; the least crowded of the others.
  int32_t TightestCluster() const { return Best(true); }
  int32_t LargestVoid() const { return Best(false); }

 private:
  static constexpr int32_t kReach = 6;
  static constexpr int32_t kBell[2 * kReach + 1] = {1, 12, 66, 220, 495, 792, 924, 792, 495, 220, 66, 12, 1};
  static int32_t Wrapped(int32_t i) { return (i + kSide) % kSide; }
  int32_t Best(bool ofSet) const {
    int32_t best = -1;
    for (int32_t i = 0; i < kCells; ++i)
      if (set_[i] == ofSet && (best < 0 || (ofSet ? crowd_[i] > crowd_[best] : crowd_[i] < crowd_[best]))) best = i;
    return best;
  }

  std::array<bool, kCells> set_{};
  std::array<int32_t, kCells> crowd_{};
};

// A tenth of the cells, scattered, then moved from clusters to voids until none moves any more.
std::vector<int32_t> EvenStart(Torus& torus) {
  uint32_t state = 1;
  for (int32_t count = 0; count < kCells / 10;) {
    state = state * 1664525 + 1013904223;
    const auto cell = static_cast<int32_t>(state >> 16) % kCells;
    if (torus.IsSet(cell)) continue;
    torus.Set(cell, true);
    ++count;
  }
  for (int32_t from = -1, to = -2; from != to;) {
    from = torus.TightestCluster();
    torus.Set(from, false);
    to = torus.LargestVoid();
    torus.Set(to, true);
  }
  std::vector<int32_t> cells;
  for (int32_t i = 0; i < kCells; ++i)
    if (torus.IsSet(i)) cells.push_back(i);
  return cells;
}

std::array<DitherRow, kSide> MakePattern() {
  Torus torus;
  const std::vector<int32_t> start = EvenStart(torus);
  std::vector<int32_t> order;  // of the cells, from the one that is set first
  for (Torus rest = torus; order.size() < start.size();) {
    order.push_back(rest.TightestCluster());
    rest.Set(order.back(), false);
  }
  std::reverse(order.begin(), order.end());
  while (order.size() < kCells) {
    order.push_back(torus.LargestVoid());
    torus.Set(order.back(), true);
  }
  std::array<DitherRow, kSide> pattern;
  for (int32_t rank = 0; rank < kCells; ++rank)
    pattern[order[rank] / kSide][order[rank] % kSide] = (static_cast<float>(rank) + 0.5f) / kCells;
  return pattern;
}

}  // namespace

const DitherRow& DitherRowOf(int32_t y) {
  static const std::array<DitherRow, kSide> pattern = MakePattern();
  return pattern[y % kSide];
}

}  // namespace norv
