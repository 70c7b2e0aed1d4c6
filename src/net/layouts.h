// The table of input layouts: which pixels around a source pixel a network sees, in which order and in which form.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string>
#include <vector>

#include "raster/edges.h"

namespace norv {

inline constexpr float kInputScale = 0.003921569f;  // 1 / 255
inline constexpr float kOutputScale = 255.0f;

// What input i is made of: P and Q are the pixels under its taps, Pc is the centre pixel, s is kInputScale.
enum class ValueForm {
  centred,     // (P - Pc) s
  plain,       // P s
  difference,  // P s - Q s
};

struct InputLayout {
  int32_t inputs;
  bool enlargesTwice;  // a network of this layout may have 4 outputs; 16 are allowed for every layout
  int32_t radius;      // the neighbourhood is 2 radius + 1 pixels on a side
  EdgeRule edges;      // the smallest layout mirrors, the larger ones clamp: on purpose, trained networks rely on it
  ValueForm form;
};

inline constexpr InputLayout kLayouts[] = {
    {8, true, 1, EdgeRule::mirror, ValueForm::centred},     {24, true, 2, EdgeRule::clamp, ValueForm::centred},
    {48, true, 3, EdgeRule::clamp, ValueForm::centred},     {49, false, 3, EdgeRule::clamp, ValueForm::plain},
    {72, false, 3, EdgeRule::clamp, ValueForm::difference},
};

// The margin, in source pixels, that is enough for every layout: of bands and strips, and of the pictures that training
// pairs are made of.
inline constexpr int32_t kLargestRadius =
    std::max_element(std::begin(kLayouts), std::end(kLayouts), [](const InputLayout& a, const InputLayout& b) {
      return a.radius < b.radius;
    })->radius;

// Bands and pairs are part of the contract with the graphical program: a larger layout would need margins of its own.
static_assert(kLargestRadius == 3);

// The counts of outputs that there are: a block of 2 x 2 or of 4 x 4 pixels.
constexpr bool IsOutputCount(int32_t outputs) { return outputs == 4 || outputs == 16; }

// The layout with that many inputs; null for another count.
const InputLayout* FindLayout(int32_t inputs);

// The layout by which a network with these inputs and outputs enlarges images; null when there is none.
const InputLayout* FindEnlargement(int32_t inputs, int32_t outputs);

// The counts of inputs for messages and help texts, "8, 24, 48, 49 or 72"; and of those layouts among them that only
// enlarge four times, "49 and 72".
const std::string& LayoutInputs();
const std::string& FourfoldLayoutInputs();

// Where a pixel lies from the centre pixel: rows down, columns to the right.
struct Tap {
  int32_t dy, dx;
};

// The taps of every input in the plane as it stands when the network is to see orientation k (0 .. 7) of it: the
// neighbourhood is turned by OrientMatrix itself, so planes need not be.
struct LayoutTaps {
  std::vector<Tap> first;   // P, one an input
  std::vector<Tap> second;  // Q, one an input; empty unless the form is `difference`
};
LayoutTaps OrientedTaps(const InputLayout& layout, int32_t k);

// The same as distances from the centre pixel in memory whose rows are `stride` floats apart.
struct TapOffsets {
  std::vector<ptrdiff_t> first, second;
};
TapOffsets OrientedOffsets(const InputLayout& layout, int32_t k, ptrdiff_t stride);

// Writes the layout's inputs of the pixel at centre, one after another.
void GatherInputs(const InputLayout& layout, const TapOffsets& taps, const float* centre, float* inputs);

}  // namespace norv
