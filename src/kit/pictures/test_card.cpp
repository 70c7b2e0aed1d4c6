#include "kit/pictures/test_card.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <vector>

#include "kit/pictures/picture.h"
#include "platform/team.h"
#include "platform/threads/crew.h"
#include "simd/math/math.h"

namespace norv {
namespace {

constexpr double kPi = 3.141592653589793;
constexpr int kSubsamples = 6;  // squared, in a pixel

using Colour = std::array<double, 3>;

Colour Grey(double value) { return {value, value, value}; }

Colour Mix(const Colour& a, const Colour& b, double t) {
  return {a[0] + t * (b[0] - a[0]), a[1] + t * (b[1] - a[1]), a[2] + t * (b[2] - a[2])};
}

// A line of strokes: how far its top is below the panel's, and its height in pixels.
struct TextLine {
  double top, height;
};

// Where a scene is looked at: x and y in pixels from the panel's corner, and the panel.
struct Spot {
  double x, y, width, height;
  const std::vector<TextLine>& text;
};

// Rings that narrow from the centre out: the phase grows with the squared radius so that the period at the nearest side
// is four pixels, the finest that half the size can hold.
Colour ZonePlate(const Spot& p) {
  const double dx = p.x - p.width / 2, dy = p.y - p.height / 2;
  const double reach = (p.width < p.height ? p.width : p.height) / 2;
  return Grey(127.5 + 110 * Cos(kPi / 4 * (dx * dx + dy * dy) / reach));
}

// A fan of wedges around the lower left corner and one lone edge at 5 degrees.
Colour SlantedEdges(const Spot& p) {
  const double up = p.height - p.y;
  if (p.x > 0.6 * p.width) return Grey(p.x - 0.8 * p.width > 0.0875 * (p.y - p.height / 2) ? 225 : 40);
  const double angle = Atan2(up, p.x) * (180 / kPi);
  return static_cast<int>(angle / 5) % 2 ? Colour{230, 225, 215} : Colour{35, 40, 60};
}

double SegmentDistance(double x, double y, const std::array<double, 4>& s) {
  const double dx = s[2] - s[0], dy = s[3] - s[1];
  const double along = ((x - s[0]) * dx + (y - s[1]) * dy) / (dx * dx + dy * dy);
  const double t = along < 0 ? 0 : along > 1 ? 1 : along;
  const double ex = x - s[0] - t * dx, ey = y - s[1] - t * dy;
  return std::sqrt(ex * ex + ey * ey);
}

// The lines that begin in a panel of this height, theirs shrinking from 24 pixels to 7. Each takes its place from the
// one before, so that they are added up once and not for every spot.
std::vector<TextLine> TextLines(double panelHeight) {
  std::vector<TextLine> lines;
  for (double top = 3, height = 24; lines.empty() || top <= panelHeight;) {
    lines.push_back({top, height});
    top += height * 1.35;
    height = height > 8 ? height * 0.84 : 7;
  }
  return lines;
}

// Signs of four strokes each. The strokes of a sign come from a hash of its line and column.
Colour Strokes(const Spot& p) {
  constexpr double kEnds[8][2] = {{0.1, 0.1}, {0.8, 0.1}, {0.1, 0.5},  {0.8, 0.5},
                                  {0.1, 0.9}, {0.8, 0.9}, {0.45, 0.1}, {0.45, 0.9}};
  const Colour paper = {246, 243, 234}, ink = {28, 26, 34};
  const auto below = std::upper_bound(p.text.begin() + 1, p.text.end(), p.y,
                                      [](double y, const TextLine& next) { return y < next.top; });
  const uint32_t line = static_cast<uint32_t>(below - p.text.begin() - 1);
  const auto [top, height] = p.text[line];
  const double column = std::floor((p.x - 4) / height), x = (p.x - 4) / height - column, y = (p.y - top) / height;
  if (column < 0 || y < 0 || y > 1 || (column + 1) * height > p.width - 8) return paper;
  uint32_t hash = (line * 0x9E3779B1u) ^ (static_cast<uint32_t>(column) * 0x85EBCA77u + 0x165667B1u);
  hash = (hash ^ hash >> 15) * 0x2C1B3C6Du;
  hash ^= hash >> 12;
  if (hash % 7 == 0) return paper;  // between words
  for (int stroke = 0; stroke < 4; ++stroke) {
    hash = hash * 0x297A2D39u + 0x68E31DA4u;
    const uint32_t from = hash >> 29, to = hash >> 26 & 7;
    if (from == to) continue;
    if (SegmentDistance(x, y, {kEnds[from][0], kEnds[from][1], kEnds[to][0], kEnds[to][1]}) < 0.065) return ink;
  }
  return paper;
}

// Coloured discs on a grid, their radii falling from column to column; every third one is a ring.
Colour Discs(const Spot& p) {
  constexpr Colour kColours[] = {{214, 62, 52},  {48, 146, 82}, {52, 92, 196},
                                 {236, 190, 60}, {30, 30, 30},  {245, 245, 245}};
  const double cell = p.height / 5;
  const double column = std::floor(p.x / cell), row = std::floor(p.y / cell);
  const double dx = p.x - (column + 0.5) * cell, dy = p.y - (row + 0.5) * cell, distance = std::sqrt(dx * dx + dy * dy);
  const int kind = static_cast<int>(column + 2 * row);
  const double radius = 0.45 * cell * (1 - 0.11 * static_cast<int>(column + row) / 1.4);
  const bool inside = distance < radius && !(kind % 3 == 2 && distance < 0.6 * radius);
  return inside ? kColours[kind % 6] : Grey(150);
}

// Colour that changes slowly: a lit ball before a ramp.
Colour Shading(const Spot& p) {
  const double u = p.x / p.width, v = p.y / p.height;
  const Colour ground = Mix({20 + 200 * u, 60 + 120 * v, 190 - 140 * u}, {250, 240, 220}, 0.5 * v);
  const double radius = 0.36 * p.height, dx = (p.x - p.width / 2) / radius, dy = (p.y - p.height / 2) / radius;
  const double flat = dx * dx + dy * dy;
  if (flat >= 1) return ground;
  const double light = (-0.48 * dx - 0.6 * dy + 0.64 * std::sqrt(1 - flat));
  const double shine = light > 0 ? light : 0, square = shine * shine, glint = square * square * square * square;
  return Mix(Mix({52, 22, 18}, {226, 120, 84}, shine), {255, 255, 250}, glint * glint);
}

// Bars of 6, 4, 3 and 2 pixels, upright, lying and crossed.
Colour Bars(const Spot& p) {
  constexpr int kWidths[] = {6, 4, 3, 2};
  const int width = kWidths[static_cast<int>(4 * p.x / p.width)], kind = static_cast<int>(3 * p.y / p.height);
  const bool across = static_cast<int>(p.x) / width % 2, along = static_cast<int>(p.y) / width % 2;
  const bool dark = kind == 0 ? across : kind == 1 ? along : across != along;
  return Grey(dark ? 40 : 215);
}

using Panel = Colour (*)(const Spot&);
constexpr int kColumns = 3, kRows = 2;
constexpr Panel kPanels[kRows][kColumns] = {{SlantedEdges, Strokes, ZonePlate}, {Discs, Shading, Bars}};

// A panel's first pixel on an axis; whole pixels, so that the finest patterns stay what they are.
int32_t PanelStart(int panel, int panels, int32_t length) {
  return static_cast<int32_t>(int64_t{length} * panel / panels);
}

// The pixel (x, y) of a panel.
Colour PixelOf(Panel panel, int32_t x, int32_t y, double width, double height, const std::vector<TextLine>& text) {
  Colour sum = {};
  for (int i = 0; i < kSubsamples; ++i)
    for (int j = 0; j < kSubsamples; ++j) {
      const Colour colour = panel({x + (j + 0.5) / kSubsamples, y + (i + 0.5) / kSubsamples, width, height, text});
      for (int k = 0; k < 3; ++k) sum[k] += colour[k];
    }
  for (double& value : sum) value /= kSubsamples * kSubsamples;
  return sum;
}

class TestCard {
 public:
  TestCard(int32_t width, int32_t height) : width_(width), height_(height) {
    for (int row = 0; row < kRows; ++row) text_[row] = TextLines(Bottom(row) - Top(row));
  }

  // Row r of the card into row `at` of a picture.
  void DrawRow(int32_t r, Picture& rows, int32_t at) const {
    int row = 0;
    while (row + 1 < kRows && r >= Bottom(row)) ++row;
    const int32_t top = Top(row), panelHeight = Bottom(row) - top;
    for (int column = 0; column < kColumns; ++column) {
      const int32_t left = PanelStart(column, kColumns, width_), right = PanelStart(column + 1, kColumns, width_);
      for (int32_t x = left; x < right; ++x) {
        const Colour colour = PixelOf(kPanels[row][column], x - left, r - top, right - left, panelHeight, text_[row]);
        for (int k = 0; k < 3; ++k) rows.plane[k].z[at][x] = static_cast<float>(colour[k]);
      }
    }
  }

 private:
  int32_t Top(int row) const { return PanelStart(row, kRows, height_); }
  int32_t Bottom(int row) const { return PanelStart(row + 1, kRows, height_); }

  int32_t width_, height_;
  std::vector<TextLine> text_[kRows];
};

}  // namespace

PictureSource DrawTestCard(int32_t width, int32_t height) {
  const auto card = std::make_shared<const TestCard>(width, height);
  const auto next = std::make_shared<int32_t>(0);
  return {{width, height, 3}, [card, next](Picture& rows, int32_t at, int32_t count) {
            ParallelFor(UsualThreads(), count, [&](int64_t i) {
              const int32_t r = static_cast<int32_t>(i);
              card->DrawRow(*next + r, rows, at + r);
            });
            *next += count;
          }};
}

}  // namespace norv
