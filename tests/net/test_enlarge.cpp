// Enlargement has the bits of the plainest form, whatever the layout, the size, the road and the threads.
#include <sys/stat.h>

#include "net/enlarge.h"
#include "net/enlarge_file.h"
#include "support/nets.h"
#include "support/plain_enlarge.h"
#include "support/test.h"

namespace {

struct Layout {
  int32_t inputs, outputs;
};
const std::vector<Layout> kLayouts = {{8, 4}, {8, 16}, {24, 4}, {24, 16}, {48, 4}, {48, 16}, {49, 16}, {72, 16}};

FloatImage Enlarged(FloatImage image, const NeuralNet& net, bool shortcut, bool average, int32_t threads) {
  NetEnlargeImage(image, net, shortcut, average, threads);
  return image;
}

// Any image with a mask, which stays as it was read, whatever way the image goes.
FloatImage Masked(int32_t w, int32_t h, int32_t format) {
  FloatImage image = RandomFloatImage(w, h, format);
  image.mask.Resize(w, h);
  for (uint32_t& word : image.mask.words) word = 0x9E3779B9u * static_cast<uint32_t>(h);
  return image;
}

}  // namespace

TEST_CASE("every layout, size of plane and depth of network, plain and averaged, has the bits of the plain form") {
  const auto check = [](const NeuralNet& net, int32_t w, int32_t h) {
    INFO(net.N0, " inputs, ", net.LastNi(), " outputs, ", w, " x ", h);
    const matrix P = RandomPlane(w, h, w * h);
    matrix out;
    NetEnlargeChannel(net, P, out);
    CHECK(SameBits(out, PlainPlane(net, P, false)));
    NetEnlargeChannelAveraged(net, P, out);
    CHECK(SameBits(out, PlainPlane(net, P, true)));
  };
  for (const Layout layout : kLayouts)
    for (const auto& [w, h] : {std::pair{1, 1}, {1, 6}, {7, 1}, {2, 2}, {3, 5}, {70, 3}, {5, 35}})
      check(RandomRecord(layout.inputs, {6, layout.outputs}, kExactKinds, w + h), w, h);
  // Wider than a tile, of one layer and of many.
  check(RandomRecord(8, {4}, kExactKinds), 1100, 2);
  check(RandomRecord(8, {9, 1, 17, 4}, kExactKinds), 1100, 2);
}

TEST_CASE("images of three and four planes, whole and by the shortcut; bands are images with mirrored margins") {
  const NeuralNet net = RandomRecord(24, {5, 16}, kExactKinds), narrow = RandomRecord(8, {3, 4}, kExactKinds);
  for (const int32_t format : {kDefaultFormat, kLuminance + 7, kWithFourth + 7})
    for (const bool shortcut : {false, true})
      for (const bool average : {false, true}) {
        INFO(format, " ", shortcut);
        const FloatImage image = Masked(9, 6, format);
        CHECK(ImageBytes(Enlarged(image, net, shortcut, average, 1)) ==
              ImageBytes(PlainImage(image, net, shortcut, average)));
      }
  for (const auto& [threads, rows, height] : {std::array{4, 17, 5}, {4, 16, 4}, {8, 65, 9}, {16, 257, 17}})
    for (const bool shortcut : {false, true}) {
      CAPTURE(rows);
      const FloatImage image = Masked(4, rows, kWithFourth + 7);
      CHECK(ImageBytes(Enlarged(image, narrow, shortcut, threads == 4, threads)) ==
            ImageBytes(PlainBands(image, narrow, shortcut, threads == 4, height)));
    }
}

TEST_CASE("strips of any height make the file that the whole image and bands make, mask and missing rows included") {
  const ScratchFolder folder;
  const std::string from = folder / "in.fdib", to = folder / "out.fdib";
  const int32_t formats[] = {kDefaultFormat, kWithFourth + 7, kLuminance + 1, 0x80};
  int32_t turn = 0;
  for (const Layout layout : kLayouts)
    for (const bool shortcut : {false, true})
      for (const auto& shape : {std::array{4, 1, 1}, {3, 2, 0}, {5, 19, 1}, {3, 17, 4}, {2, 71, 8}}) {
        const int32_t w = shape[0], h = shape[1], threads = shape[2];
        const int32_t format = formats[++turn % 4];
        FloatImage image = turn % 3 == 0 ? Masked(w, h, format) : RandomFloatImage(w, h, format);
        REQUIRE(!image.Save(from, Folder::asGiven));
        // Cut within a plane: all planes behind it are zeros, in every strip.
        if (turn % 5 == 0) fs::resize_file(from, 16 + 4 * static_cast<uint32_t>(w * h * 3 / 2));
        const std::string warning = ErrorsOf([&] { REQUIRE(!image.Load(from, Folder::asGiven)); });
        CHECK(warning.empty() == (turn % 5 != 0));
        const NeuralNet net = RandomRecord(layout.inputs, {3, layout.outputs}, kExactKinds, turn);
        const bool average = turn % 2 == 0;
        const std::string whole = ImageBytes(Enlarged(image, net, shortcut, average, threads));
        for (const int32_t rows : {0, 1, 2, 7}) {
          INFO(layout.inputs, " inputs, format ", image.format, ", strips of ", rows);
          CHECK(ErrorsOf([&] { NetEnlargeFile(from, to, net, shortcut, average, threads, rows); }) == warning);
          CHECK(ReadBytes(to) == whole);
        }
      }
}

TEST_CASE("pipes are read and written from front to back") {
  const ScratchFolder folder;
  const NeuralNet net = RandomRecord(24, {4}, kExactKinds);
  const FloatImage image = RandomFloatImage(6, 17, kWithFourth + 7);
  REQUIRE(mkfifo((folder / "in").c_str(), 0600) == 0);
  REQUIRE(mkfifo((folder / "out").c_str(), 0600) == 0);
  for (const int32_t threads : {1, 4}) {
    std::thread writer([&] { WriteBytes(folder / "in", ImageBytes(image)); });
    std::string received;
    std::thread reader([&] { received = ReadBytes(folder / "out"); });
    NetEnlargeFile(folder / "in", folder / "out", net, true, false, threads, 2);
    writer.join();
    reader.join();
    CHECK(received == ImageBytes(Enlarged(image, net, true, false, threads)));
  }
}

TEST_CASE("more pixels than 32 bits count are refused before any work, and the old file stays") {
  const ScratchFolder folder;
  WriteBytes(folder / "out", "old");
  for (const auto& [w, h] : {std::pair{30000, 20000}, {50000, 50000}})
    for (const int32_t threads : {1, 4}) {
      WriteBytes(folder / "in", Int32Bytes({w, h, kDefaultFormat, 0}));
      const NeuralNet net = RandomRecord(8, {4}, {12});
      const std::string errors = ErrorsOf([&] {
        CHECK_THROWS_AS(NetEnlargeFile(folder / "in", folder / "out", net, false, false, threads), const char*);
      });
      CHECK(Contains(errors, "enlarged 2 times on both axes are more than 2147483647"));
      CHECK(ReadBytes(folder / "out") == "old");
    }
}

// On purpose: the graphical program knows the size that such a request gives back.
TEST_CASE("other thread counts and too few rows enlarge the cleared image once more") {
  const NeuralNet net = RandomRecord(24, {4}, {12});
  const auto check = [&](int32_t rows, int32_t threads) {
    CAPTURE(threads);
    const FloatImage image = Masked(3, rows, kWithFourth + 7);
    FloatImage cleared(6, 2 * rows, image.format);
    cleared.mask = image.mask;
    CHECK(ImageBytes(Enlarged(image, net, false, false, threads)) ==
          ImageBytes(PlainImage(cleared, net, false, false)));
  };
  for (const int32_t threads : {4, 8}) check(10, threads);
  for (const int32_t threads : {16, 2, 3, 5, 17, -1, -4}) check(40, threads);
  const FloatImage image = RandomFloatImage(3, 40, kDefaultFormat);
  CHECK(ImageBytes(Enlarged(image, net, false, false, 0)) == ImageBytes(Enlarged(image, net, false, false, 1)));
}

// On purpose: nothing is evaluated, and the size is taken from plane 0 as it is.
TEST_CASE("networks without a layout leave the planes as they are") {
  for (const Layout layout : {Layout{49, 4}, {72, 4}, {8, 9}, {25, 16}, {24, 1}}) {
    CAPTURE(layout.inputs);
    const NeuralNet net = RandomRecord(layout.inputs, {layout.outputs}, {12});
    matrix out = RandomPlane(3, 2, 1);
    NetEnlargeChannel(net, RandomPlane(5, 5, 2), out);
    NetEnlargeChannelAveraged(net, RandomPlane(5, 5, 2), out);
    CHECK(SameBits(out, RandomPlane(3, 2, 1)));
    const FloatImage image = Masked(6, 8, kWithFourth + 7);
    CHECK(ImageBytes(Enlarged(image, net, false, false, 1)) == ImageBytes(image));
    // The resampled chrominance no longer fits the luminance; as many of its values as pixels are kept.
    const FloatImage shortcut = Enlarged(image, net, true, false, 1);
    CHECK((shortcut.width == 6 && shortcut.height == 8));
    for (int32_t p = 0; p < 4; ++p) CHECK(shortcut.plane[p].mn == 48);
    CHECK(SameBits(shortcut.plane[3], image.plane[3]));
    for (const int32_t threads : {2, 4}) Enlarged(RandomFloatImage(6, 17, kDefaultFormat), net, true, false, threads);
  }
  const FloatImage image = RandomFloatImage(6, 8, kDefaultFormat);
  const FloatImage unchanged = Enlarged(image, NeuralNet(), true, false, 1);
  CHECK(unchanged.plane[2].z[7][5] == doctest::Approx(image.plane[2].z[7][5]).epsilon(0.001));
}

TEST_CASE("units without activation are refused only where they would be evaluated") {
  const ScratchFolder folder;
  const std::string from = folder / "in.fdib", to = folder / "out.fdib";
  WriteBytes(from, ImageBytes(RandomFloatImage(4, 17, kDefaultFormat)));
  for (const int32_t kind : {0, 18})
    for (const int32_t threads : {1, 2, 4}) {
      const auto enlarge = [&](const std::string& picture, int32_t inputs) {
        NetEnlargeFile(picture, to, RandomRecord(inputs, {3, 4}, {12, kind}), true, false, threads);
      };
      CHECK_THROWS_AS(enlarge(from, 24), const char*);
      CHECK(!fs::exists(to));
      enlarge(from, 25);  // no layout
      CHECK(fs::remove(to));
      ErrorsOf([&] { enlarge(folder / "none", 24); });
      CHECK(ReadBytes(to) == ImageBytes(FloatImage()));
      fs::remove(to);
    }
}

TEST_CASE("empty images stay empty and impossible sizes are refused") {
  const NeuralNet net = RandomRecord(8, {16}, {12});
  for (const int32_t threads : {1, 2, 4})
    for (const bool shortcut : {false, true}) CHECK(Enlarged(FloatImage(), net, shortcut, true, threads).count == 0);
  FloatImage lines;
  lines.height = 2000000000;
  CHECK(Enlarged(lines, net, false, false, 4).height == 0);
  FloatImage unknown;
  unknown.Redim(4, 4, 0x30);
  CHECK(Enlarged(unknown, net, true, false, 1).planes == 0);
  FloatImage wide;
  wide.width = wide.count = 600000000;
  wide.height = 1;
  CHECK_THROWS_AS(NetEnlargeImage(wide, net, false, false, 2), const char*);
}
