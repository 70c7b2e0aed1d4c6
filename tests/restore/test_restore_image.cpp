// Whole images: colour representations, fourth planes, masks, bands.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <doctest/doctest.h>
#include <limits>

#include "raster/separable.h"
#include "restore/edge_mask.h"
#include "restore/restore_image.h"
#include "restore/restore_plane.h"
#include "support/captured_output.h"
#include "support/random_plane.h"

using namespace norv;
using namespace norv::test;

namespace {

RestoreParameters Parameters(int32_t representation, int32_t type = 1) {
  RestoreParameters p{};
  p.factor = 2;
  p.kernelCode = -1;
  p.lambdaCross = 0.06f;
  p.lambda = 0.035f;
  p.deltaCross = p.delta = 1;
  p.shapeCross = p.shapeDot = 0.8f;
  p.steps = 3;
  p.iterations = 2;
  p.orientationScale = 0.7f;
  p.emphasis = 0.25f;
  p.representation = representation;
  p.type = type;
  p.edgeThreshold = 40;
  return p;
}

FloatImage Picture(int32_t w, int32_t h, int32_t format) {
  FloatImage image(w, h, kDefaultFormat);
  for (unsigned p = 0; p < 3; ++p) image.plane[p] = RandomPlane(w, h, 20 + p, 20, 230);
  image.ConvertTo(format);
  if (ModelOf(format) == kWithFourth) image.plane[3] = RandomPlane(w, h, 30, 0, 255);
  return image;
}

matrix Enlarged(const matrix& small, int32_t f) {
  matrix large;
  ResampleSeparable(small, large, EnlargementTable(small.m, f), EnlargementTable(small.n, f));
  return large;
}

double Apart(const matrix& a, const matrix& b) {
  double largest = a.mn == b.mn ? 0 : 1e9;
  for (int32_t i = 0; i < std::min(a.mn, b.mn); ++i)
    largest = std::max(largest, std::abs(static_cast<double>(a.x[i]) - static_cast<double>(b.x[i])));
  return largest;
}

matrix Restored(const matrix& small, const RestoreParameters& p) {
  matrix large = Enlarged(small, p.factor);
  restore(large, BitMask(), small, p, nullptr);
  return large;
}

}  // namespace

TEST_CASE("every plane is restored in representations 0 and 4, only the first one in the others") {
  const FloatImage picture = Picture(9, 7, kDefaultFormat);
  constexpr int32_t kFormats[] = {kDefaultFormat, kLuminance, kIntensity, kLuminanceAgain, kDisplayAgain};
  for (const int32_t representation : {0, 1, 2, 3, 4, 9}) {
    const RestoreParameters p = Parameters(representation);
    FloatImage expected = picture, image = picture;
    RestoreImage(image, p);
    expected.ConvertTo(kFormats[representation < 5 ? representation : 0]);
    const bool all = representation == 0 || representation == 4;
    for (int32_t k = 0; k < 3; ++k)
      expected.plane[k] = k == 0 || all ? Restored(expected.plane[k], p) : Enlarged(expected.plane[k], 2);
    expected.RefreshSize();
    expected.ConvertTo(kDefaultFormat);
    CAPTURE(representation);
    CHECK(image.format == kDefaultFormat);
    CHECK(image.width == 18);
    CHECK(image.height == 14);
    for (int32_t k = 0; k < 3; ++k) CHECK(Apart(image.plane[k], expected.plane[k]) < 1e-3);
  }
}

TEST_CASE("the decorrelating representation is an orthogonal transform there and back") {
  FloatImage picture = Picture(9, 7, kDefaultFormat);
  RestoreParameters p = Parameters(5);
  p.iterations = 0;
  FloatImage image = picture;
  RestoreImage(image, p);
  for (int32_t k = 0; k < 3; ++k) CHECK(Apart(image.plane[k], Enlarged(picture.plane[k], 2)) < 1e-3);
  // Grey pictures: everything is in the first component, whose restoration is that of a plane sqrt 3 times as strong.
  picture.plane[1] = picture.plane[2] = picture.plane[0];
  image = picture;
  p = Parameters(5);
  RestoreImage(image, p);
  matrix scaled = picture.plane[0];
  for (int32_t i = 0; i < scaled.mn; ++i) scaled.x[i] *= std::sqrt(3.0f);
  matrix grey = Restored(scaled, p);
  for (int32_t i = 0; i < grey.mn; ++i) grey.x[i] /= std::sqrt(3.0f);
  for (int32_t k = 0; k < 3; ++k) CHECK(Apart(image.plane[k], grey) < 2e-3);
}

TEST_CASE("a fourth plane: set aside and restored, or one of the model's own") {
  for (const int32_t representation : {0, 1, 5, 7}) {
    const FloatImage picture = Picture(8, 6, kWithFourth | 7);
    FloatImage image = picture;
    const RestoreParameters p = Parameters(representation);
    RestoreImage(image, p);
    CHECK(image.format == (kWithFourth | 7));
    CHECK(Apart(image.plane[3], Restored(picture.plane[3], p)) == 0);
    if (representation == 7) CHECK(Apart(image.plane[1], Enlarged(picture.plane[1], 2)) == 0);
  }
  const FloatImage picture = Picture(8, 6, 128);
  for (const int32_t representation : {0, 7}) {
    FloatImage image = picture;
    const RestoreParameters p = Parameters(representation);
    RestoreImage(image, p);
    const matrix expected = representation == 0 ? Restored(picture.plane[3], p) : Enlarged(picture.plane[3], 2);
    CHECK(Apart(image.plane[3], expected) == 0);
  }
}

TEST_CASE("the edge mask stays only when asked for, at the enlarged size, and leaves other types alone") {
  for (const bool keep : {false, true})
    for (const int32_t type : {1, 3}) {
      FloatImage image = Picture(8, 6, kDefaultFormat);
      image.mask.Resize(8, 6);
      RestoreParameters p = Parameters(0, type);
      p.keepMask = keep;
      RestoreImage(image, p);
      CHECK(image.mask.Empty() == !(keep && type == 3));
      if (!image.mask.Empty()) CHECK(image.mask.width == 16);
    }
}

TEST_CASE("restored in bands, an image keeps its mask, word for word") {
  for (const int32_t factor : {1, 2})
    for (const int32_t bands : {1, 3}) {
      FloatImage image = Picture(8, 12, kDefaultFormat);
      image.mask.Resize(8, 12);
      image.mask.words = {5, 0, 0x80000001u};
      RestoreParameters p = Parameters(1, 3);
      p.factor = factor;
      RestoreImageInBands(image, p, bands, 2);
      CHECK(image.width == 8 * factor);
      CHECK(image.mask.words == std::vector<uint32_t>{5, 0, 0x80000001u});
    }
}

TEST_CASE("an unknown kernel code is refused where an update step would need it, and nowhere else") {
  const FloatImage picture = Picture(6, 5, kDefaultFormat);
  for (const int32_t type : {0, 1, 9})
    for (const int32_t iterations : {-1, 0, 2}) {
      RestoreParameters p = Parameters(0, type), known = p;
      p.kernelCode = 6;
      p.iterations = known.iterations = iterations;
      FloatImage image = picture, banded = picture, expected = picture;
      if (type == 1 && iterations > 0) {
        CHECK_THROWS_AS(RestoreImage(image, p), const char*);
        CHECK_THROWS_AS(RestoreImageInBands(banded, p, 2, 1), const char*);
        CHECK(image.count == picture.count);
        continue;
      }
      RestoreImage(image, p);
      RestoreImage(expected, known);
      RestoreImageInBands(banded, p, 2, 1);
      for (int32_t k = 0; k < 3; ++k) CHECK(Apart(image.plane[k], expected.plane[k]) == 0);
      CHECK(banded.count == 4 * picture.count);
    }
}

TEST_CASE("the mask unites the edges of all enlarged planes and grows by half the factor") {
  const FloatImage picture = Picture(8, 6, kDefaultFormat);
  for (const int32_t factor : {1, 2, 5}) {
    RestoreParameters p = Parameters(0, 3);
    p.factor = factor;
    p.edgeThreshold = 90;
    p.keepMask = true;
    FloatImage image = picture;
    RestoreImage(image, p);
    BitMask expected;
    for (int32_t k = 0; k < 3; ++k) MarkEdges(expected, Enlarged(picture.plane[k], factor), 90);
    GrowMask(expected, factor / 2);
    CHECK(image.mask.words == expected.words);
  }
}

TEST_CASE("bands are real images with margins, cut and pasted") {
  const FloatImage picture = Picture(6, 50, kDefaultFormat);
  const RestoreParameters p = Parameters(1);
  FloatImage image = picture;
  CHECK(OutputOf([&] { RestoreImageThreaded(image, p, 3); }) == "\nNumber of threads = 3");
  for (int32_t band = 0; band < 3; ++band) {
    FloatImage alone(6, 17 + 40, kDefaultFormat);
    for (int32_t k = 0; k < 3; ++k)
      for (int32_t r = 0; r < 57; ++r) {
        int32_t source = std::abs(17 * band - 20 + r);
        if (source > 49) source = 98 - source;
        std::copy_n(picture.plane[k].z[source], 6, alone.plane[k].z[r]);
      }
    RestoreImage(alone, p);
    for (int32_t k = 0; k < 3; ++k)
      for (int32_t r = 0; r < 34 && 34 * band + r < 100; ++r)
        CHECK(std::memcmp(alone.plane[k].z[40 + r], image.plane[k].z[34 * band + r], 12 * sizeof(float)) == 0);
  }
  FloatImage few = Picture(5, 10, kDefaultFormat), one = few;
  RestoreImageThreaded(few, p, 4);
  RestoreImageThreaded(one, p, 1);
  for (int32_t k = 0; k < 3; ++k) CHECK(Apart(few.plane[k], one.plane[k]) == 0);
}

TEST_CASE("small and damaged images") {
  for (const int32_t type : {-1, 0, 1, 2, 3, 4, 5, 6, 7}) {
    FloatImage dot = Picture(1, 1, kDefaultFormat);
    const float value = dot.plane[0].x[0];
    RestoreImage(dot, Parameters(0, type));
    CHECK(dot.count == 4);
    CHECK(dot.plane[0].x[3] == doctest::Approx(value).epsilon(1e-4));
    FloatImage damaged = Picture(6, 5, kDefaultFormat);
    damaged.plane[1].x[7] = std::numeric_limits<float>::quiet_NaN();
    damaged.plane[2].x[9] = std::numeric_limits<float>::infinity();
    RestoreParameters endless = Parameters(0, type);
    endless.steps = 1 << 10;
    RestoreImage(damaged, endless);
    CHECK(std::isfinite(damaged.plane[0].x[0]));
  }
  FloatImage empty;
  RestoreImage(empty, Parameters(1));
  RestoreImageThreaded(empty, Parameters(1), 2);
  CHECK(empty.count == 0);
}
