// What the companion shows of numbers, and the card that it draws.
#include <algorithm>
#include <cmath>
#include <doctest/doctest.h>

#include "kit/measure/summary.h"
#include "kit/pictures/picture.h"
#include "kit/pictures/picture_samples.h"
#include "kit/pictures/test_card.h"

using namespace norv;

TEST_CASE("a summary of pieces is that of the whole, with what is not finite apart") {
  const float values[] = {4, -1, NAN, 7, INFINITY, 2};
  Summary summary;
  summary.Add(values, 2);
  summary.Add(values + 2, 4);
  CHECK((summary.Count() == 4 && summary.NotFinite() == 2 && summary.Min() == -1 && summary.Max() == 7));
  CHECK(summary.Mean() == doctest::Approx(3));
  CHECK(summary.Deviation() == doctest::Approx(std::sqrt(8.5)));
}

TEST_CASE("a histogram counts by sixteenths, what is outside in the nearest one") {
  const float values[] = {-64, -48.1f, -48, 191, 192, 999, -999, NAN};
  Histogram histogram(-64, 192);
  histogram.Add(values, 8);
  CHECK((histogram[0] == 3 && histogram[1] == 1 && histogram[15] == 3));
  Histogram point(5, 5);
  point.Add(values, 8);
  CHECK(point[0] == 7);
}

TEST_CASE("the test card is drawn smoothly, symmetrically where it should be, and everywhere the same") {
  Picture card(240, 160, 3);
  const PictureSource rows = DrawTestCard(240, 160);
  for (int32_t first = 0; first < 160; first += 40) rows.read(card, first, 40);
  // The zone plate fills columns 160 to 239 of the upper half.
  const matrix& red = card.plane[0];
  float worst = 0;
  for (int32_t r = 0; r < 80; ++r)
    for (int32_t x = 0; x < 80; ++x) {
      worst = std::max(worst, std::abs(red.z[r][160 + x] - red.z[r][239 - x]));
      worst = std::max(worst, std::abs(red.z[r][160 + x] - red.z[x][160 + r]));
    }
  CHECK(worst < 1e-3f);
  CHECK(red.z[40][200] > 230);
  // Both shades of the lone edge in a row of the upper left panel, and one pixel between them.
  int32_t between = 0;
  for (int32_t x = 48; x < 80; ++x) between += red.z[10][x] > 45 && red.z[10][x] < 220;
  CHECK(red.z[10][49] == 40);
  CHECK(red.z[10][79] == 225);
  CHECK((between == 1 || between == 2));
  int64_t moved = 0;
  uint32_t hash = 2166136261u;
  for (const uint8_t byte : ToSamples(card, 8, moved).bytes) hash = (hash ^ byte) * 16777619u;
  CHECK(moved == 0);
  CHECK(hash == 1457466112u);
}
