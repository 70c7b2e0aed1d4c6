// Pictures that are worked on in strips: the same bits whatever the threads, and those of the whole picture.
#include <algorithm>
#include <doctest/doctest.h>

#include "kit/pictures/conversions.h"
#include "kit/pictures/picture.h"
#include "kit/pictures/strips.h"
#include "kit/scale/enlarge_picture.h"
#include "kit/scale/premultiplied.h"
#include "kit/scale/resize.h"
#include "net/enlarge.h"
#include "raster/filters.h"
#include "simd/levels.h"
#include "support/kit.h"
#include "support/nets.h"

using namespace norv;

namespace {

constexpr int32_t kThreads[] = {1, 2, 3, 16};

Picture Sample(int32_t width, int32_t height, int32_t channels) {
  Picture picture(width, height, channels, 16);
  for (int32_t k = 0; k < channels; ++k) picture.plane[k] = test::RandomPlane(width, height, 7 + k);
  return picture;
}

void CheckSame(const Picture& a, const Picture& b) {
  REQUIRE((a.Width() == b.Width() && a.Height() == b.Height() && a.channels == b.channels && a.bits == b.bits));
  for (int32_t k = 0; k < a.channels; ++k) CHECK(std::equal(a.plane[k].x, a.plane[k].x + a.plane[k].mn, b.plane[k].x));
}

// The whole image at once, on this thread.
Picture Whole(Picture picture, const NeuralNet& net, const NetEnlargement& how) {
  const bool grey = picture.IsGrey();
  const int32_t bits = picture.bits;
  Premultiply(picture);
  FloatImage image = ToFloatImage(std::move(picture));
  NetEnlargeImage(image, net, how.shortcut || grey, how.average, 1);
  Picture large = ToPicture(std::move(image));
  if (grey) large = GreyPicture(std::move(large.plane[0]), std::move(large.plane[3]));
  large.bits = bits;
  Unpremultiply(large);
  return large;
}

}  // namespace

TEST_CASE("a network's strips are the whole picture for every number of threads, one pass or two") {
  const NeuralNet twice = test::RandomRecord(24, {3, 4}, test::kExactKinds),
                  fourTimes = test::RandomRecord(48, {2, 16}, test::kExactKinds);
  struct Size {
    int32_t width, height;
  };
  for (const Size size : {Size{1, 1}, {5, 1}, {3, 140}, {40, 130}})
    for (const int32_t channels : {1, 2, 3, 4})
      for (const bool shortcut : {false, true}) {
        INFO(size.width, " x ", size.height, ", ", channels, " channels, shortcut ", shortcut);
        const Picture picture = Sample(size.width, size.height, channels);
        NetEnlargement how{.average = channels == 3 && size.height > 1, .shortcut = shortcut};
        const Picture whole = Whole(picture, twice, how), again = Whole(whole, fourTimes, how);
        for (const int32_t threads : kThreads) {
          how.threads = threads;
          const PictureSource rows = EnlargedByNet(HeldPicture(picture), twice, how);
          CheckSame(AllRows(EnlargedByNet(rows, fourTimes, how)), again);
          CheckSame(EnlargeByNet(picture, twice, how), whole);
        }
      }
}

TEST_CASE("strips take their rows in any portions, pass over what they do not need, and read a source to its end") {
  const Picture picture = Sample(30, 1000, 3);
  for (const int32_t threads : kThreads) {
    int32_t read = 0;
    PictureSource counted = HeldPicture(picture);
    counted.read = [&read, inner = counted.read](Picture& rows, int32_t at, int32_t count) {
      inner(rows, at, count);
      read += count;
    };
    // Every third row, the last ones not at all.
    const auto needs = [](RowRange made) { return RowRange{3 * made.first, 3 * made.rows - 2}; };
    const auto make = [](const Picture& held, RowRange which, RowRange made) {
      Picture rows(held.Width(), made.rows, held.channels, held.bits);
      for (int32_t k = 0; k < held.channels; ++k)
        for (int32_t r = 0; r < made.rows; ++r)
          std::copy_n(held.plane[k].z[3 * (made.first + r) - which.first], held.Width(), rows.plane[k].z[r]);
      return rows;
    };
    const PictureSource third = InStrips(std::move(counted), {30, 320, 3, 16}, {needs, make}, threads);
    Picture rows(30, 320, 3, 16);
    for (int32_t at = 0, part = 1; at < 320; at += part, part = std::min(part + 5, 320 - at))
      third.read(rows, at, part);
    for (int32_t r = 0; r < 320; ++r)
      CHECK(std::equal(rows.plane[2].z[r], rows.plane[2].z[r] + 30, picture.plane[2].z[3 * r]));
    CHECK(read == 1000);
  }
}

TEST_CASE("resampled strips are the whole planes resampled, for every number of threads") {
  struct Sizes {
    int32_t width, height, newWidth, newHeight;
  };
  for (const Sizes size : {Sizes{1, 1, 3, 2}, {23, 300, 46, 600}, {17, 2000, 9, 77}, {40, 3, 31, 700}})
    for (const int32_t channels : {1, 3, 4})
      for (const ResizeFilter filter : {ResizeFilter::cubic, ResizeFilter::lanczos, ResizeFilter::nearest}) {
        const Picture picture = Sample(size.width, size.height, channels);
        const bool multiplied = filter != ResizeFilter::nearest;
        Picture source = picture, whole(size.newWidth, size.newHeight, channels, 16);
        if (multiplied) Premultiply(source);
        for (int32_t k = 0; k < channels; ++k)
          ResampleSeparable(source.plane[k], whole.plane[k], ResizeTable(size.width, size.newWidth, filter),
                            ResizeTable(size.height, size.newHeight, filter));
        if (multiplied) Unpremultiply(whole);
        for (const int32_t threads : kThreads)
          CheckSame(AllRows(Resized(HeldPicture(picture), {size.newWidth, size.newHeight}, filter, threads)), whole);
      }
}

TEST_CASE("shrunk strips are the whole planes shrunk, cropped, for every number of threads") {
  struct Sizes {
    int32_t width, height, factor, order;
  };
  for (const Sizes size : {Sizes{3, 2, 2, -1}, {67, 1401, 2, -1}, {31, 500, 3, 3}, {20, 300, 7, -11}, {40, 90, 2, 64}})
    for (const int32_t channels : {1, 4}) {
      const Picture picture = Sample(size.width, size.height, channels);
      const int32_t width = size.width / size.factor, height = size.height / size.factor;
      Picture source(width * size.factor, height * size.factor, channels, 16), whole(width, height, channels, 16);
      for (int32_t k = 0; k < channels; ++k)
        for (int32_t r = 0; r < source.Height(); ++r)
          std::copy_n(picture.plane[k].z[r], source.Width(), source.plane[k].z[r]);
      Premultiply(source);
      matrix taps;
      ShrinkKernel(taps, size.factor, size.order);
      for (int32_t k = 0; k < channels; ++k) ShrinkMatrix(whole.plane[k], source.plane[k], taps);
      Unpremultiply(whole);
      for (const int32_t threads : kThreads)
        CheckSame(AllRows(Shrunk(HeldPicture(picture), size.factor, size.order, threads)), whole);
    }
}

TEST_CASE("every command makes the same bytes at every vector level") {
  const test::ScratchFolder folder;
  REQUIRE(test::KitIn(folder, "testcard card.png --size 61x53").exitCode == 0);
  REQUIRE(test::KitIn(folder, "noise card.png a.png --sigma 4").exitCode == 0);
  for (const std::string line : {"enlarge a.png o.png", "enlarge a.png o.png --model x4-48 --by 3 --method net",
                                 "enlarge a.png o.png --method lanczos --by 1.5", "restore a.png o.png --by 1",
                                 "denoise a.png o.png --best", "shrink a.png o.png", "noise a.png o.png"}) {
    CAPTURE(line);
    std::string first;
    for (int level = 0; level <= static_cast<int>(MachineLevel()); ++level) {
      const std::string name = NameOf(static_cast<VectorLevel>(level));
      const test::Outcome outcome = test::Run({.arguments = test::Words(line + " --overwrite"),
                                               .environment = {"NORV_SIMD=" + name},
                                               .executable = test::NorvkitExecutable(),
                                               .directory = folder.Path()});
      CAPTURE(outcome.errors);
      REQUIRE(outcome.exitCode == 0);
      const std::string made = test::ReadBytes(folder / "o.png");
      if (level == 0) first = made;
      CHECK((made == first));
    }
  }
}
