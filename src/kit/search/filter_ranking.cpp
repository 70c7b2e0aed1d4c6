#include "kit/search/filter_ranking.h"

#include <algorithm>
#include <cmath>
#include <functional>

#include "kit/failure.h"
#include "kit/measure/quality.h"
#include "kit/search/filter_names.h"
#include "platform/team.h"
#include "platform/threads/crew.h"
#include "raster/filters.h"
#include "raster/separable.h"

namespace norv {
namespace {

// The part that is compared: at most so many pixels of the small picture a side, and so many beside it that filters
// reach. The whole picture needs none: its edges are mirrored as they were when it was made.
constexpr int32_t kMostSide = 640, kBeside = 64, kEdge = 2;
constexpr int32_t kPartsASide = 8, kLeastSide = 16;

matrix PartOf(const matrix& plane, int32_t x, int32_t y, int32_t width, int32_t height) {
  matrix part(width, height);
  for (int32_t r = 0; r < height; ++r) std::copy_n(plane.z[y + r] + x, width, part.z[r]);
  return part;
}

// The planes as they are compared.
struct Pair {
  matrix small, large;
  int32_t factor, border;
};

// The factor by which the small picture was made of the large one: what is left over at the right and below was
// cropped, or became one more pixel.
int32_t WholeFactorBetween(const matrix& small, const matrix& large) {
  const auto fits = [](int32_t few, int32_t many, int32_t factor) {
    return many / factor == few || (many + factor - 1) / factor == few;
  };
  for (int32_t factor = 2; factor <= 64; ++factor)
    if (fits(small.m, large.m, factor) && fits(small.n, large.n, factor)) return factor;
  Fail("no whole factor from 2 to 64 makes %d x %d pixels of %d x %d", small.m, small.n, large.m, large.n);
}

Pair MakePair(const matrix& small, const matrix& large) {
  const int32_t factor = WholeFactorBetween(small, large);
  const int32_t width = large.m / factor, height = large.n / factor;
  if (std::min(width, height) < kLeastSide)
    Fail("%d x %d pixels are too few to tell filters apart: it takes %d x %d", width, height, kLeastSide, kLeastSide);
  const int32_t w = std::min(width, kMostSide + 2 * kBeside), h = std::min(height, kMostSide + 2 * kBeside);
  const int32_t x = (width - w) / 2, y = (height - h) / 2;
  const bool whole = w == width && h == height;
  return {PartOf(small, x, y, w, h), PartOf(large, x * factor, y * factor, w * factor, h * factor), factor,
          whole ? kEdge : kBeside};
}

matrix Reduced(const Pair& pair, const matrix& taps) {
  matrix reduced(pair.small.m, pair.small.n);
  ShrinkMatrix(reduced, pair.large, taps);
  return reduced;
}

struct Candidate {
  matrix taps;
  FilterMatch match;
};

bool AreEqual(const matrix& a, const matrix& b) { return a.mn == b.mn && std::equal(a.x, a.x + a.mn, b.x); }

// The different filters of these orders at the factor, not compared yet.
std::vector<Candidate> Candidates(int32_t factor, const std::vector<int32_t>& orders) {
  std::vector<Candidate> candidates;
  for (const int32_t order : orders) {
    matrix taps;
    ShrinkKernel(taps, factor, order);
    const auto same = std::ranges::find_if(candidates, [&](const Candidate& c) { return AreEqual(c.taps, taps); });
    if (same == candidates.end())
      candidates.push_back({std::move(taps), {{order}, 0}});
    else
      same->match.orders.push_back(order);
  }
  // What has a name of its own before narrow Gaussians that are the same.
  for (Candidate& candidate : candidates) std::ranges::sort(candidate.match.orders, std::greater());
  return candidates;
}

void Compare(const Pair& pair, std::vector<Candidate>& candidates) {
  ParallelFor(UsualThreads(), static_cast<int64_t>(candidates.size()), [&](int64_t i) {
    const matrix reduced = Reduced(pair, candidates[i].taps);
    candidates[i].match.decibels = Psnr(WithoutBorder(reduced, pair.border), WithoutBorder(pair.small, pair.border));
  });
  std::ranges::stable_sort(candidates, std::greater(), [](const Candidate& c) { return c.match.decibels; });
}

// Long Lanczos filters differ little from their neighbours and take long, so that a few of them are tried first.
constexpr int32_t kLongLanczos[] = {6, 8, 11, 16, 23, 32, 45, 64};

std::vector<int32_t> FirstOrders() {
  std::vector<int32_t> orders;
  for (const int32_t order : ShrinkOrders())
    if (order <= kLongLanczos[0] || std::ranges::count(kLongLanczos, order) > 0) orders.push_back(order);
  return orders;
}

// Those between the neighbours of the best that were not tried.
std::vector<int32_t> OrdersAround(int32_t best) {
  std::vector<int32_t> orders;
  for (size_t i = 0; i < std::size(kLongLanczos); ++i)
    if (kLongLanczos[i] == best)
      for (int32_t order = kLongLanczos[i - (i > 0)];
           order < kLongLanczos[std::min(i + 1, std::size(kLongLanczos) - 1)]; ++order)
        if (std::ranges::count(kLongLanczos, order) == 0) orders.push_back(order);
  return orders;
}

double SquaredError(const matrix& a, const matrix& b, const Range& rows, const Range& columns) {
  double sum = 0;
  for (int64_t r = rows.begin; r < rows.end; ++r)
    for (int64_t x = columns.begin; x < columns.end; ++x) sum += std::pow(double{a.z[r][x]} - b.z[r][x], 2);
  return sum;
}

// In how many parts the first is nearer than the second, those where they are alike left out.
void CountParts(const Pair& pair, const matrix& first, const matrix& second, FilterRanking& ranking) {
  const matrix wanted = WithoutBorder(pair.small, pair.border);
  const matrix a = WithoutBorder(Reduced(pair, first), pair.border);
  const matrix b = WithoutBorder(Reduced(pair, second), pair.border);
  for (int down = 0; down < kPartsASide; ++down)
    for (int along = 0; along < kPartsASide; ++along) {
      const Range rows = StaticPart(wanted.n, down, kPartsASide), columns = StaticPart(wanted.m, along, kPartsASide);
      const double ofA = SquaredError(a, wanted, rows, columns), ofB = SquaredError(b, wanted, rows, columns);
      ranking.parts += ofA != ofB;
      ranking.partsWon += ofA < ofB;
    }
}

}  // namespace

double FilterRanking::Margin() const { return matches[0].decibels - matches[1].decibels; }

bool FilterRanking::IsSure() const {
  constexpr double kTelling = 0.2, kMostParts = 0.75;
  return Margin() >= kTelling && partsWon >= kMostParts * parts;
}

bool FilterRanking::Explains() const {
  constexpr double kNearEnough = 40;
  return matches[0].decibels >= kNearEnough;
}

FilterRanking RankFilters(const matrix& small, const matrix& large) {
  const Pair pair = MakePair(small, large);
  std::vector<Candidate> candidates = Candidates(pair.factor, FirstOrders());
  Compare(pair, candidates);
  std::vector<Candidate> around = Candidates(pair.factor, OrdersAround(candidates[0].match.orders[0]));
  Compare(pair, around);
  for (Candidate& candidate : around) candidates.push_back(std::move(candidate));
  std::ranges::stable_sort(candidates, std::greater(), [](const Candidate& c) { return c.match.decibels; });
  FilterRanking ranking;
  ranking.factor = pair.factor;
  for (const Candidate& candidate : candidates) ranking.matches.push_back(candidate.match);
  CountParts(pair, candidates[0].taps, candidates[1].taps, ranking);
  return ranking;
}

}  // namespace norv
