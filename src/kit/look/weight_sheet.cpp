#include "kit/look/weight_sheet.h"

#include <algorithm>
#include <cmath>

#include "kit/look/facts.h"
#include "net/layouts.h"

namespace norv {
namespace {

constexpr int32_t kCell = 10, kGap = 16, kLine = 16, kMargin = 24, kHead = 84, kWidth = 920;  // pixels of the drawing
constexpr int32_t kMostCells = 200000;

// Of a unit, row by row.
struct Cells {
  int32_t across = 1, down = 1;
  std::vector<double> value;
};

// The weighted sum's derivatives by the pixels, in units of kInputScale.
Cells PixelWeights(const InputLayout& layout, const LayoutTaps& taps, const matrix& weights) {
  const int32_t radius = layout.radius, side = 2 * radius + 1;
  Cells cells{side, side, std::vector<double>(static_cast<size_t>(side) * side)};
  const auto at = [&](const Tap& tap) -> double& {
    return cells.value[static_cast<size_t>(tap.dy + radius) * side + static_cast<size_t>(tap.dx + radius)];
  };
  for (int32_t i = 0; i < layout.inputs; ++i) {
    const double weight = weights.x[i];
    at(taps.first[i]) += weight;
    if (layout.form == ValueForm::centred) at({0, 0}) -= weight;
    if (layout.form == ValueForm::difference) at(taps.second[i]) -= weight;
  }
  return cells;
}

Cells RowsOfWeights(const matrix& weights) {
  Cells cells;
  cells.across = std::max(1, static_cast<int32_t>(std::ceil(std::sqrt(static_cast<double>(weights.mn)))));
  cells.down = (weights.mn + cells.across - 1) / cells.across;
  cells.value.assign(weights.x, weights.x + weights.mn);
  return cells;
}

std::string ColourOf(double value, double most) {
  if (!std::isfinite(value)) return "#000";
  const double part = most > 0 ? std::clamp(value / most, -1.0, 1.0) : 0, faint = 1 - std::abs(part);
  const auto mix = [&](int full) { return static_cast<int>(std::lround(full + (255 - full) * faint)); };
  return part < 0 ? Printed("#%02x%02x%02x", mix(33), mix(102), mix(172))
                  : Printed("#%02x%02x%02x", mix(178), mix(24), mix(43));
}

double LargestOf(const Cells& cells) {
  double most = 0;
  for (const double value : cells.value)
    if (std::isfinite(value)) most = std::max(most, std::abs(value));
  return most;
}

const char* StateOf(const LayerHealth& health, int32_t unit) {
  const auto among = [&](const std::vector<int32_t>& units) { return std::ranges::binary_search(units, unit); };
  return among(health.notFinite)   ? "not finite"
         : among(health.dead)      ? "dead"
         : among(health.saturated) ? "saturated"
                                   : "";
}

std::string Tile(const Cells& cells, const NetUnit& unit, int32_t number, const char* state, int32_t x, int32_t y) {
  const double most = LargestOf(cells);
  std::string text = Printed("<g transform='translate(%d %d)'>\n", x, y);
  for (size_t i = 0; i < cells.value.size(); ++i) {
    const auto column = static_cast<int32_t>(i) % cells.across, row = static_cast<int32_t>(i) / cells.across;
    text += Printed("<rect x='%d' y='%d' width='%d' height='%d' fill='%s'/>\n", column * kCell, row * kCell, kCell,
                    kCell, ColourOf(cells.value[i], most).c_str());
  }
  const bool marked = *state != '\0';
  text += Printed("<rect width='%d' height='%d' fill='none' stroke='%s' stroke-width='%d'/>\n", cells.across * kCell,
                  cells.down * kCell, marked ? "#d08000" : "#888", marked ? 3 : 1);
  text += Printed("<text y='%d'>%d%s%s</text>\n", cells.down * kCell + 13, number, marked ? " " : "", state);
  text += Printed("<text y='%d' fill='#555'>&#177;%.3g b %.2g</text>\n</g>\n", cells.down * kCell + 26, most,
                  static_cast<double>(unit.b));
  return text;
}

std::string InXml(const std::string& text) {
  std::string safe;
  for (const char c : text) safe += c == '&' ? "&amp;" : c == '<' ? "&lt;" : c == '>' ? "&gt;" : std::string(1, c);
  return safe;
}

std::string Heading(const NeuralNet& net, const NetHealth& health, size_t drawn) {
  const bool hasLayout = FindLayout(net.N0) != nullptr;
  std::string text = Printed(
      "<text x='%d' y='28' font-size='17' font-weight='bold'>What the %d units of the first layer look for</text>\n",
      kMargin, net.layers[0].Ni);
  text += Printed(
      "<text x='%d' y='48'>%s; blue: its sum falls with it, red: it rises, white: no matter. Below each: "
      "its number, the largest, the bias.</text>\n",
      kMargin, hasLayout ? "a square a pixel of the neighbourhood" : "a square an input, in rows");
  text +=
      Printed("<text x='%d' y='66'>Looked at for dead and saturated units: ", kMargin) + InXml(health.lookedAt) + ".";
  if (drawn < net.layers[0].units.size()) text += Printed(" Drawn: the first %zu.", drawn);
  return text + "</text>\n";
}

}  // namespace

std::string DrawWeightSheet(const NeuralNet& net, const NetHealth& health) {
  const InputLayout* layout = FindLayout(net.N0);
  const LayoutTaps taps = layout ? OrientedTaps(*layout, 0) : LayoutTaps();
  const std::vector<NetUnit>& units = net.layers[0].units;
  const auto cellsOf = [&](const NetUnit& unit) {
    return layout ? PixelWeights(*layout, taps, unit.W) : RowsOfWeights(unit.W);
  };
  const Cells first = cellsOf(units[0]);
  const auto cellsATile = static_cast<size_t>(first.across) * static_cast<size_t>(first.down);
  const size_t drawn = std::min(units.size(), std::max<size_t>(1, kMostCells / cellsATile));
  const int32_t wide = std::max(first.across * kCell, 88) + kGap, high = first.down * kCell + 2 * kLine + kGap;
  const int32_t columns = std::max(1, (kWidth - 2 * kMargin) / wide);
  const auto rows = (static_cast<int32_t>(drawn) + columns - 1) / columns;
  const int32_t width = std::max(kWidth, wide + 2 * kMargin), height = kHead + rows * high + kMargin;
  std::string svg = Printed(
      "<?xml version='1.0' encoding='UTF-8'?>\n<svg xmlns='http://www.w3.org/2000/svg' width='%d' height='%d' "
      "font-family='sans-serif' font-size='11'>\n<rect width='%d' height='%d' fill='white'/>\n",
      width, height, width, height);
  svg += Heading(net, health, drawn);
  for (size_t u = 0; u < drawn; ++u) {
    const auto number = static_cast<int32_t>(u);
    svg += Tile(cellsOf(units[u]), units[u], number + 1, StateOf(health.layers[0], number + 1),
                kMargin + number % columns * wide, kHead + number / columns * high);
  }
  return svg + "</svg>\n";
}

}  // namespace norv
