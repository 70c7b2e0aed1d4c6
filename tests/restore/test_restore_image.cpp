// Whole images: colour representations, fourth planes, masks, bands.
#include "raster/bands.h"
#include "restore/edge_mask.h"
#include "restore/restore_image.h"
#include "restore/restore_plane.h"
#include "support/random_image.h"
#include "support/restoration.h"
#include "support/test.h"

namespace {

FloatImage Picture(int32_t w, int32_t h, int32_t format = kDefaultFormat) {
  return RandomColours(w, h, format, 20, 230);
}

FloatImage Restored(FloatImage image, const RestoreParameters& p) {
  RestoreImage(image, p);
  return image;
}

matrix Restored(const matrix& small, const RestoreParameters& p) {
  matrix large = Enlarged(small, p.factor);
  restore(large, BitMask(), small, p, nullptr);
  return large;
}

double ImagesApart(const FloatImage& a, const FloatImage& b) {
  double largest = a.format == b.format && a.count == b.count ? 0 : 1e9;
  for (size_t k = 0; k < 4; ++k) largest = std::max(largest, Apart(a.plane[k], b.plane[k]));
  return largest;
}

}  // namespace

TEST_CASE("every plane is restored in representations 0 and 4, only the first one in the others") {
  const FloatImage picture = Picture(9, 7);
  constexpr int32_t kFormats[] = {kDefaultFormat, kLuminance, kIntensity, kLuminanceAgain, kDisplayAgain};
  for (const int32_t representation : {0, 1, 2, 3, 4, 9}) {
    const RestoreParameters p = TestParameters(1, 2, representation);
    FloatImage expected = picture;
    expected.ConvertTo(kFormats[representation < 5 ? representation : 0]);
    const bool all = representation == 0 || representation == 4;
    for (int32_t k = 0; k < 3; ++k)
      expected.plane[k] = k == 0 || all ? Restored(expected.plane[k], p) : Enlarged(expected.plane[k], 2);
    expected.RefreshSize();
    expected.ConvertTo(kDefaultFormat);
    CAPTURE(representation);
    CHECK(ImagesApart(Restored(picture, p), expected) < 1e-3);
  }
}

TEST_CASE("the decorrelating representation is an orthogonal transform there and back") {
  FloatImage picture = Picture(9, 7);
  RestoreParameters p = TestParameters(1, 2, 5);
  p.iterations = 0;
  const FloatImage enlarged = Restored(picture, p);
  for (int32_t k = 0; k < 3; ++k) CHECK(Apart(enlarged.plane[k], Enlarged(picture.plane[k], 2)) < 1e-3);
  // Grey pictures: everything is in the first component, whose restoration is that of a plane sqrt 3 times as strong.
  p.iterations = 2;
  picture.plane[1] = picture.plane[2] = picture.plane[0];
  matrix scaled = picture.plane[0];
  for (int32_t i = 0; i < scaled.mn; ++i) scaled.x[i] *= std::sqrt(3.0f);
  matrix grey = Restored(scaled, p);
  for (int32_t i = 0; i < grey.mn; ++i) grey.x[i] /= std::sqrt(3.0f);
  const FloatImage image = Restored(picture, p);
  for (int32_t k = 0; k < 3; ++k) CHECK(Apart(image.plane[k], grey) < 2e-3);
}

TEST_CASE("a fourth plane: set aside and restored, or one of the model's own") {
  for (const int32_t format : {kWithFourth | 7, 128})
    for (const int32_t representation : {0, 1, 5, 7}) {
      if (format == 128 && representation % 7 != 0) continue;
      const FloatImage picture = Picture(8, 6, format);
      const RestoreParameters p = TestParameters(1, 2, representation);
      const FloatImage image = Restored(picture, p);
      CHECK(image.format == format);
      const bool restored = format != 128 || representation == 0;
      CHECK(Apart(image.plane[3], restored ? Restored(picture.plane[3], p) : Enlarged(picture.plane[3], 2)) == 0);
      if (representation == 7) CHECK(Apart(image.plane[1], Enlarged(picture.plane[1], 2)) == 0);
    }
}

TEST_CASE("the edge mask: all planes' edges, grown by half the factor, and kept only when asked for") {
  for (const int32_t factor : {1, 2, 5})
    for (const int32_t type : {1, 3})
      for (const bool keep : {false, true}) {
        FloatImage image = Picture(8, 6);
        BitMask expected;
        for (int32_t k = 0; k < 3 && keep && type == 3; ++k) MarkEdges(expected, Enlarged(image.plane[k], factor), 60);
        GrowMask(expected, factor / 2);
        image.mask.Resize(8, 6);
        RestoreParameters p = TestParameters(type, factor);
        p.keepMask = keep;
        CHECK(Restored(image, p).mask.words == expected.words);
        // In bands the image keeps the mask that it has, word for word.
        for (const int32_t bands : {1, 2}) {
          FloatImage banded = image;
          banded.mask.words = {5, 0x80000001u};
          RestoreImageInBands(banded, p, bands, 2);
          CHECK(banded.mask.words == std::vector<uint32_t>{5, 0x80000001u});
        }
      }
}

TEST_CASE("an unknown kernel code is refused where an update step would need it, and nowhere else") {
  const FloatImage picture = Picture(6, 5);
  for (const int32_t type : {0, 1, 9})
    for (const int32_t iterations : {-1, 0, 2}) {
      RestoreParameters p = TestParameters(type), known = p;
      p.kernelCode = 6;
      p.iterations = known.iterations = iterations;
      FloatImage image = picture;
      if (type == 1 && iterations > 0) {
        CHECK_THROWS_AS(RestoreImage(image, p), const char*);
        CHECK_THROWS_AS(RestoreImageInBands(image, p, 2, 1), const char*);
        CHECK(ImagesApart(image, picture) == 0);
        continue;
      }
      CHECK(ImagesApart(Restored(picture, p), Restored(picture, known)) == 0);
      RestoreImageInBands(image, p, 2, 1);
      CHECK(image.count == 4 * picture.count);
    }
}

TEST_CASE("bands are real images with margins, cut and pasted") {
  const FloatImage picture = Picture(6, 50);
  const RestoreParameters p = TestParameters(1, 2, 1);
  FloatImage image = picture, expected(12, 100, kDefaultFormat);
  CHECK(OutputOf([&] { RestoreImageThreaded(image, p, 3); }) == "\nNumber of threads = 3");
  for (int32_t band = 0; band < 3; ++band) {
    FloatImage alone;
    CutBand(picture, 17 * band - 20, 57, alone);
    PasteBand(expected, 34 * band, Restored(alone, p), 40);
  }
  CHECK(ImagesApart(image, expected) == 0);
  FloatImage few = Picture(5, 10), one = few;
  RestoreImageInBands(few, p, 4, 4);
  RestoreImageInBands(one, p, 1, 1);
  CHECK(ImagesApart(few, one) == 0);
}

TEST_CASE("an image is the same on every number of threads: colours, their statistics, masks, a fourth plane") {
  const FloatImage picture = Picture(400, 70, kWithFourth | 7);
  for (const int32_t type : {3, 7})
    for (const int32_t representation : {0, 1, 5}) {
      RestoreParameters p = TestParameters(type, 3, representation);
      p.keepMask = true, p.iterations = 1;
      const FloatImage alone = Restored(picture, p);
      for (const int32_t threads : {2, 16}) {
        StandingTeam team(threads);
        FloatImage image = picture;
        RestoreImage(image, p, nullptr, team);
        CAPTURE(threads);
        CHECK(ImagesApart(image, alone) == 0);
        CHECK(image.mask.words == alone.mask.words);
      }
    }
  // More threads than bands: teams work on each.
  FloatImage two = picture, six = picture;
  RestoreImageInBands(two, TestParameters(1, 2, 1), 2, 2);
  RestoreImageInBands(six, TestParameters(1, 2, 1), 2, 6);
  CHECK(ImagesApart(two, six) == 0);
}

TEST_CASE("small and damaged images") {
  for (int32_t type = -1; type <= 7; ++type) {
    const FloatImage dot = Restored(Picture(1, 1), TestParameters(type));
    CHECK(dot.count == 4);
    CHECK(dot.plane[0].x[3] == doctest::Approx(Picture(1, 1).plane[0].x[0]).epsilon(1e-4));
    FloatImage damaged = Picture(6, 5);
    damaged.plane[1].x[7] = std::numeric_limits<float>::quiet_NaN();
    damaged.plane[2].x[9] = std::numeric_limits<float>::infinity();
    CHECK(std::isfinite(Restored(damaged, TestParameters(type)).plane[0].x[0]));
  }
  FloatImage empty;
  RestoreImageInBands(empty, TestParameters(1), 2, 2);
  CHECK(Restored(empty, TestParameters(1)).count == 0);
}
