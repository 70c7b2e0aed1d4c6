// Edge rules, rectangles cut by them, and bands of images.
#include "raster/bands.h"
#include "raster/edges.h"
#include "support/plain_restore.h"
#include "support/random_image.h"
#include "support/test.h"

TEST_CASE("rectangles of planes are cut by the edge rule, on short axes too") {
  for (const int32_t w : {1, 2, 3, 9})
    for (const int32_t h : {1, 2, 5}) {
      const matrix plane = RandomPlane(w, h, 1);
      for (const EdgeRule rule : {EdgeRule::mirror, EdgeRule::clamp})
        for (const Rectangle area : {Rectangle{-3, -7, 12, 20}, Rectangle{h - 1, w - 1, 1, 1}, Rectangle{4, 8, 2, 3}}) {
          std::vector<float> target(area.rows * 24, -1.0f);
          CopyRectangle(plane, rule, area, target.data(), 24);
          for (int32_t r = 0; r < area.rows; ++r)
            for (int32_t c = 0; c < 24; ++c) {
              const int32_t y = static_cast<int32_t>(area.row) + r, x = static_cast<int32_t>(area.column) + c;
              const float inside = rule == EdgeRule::mirror ? plane.z[Mirror(y, h)][Mirror(x, w)]
                                                            : plane.z[std::clamp(y, 0, h - 1)][std::clamp(x, 0, w - 1)];
              CHECK(target[r * 24 + c] == (c < area.columns ? inside : -1.0f));
            }
        }
    }
}

TEST_CASE("bands cover the image, or one does when there are too few rows") {
  const int32_t plans[][4] = {{10, 4, 1, 10},  {15, 4, 1, 15},    {16, 4, 4, 4}, {17, 4, 4, 5},
                              {100, 3, 3, 34}, {256, 16, 16, 16}, {0, 4, 1, 0},  {1, 1, 1, 1}};
  for (const auto& [rows, asked, bands, height] : plans) {
    const BandPlan made = PlanBands(rows, asked);
    CHECK((made.bands == bands && made.height == height));
  }
}

TEST_CASE("strips cover the image once, and their windows have their rows and margins") {
  const FloatImage all = RandomFloatImage(3, 11, kDefaultFormat);
  for (const int32_t height : {1, 2, 3, 11, 20})
    for (const int32_t margin : {0, 1, 3}) {
      int32_t next = 0;
      const auto read = [&](FloatImage& image, int32_t at, int32_t rows) {
        for (int32_t p = 0; p < 3; ++p) std::copy_n(all.plane[p].x + 3 * next, 3 * rows, image.plane[p].x + 3 * at);
        next += rows;
      };
      const ImageSource source{{3, 11, kDefaultFormat}, read};
      RowWindow window(source);
      for (int32_t first = 0; first < 11; first += height) {
        const Strip strip = PlanStrip(11, first, height, margin);
        const FloatImage& shown = window.Show(strip);
        CHECK((strip.rows == std::min(height, 11 - first) && strip.windowFirst == std::max(first - margin, 0)));
        CHECK(strip.windowFirst + shown.height == std::min(first + height + margin, 11));
        for (int32_t p = 0; p < 3; ++p)
          for (int32_t r = strip.windowFirst; r < strip.windowFirst + shown.height; ++r)
            CHECK(std::equal(all.plane[p].z[r], all.plane[p].z[r] + 3, strip.WindowOf(shown.plane[p]).Row(r)));
      }
      CHECK(next == 11);
    }
}

TEST_CASE("a band is cut with mirrored rows and pasted without its margins") {
  const FloatImage source = RandomFloatImage(3, 7, kWithFourth + 5);
  FloatImage band, whole(3, 8, kWithFourth + 5), narrow(2, 20, kDefaultFormat);
  CutBand(source, 5, 9, band);
  PasteBand(whole, 5, band, 2);  // five rows, of which three fit
  PasteBand(narrow, 0, band, 1);
  const int32_t rows[] = {5, 6, 5, 4, 3, 2, 1, 0, 1};
  REQUIRE((band.format == source.format && band.height == 9));
  for (int32_t p = 0; p < 4; ++p) {
    for (int32_t r = 0; r < 9; ++r)
      for (int32_t c = 0; c < 3; ++c) CHECK(band.plane[p].z[r][c] == source.plane[p].z[rows[r]][c]);
    const float blank = p == 3 ? 255.0f : 0.0f;
    for (int32_t r = 0; r < 8; ++r) CHECK(whole.plane[p].z[r][1] == (r < 5 ? blank : band.plane[p].z[r - 3][1]));
  }
  CHECK((narrow.plane[2].z[6][1] == band.plane[2].z[7][1] && narrow.plane[2].z[7][0] == 0));
}
