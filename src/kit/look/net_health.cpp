#include "kit/look/net_health.h"

#include <algorithm>
#include <cmath>

#include "kit/pictures/luminance.h"
#include "kit/pictures/test_card.h"
#include "net/forward.h"
#include "net/layouts.h"
#include "platform/assert.h"
#include "raster/bands.h"

namespace norv {
namespace {

constexpr double kFlat = 0.05, kMostly = 0.999;

// How steep an activation can be within what units reach.
double SteepestSlope(const NetUnit& unit) {
  double steepest = 0;
  for (int step = -128; step <= 128; ++step) steepest = std::max(steepest, std::abs(unit.df(step / 16.0)));
  return steepest;
}

// What one unit was seen to do.
struct Behaviour {
  double steepest = 0;
  float least = INFINITY, greatest = -INFINITY;
  size_t flat = 0;
  bool finite = true;

  void See(const NetUnit& unit) {
    finite &= std::isfinite(unit.a);
    least = std::min(least, unit.a);
    greatest = std::max(greatest, unit.a);
    flat += !(std::abs(unit.df(static_cast<double>(unit.z))) >= kFlat * steepest);
  }
  // Rounding moves what does not depend on the picture.
  bool IsDead() const { return greatest - least <= 1e-6f * std::max(1.0f, std::abs(greatest)); }
  bool IsSaturated(size_t seen) const { return static_cast<double>(flat) >= kMostly * static_cast<double>(seen); }
};

bool HasFiniteWeights(const NetUnit& unit) {
  return std::isfinite(unit.b) && std::all_of(unit.W.x, unit.W.x + unit.W.mn, [](float w) { return std::isfinite(w); });
}

class Watch {
 public:
  explicit Watch(NeuralNet& net) : net_(net) {
    for (const NetLayer& layer : net.layers) {
      behaviours_.emplace_back(layer.units.size());
      for (size_t u = 0; u < layer.units.size(); ++u) behaviours_.back()[u].steepest = SteepestSlope(layer.units[u]);
    }
  }
  void Show(const matrix& input) {
    ForwardPass(net_, input, 1);
    ++seen_;
    for (size_t k = 0; k < behaviours_.size(); ++k)
      for (size_t u = 0; u < behaviours_[k].size(); ++u) behaviours_[k][u].See(net_.layers[k].units[u]);
  }
  NetHealth Finish() const {
    NetHealth health;
    health.pixels = seen_;
    for (size_t k = 0; k < behaviours_.size(); ++k) {
      LayerHealth& layer = health.layers.emplace_back();
      for (size_t u = 0; u < behaviours_[k].size(); ++u) Judge(k, u, layer);
    }
    return health;
  }

 private:
  void Judge(size_t k, size_t u, LayerHealth& layer) const {
    const Behaviour& behaviour = behaviours_[k][u];
    const auto unit = static_cast<int32_t>(u + 1);
    if (!behaviour.finite || !HasFiniteWeights(net_.layers[k].units[u]))
      layer.notFinite.push_back(unit);
    else if (seen_ > 0 && behaviour.IsDead())
      layer.dead.push_back(unit);
    else if (seen_ > 0 && behaviour.IsSaturated(seen_))
      layer.saturated.push_back(unit);
  }

  NeuralNet& net_;
  std::vector<std::vector<Behaviour>> behaviours_;  // layers, units
  size_t seen_ = 0;
};

// How many pixels are looked at: some thousands, fewer by networks so large that it would take long.
size_t PixelsFor(const NeuralNet& net) {
  constexpr size_t kMost = 4000, kLeast = 16, kMostProducts = 400'000'000;
  size_t weights = 1;
  for (const NetLayer& layer : net.layers)
    for (const NetUnit& unit : layer.units) weights += static_cast<size_t>(std::max(unit.Nin, 0));
  return std::clamp(kMostProducts / weights, kLeast, kMost);
}

// Pixels of all planes one behind the other, evenly spread.
void ShowPlanes(const LookedAt& lookedAt, const InputLayout& layout, size_t pixels, Watch& watch) {
  const int32_t radius = layout.radius, side = 2 * radius + 1;
  const TapOffsets taps = OrientedOffsets(layout, 0, side);
  matrix window(side, side), input(layout.inputs, 1);
  size_t all = 0;
  for (const matrix& plane : lookedAt.planes) all += static_cast<size_t>(plane.mn);
  const double step = std::max(1.0, static_cast<double>(all) / static_cast<double>(pixels));
  double next = 0;
  for (const matrix& plane : lookedAt.planes) {
    const PlaneWindow whole = WholeStrip(plane.n).WindowOf(plane);
    for (; next < plane.mn; next += step) {
      const auto at = static_cast<int64_t>(next);
      CopyRectangle(whole, layout.edges, {at / plane.m - radius, at % plane.m - radius, side, side}, window.x, side);
      GatherInputs(layout, taps, &window.x[radius * side + radius], input.x);
      watch.Show(input);
    }
    next -= plane.mn;
  }
}

// The low bits of a linear congruence are poor; these are its upper ones.
void ShowNumbers(int32_t inputs, size_t times, Watch& watch) {
  matrix input(inputs, 1);
  uint32_t state = 1;
  for (size_t i = 0; i < times; ++i) {
    for (int32_t k = 0; k < inputs; ++k) {
      state = state * 1664525u + 1013904223u;
      input.x[k] = static_cast<float>(state >> 8) / 16777216.0f - 0.5f;
    }
    watch.Show(input);
  }
}

}  // namespace

bool NetHealth::IsGood() const {
  return std::ranges::all_of(layers, [](const LayerHealth& layer) {
    return layer.dead.empty() && layer.saturated.empty() && layer.notFinite.empty();
  });
}

LookedAt TestCardToLookAt() {
  LookedAt card{"our test card of 240 x 160 pixels", {}};
  card.planes.push_back(LuminanceOf(DrawTestCard(240, 160)));
  return card;
}

NetHealth HealthOf(NeuralNet& net, const LookedAt& lookedAt) {
  NORV_ASSERT(!WhyNotEvaluable(net));
  Watch watch(net);
  const InputLayout* layout = FindLayout(net.N0);
  if (layout)
    ShowPlanes(lookedAt, *layout, PixelsFor(net), watch);
  else
    ShowNumbers(net.N0, PixelsFor(net), watch);
  NetHealth health = watch.Finish();
  health.lookedAt = layout
                        ? std::to_string(health.pixels) + " pixels of " + lookedAt.words
                        : std::to_string(health.pixels) + " made-up inputs of -0.5 to 0.5, as there is no layout of " +
                              std::to_string(net.N0) + " inputs";
  return health;
}

}  // namespace norv
