#include "net/layouts.h"

#include "raster/orient.h"

namespace norv {
namespace {

// The counts of inputs of the layouts that pass, as a sentence lists them.
template <typename Passes>
std::string ListOfInputs(const Passes& passes, const std::string& conjunction) {
  std::vector<std::string> counts;
  for (const InputLayout& layout : kLayouts)
    if (passes(layout)) counts.push_back(std::to_string(layout.inputs));
  std::string list = counts.front();
  for (size_t i = 1; i < counts.size(); ++i)
    list += (i + 1 < counts.size() ? ", " : " " + conjunction + " ") + counts[i];
  return list;
}

// Every pixel of the neighbourhood of orientation k, row by row.
std::vector<Tap> Neighbourhood(int32_t radius, int32_t k) {
  const int32_t side = 2 * radius + 1;
  std::vector<Tap> taps;
  for (const int32_t element : OrientationPermutation(side, k))
    taps.push_back({element / side - radius, element % side - radius});
  return taps;
}

// The two diagonals of every cell of 2 x 2 pixels.
LayoutTaps Diagonals(const std::vector<Tap>& pixels, int32_t side) {
  LayoutTaps taps;
  for (int32_t t = 0; t + 1 < side; ++t)
    for (int32_t j = 0; j + 1 < side; ++j) {
      const Tap *a = &pixels[t * side + j], *b = a + side;
      taps.first.insert(taps.first.end(), {a[0], b[0]});
      taps.second.insert(taps.second.end(), {b[1], a[1]});
    }
  return taps;
}

std::vector<ptrdiff_t> Offsets(const std::vector<Tap>& taps, ptrdiff_t stride) {
  std::vector<ptrdiff_t> offsets;
  offsets.reserve(taps.size());
  for (const Tap tap : taps) offsets.push_back(tap.dy * stride + tap.dx);
  return offsets;
}

}  // namespace

const InputLayout* FindLayout(int32_t inputs) {
  for (const InputLayout& layout : kLayouts)
    if (layout.inputs == inputs) return &layout;
  return nullptr;
}

const InputLayout* FindEnlargement(int32_t inputs, int32_t outputs) {
  const InputLayout* layout = FindLayout(inputs);
  return layout && IsOutputCount(outputs) && (outputs == 16 || layout->enlargesTwice) ? layout : nullptr;
}

const std::string& LayoutInputs() {
  static const std::string list = ListOfInputs([](const InputLayout&) { return true; }, "or");
  return list;
}

const std::string& FourfoldLayoutInputs() {
  static const std::string list = ListOfInputs([](const InputLayout& layout) { return !layout.enlargesTwice; }, "and");
  return list;
}

LayoutTaps OrientedTaps(const InputLayout& layout, int32_t k) {
  const int32_t side = 2 * layout.radius + 1;
  std::vector<Tap> pixels = Neighbourhood(layout.radius, k);
  if (layout.form == ValueForm::difference) return Diagonals(pixels, side);
  if (layout.form == ValueForm::centred) pixels.erase(pixels.begin() + side * side / 2);
  return {std::move(pixels), {}};
}

TapOffsets OrientedOffsets(const InputLayout& layout, int32_t k, ptrdiff_t stride) {
  const LayoutTaps taps = OrientedTaps(layout, k);
  return {Offsets(taps.first, stride), Offsets(taps.second, stride)};
}

void GatherInputs(const InputLayout& layout, const TapOffsets& taps, const float* centre, float* inputs) {
  for (int32_t i = 0; i < layout.inputs; ++i) {
    const float P = centre[taps.first[i]];
    switch (layout.form) {
      case ValueForm::centred:
        inputs[i] = (P - *centre) * kInputScale;
        break;
      case ValueForm::plain:
        inputs[i] = P * kInputScale;
        break;
      case ValueForm::difference:
        inputs[i] = P * kInputScale - centre[taps.second[i]] * kInputScale;
        break;
    }
  }
}

}  // namespace norv
