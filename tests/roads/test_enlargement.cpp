// Mode 10 from the files that it reads to the file that it writes.
#ifndef _WIN32

#include <cmath>
#include <cstring>
#include <doctest/doctest.h>

#include "support/messages.h"
#include "support/plain.h"
#include "support/process.h"
#include "support/scratch.h"

using namespace norv::test;

namespace {

// One run of mode 10 in a folder of its own.
struct Enlargement {
  ScratchFolder folder;
  Outcome outcome;
  std::string result;  // output.fdib

  Enlargement(const std::string& net, const std::string& image, const std::string& average, const std::string& threads,
              const std::string& shortcut) {
    if (!net.empty()) WriteBytes(folder / "net.net", net);
    if (!image.empty()) WriteBytes(folder / "input.fdib", image);
    outcome = Start(average, threads, shortcut);
    result = ReadBytes(folder / "output.fdib");
  }
  Outcome Start(const std::string& average, const std::string& threads, const std::string& shortcut) const {
    return Run({.arguments = {"10", average, threads, shortcut}, .environment = {"NORV_DIR=" + folder.Path()}});
  }
  bool WentWell(const std::string& said) const {
    return outcome.exitCode == 0 && outcome.errors == "" &&
           IsReported(outcome.output, "\nMode = 10\nNeural Net Enlargement\n\n" + said);
  }
};

float Pixel(const std::string& fdib, int32_t index) {
  float value;
  std::memcpy(&value, fdib.data() + 16 + 4 * static_cast<size_t>(index), 4);
  return value;
}

// The rows of one band with its margins; rows outside the picture are mirrored.
PlainImage Band(const PlainImage& image, int first, int rows) {
  PlainImage band{image.width, rows, image.format, {}};
  for (const auto& plane : image.planes) {
    auto& part = band.planes.emplace_back();
    for (int r = first; r < first + rows; ++r) {
      const int inside = r < 0 ? -r : r >= image.height ? 2 * (image.height - 1) - r : r;
      part.insert(part.end(), plane.begin() + inside * image.width, plane.begin() + (inside + 1) * image.width);
    }
  }
  return band;
}

void Paste(PlainImage& large, const PlainImage& band, int row, int margin) {
  const int rows = std::min(band.height - 2 * margin, large.height - row);
  for (size_t k = 0; k < large.planes.size(); ++k)
    std::copy_n(band.planes[k].begin() + margin * large.width, rows * large.width,
                large.planes[k].begin() + row * large.width);
}

}  // namespace

TEST_CASE("one thread: every plane is what the plain evaluation gives, byte for byte") {
  const PlainNet twice = RandomNet(24, {10, 4}, 14), fourfold = RandomNet(24, {11, 9, 16}, 5);
  const PlainImage picture = RandomImage(19, 7, 23, 3), withFourth = RandomImage(5, 6, 0x2007, 4);
  for (const auto& net : {twice, fourfold})
    for (const auto& image : {picture, withFourth}) {
      const Enlargement run(BytesOf(net), BytesOf(image), "0", "1", "0");
      CHECK(run.WentWell("Shortcut = 0, Average = 0, Threads = 1"));
      CHECK(run.result == BytesOf(EnlargeBy24(image, net)));
    }
  // No thread works as one.
  CHECK(Enlargement(BytesOf(twice), BytesOf(picture), "0", "0", "0").result == BytesOf(EnlargeBy24(picture, twice)));
}

TEST_CASE("four threads: bands of five rows with three mirrored or neighbouring rows on both sides") {
  const PlainNet net = RandomNet(24, {8, 4}, 14);
  const PlainImage image = RandomImage(12, 17, 23, 3);
  PlainImage expected{24, 34, 23, std::vector<std::vector<float>>(3, std::vector<float>(24 * 34))};
  for (int first = 0; first < 17; first += 5)
    Paste(expected, EnlargeBy24(Band(image, first - 3, 11), net), 2 * first, 6);
  const Enlargement run(BytesOf(net), BytesOf(image), "0", "4", "0");
  CHECK(run.WentWell("Shortcut = 0, Average = 0, Threads = 4"));
  CHECK(run.result == BytesOf(expected));
}

TEST_CASE("other thread counts and too few rows enlarge the cleared picture once more, on purpose") {
  const PlainNet net = RandomNet(24, {6, 4}, 12);
  PlainImage cleared{10, 20, 23, std::vector<std::vector<float>>(3, std::vector<float>(200))};
  const std::string image = BytesOf(RandomImage(5, 10, 23, 3)), expected = BytesOf(EnlargeBy24(cleared, net));
  for (const std::string threads : {"2", "4", "-3"}) {
    const Enlargement run(BytesOf(net), image, "0", threads, "0");
    CHECK(run.WentWell("Shortcut = 0, Average = 0, Threads = " + threads));
    CHECK(run.result == expected);
  }
}

TEST_CASE("the first parameter averages over orientations: a mirrored picture gives the mirrored result") {
  const std::string net = BytesOf(RandomNet(24, {8, 4}, 14));
  const PlainImage image = RandomImage(8, 8, 23, 3);
  PlainImage mirrored = image;
  for (auto& plane : mirrored.planes)
    for (int r = 0; r < 8; ++r) std::reverse(plane.begin() + 8 * r, plane.begin() + 8 * r + 8);
  const auto difference = [&](const char* average) {
    const Enlargement one(net, BytesOf(image), average, "1", "0"), other(net, BytesOf(mirrored), average, "1", "0");
    REQUIRE(one.WentWell(std::string("Shortcut = 0, Average = ") + average + ", Threads = 1"));
    float largest = 0;
    for (int i = 0; i < 3 * 256; ++i)
      largest = std::max(largest, std::abs(Pixel(one.result, i) - Pixel(other.result, i / 16 * 16 + 15 - i % 16)));
    return largest;
  };
  CHECK(difference("0") > 1);
  CHECK(difference("2") < 0.001);
}

TEST_CASE("the third parameter sends the luminance alone through the network") {
  PlainNet nearest = RandomNet(24, {4}, 12);
  for (PlainUnit& unit : nearest.layers[0]) unit = {12, 0, std::vector<float>(24)};
  const Enlargement run(BytesOf(nearest), BytesOf(RandomImage(8, 8, 23, 3)), "0", "1", "-1");
  REQUIRE(run.WentWell("Shortcut = -1, Average = 0, Threads = 1"));
  float luminance = 0, red = 0;
  const auto y = [&](int i) {
    return 0.299f * Pixel(run.result, i) + 0.587f * Pixel(run.result, i + 256) + 0.114f * Pixel(run.result, i + 512);
  };
  for (int i = 0; i < 256; i += 2) {
    luminance = std::max(luminance, std::abs(y(i) - y(i + 1)));
    red = std::max(red, std::abs(Pixel(run.result, i) - Pixel(run.result, i + 1)));
  }
  CHECK(luminance < 0.05);
  CHECK(red > 1);
}

TEST_CASE("without a network, or with one that cannot be evaluated, the run fails and the old result stays") {
  const std::string image = BytesOf(RandomImage(4, 4, 23, 3));
  std::string shortNet = BytesOf(RandomNet(24, {4}, 12));
  shortNet.pop_back();
  for (const std::string& net :
       {std::string(), BytesOf(RandomNet(24, {4}, 0)), BytesOf(RandomNet(24, {4}, 18)), shortNet}) {
    Enlargement run(net, image, "0", "1", "0");
    WriteBytes(run.folder / "output.fdib", "old");
    const Outcome outcome = run.Start("0", "1", "0");
    CHECK(outcome.exitCode == 1);
    CHECK(outcome.output == kBanner + "\nMode = 10\nNeural Net Enlargement\n\nShortcut = 0, Average = 0, Threads = 1");
    CHECK(outcome.errors.size() > 10);
    CHECK(ReadBytes(run.folder / "output.fdib") == "old");
  }
}

TEST_CASE("units without activation matter only where they would be evaluated") {
  const std::string image = BytesOf(RandomImage(4, 4, 23, 3));
  for (const int32_t kind : {0, 18}) {
    const Enlargement noLayout(BytesOf(RandomNet(25, {4}, kind)), image, "0", "1", "0");
    CHECK(noLayout.WentWell("Shortcut = 0, Average = 0, Threads = 1"));
    CHECK(noLayout.result == image);
    const Enlargement noPicture(BytesOf(RandomNet(24, {4}, kind)), "", "1", "4", "1");
    CHECK(noPicture.outcome.exitCode == 0);
    CHECK(noPicture.result == BytesOf(PlainImage{}));
  }
}

TEST_CASE("standard streams that are closed or full leave the result alone") {
  const PlainNet net = RandomNet(24, {4}, 12);
  const PlainImage image = RandomImage(4, 4, 23, 3);
  const Enlargement run(BytesOf(net), BytesOf(image), "0", "1", "0");
  Command command{.arguments = {"10", "0", "1", "0"}, .environment = {"NORV_DIR=" + run.folder.Path()}};
  for (const std::string closed : {"0", "1", "2", "012", "full"}) {
    std::filesystem::remove(run.folder / "output.fdib");
    command.output = closed == "full" ? "/dev/full" : "";
    command.closed = closed == "full" ? "" : closed;
    CHECK(Run(command).exitCode == 0);
    CHECK(ReadBytes(run.folder / "output.fdib") == BytesOf(EnlargeBy24(image, net)));
  }
}

TEST_CASE("a missing picture is an empty one; a result that cannot be written ends the run as usual") {
  const std::string net = BytesOf(RandomNet(24, {4}, 12)), said = "\nMode = 10\nNeural Net Enlargement\n\n";
  const Enlargement empty(net, "", "0", "4", "0");
  CHECK(empty.outcome.exitCode == 0);
  CHECK(IsReported(empty.outcome.output, said + "Shortcut = 0, Average = 0, Threads = 4"));
  CHECK(empty.outcome.errors.find("input.fdib") != std::string::npos);
  CHECK(empty.result == BytesOf(PlainImage{}));

  Enlargement blocked(net, BytesOf(RandomImage(4, 4, 23, 3)), "0", "1", "0");
  std::filesystem::remove(blocked.folder / "output.fdib");
  std::filesystem::create_directories(blocked.folder / "output.fdib/taken");
  const Outcome outcome = blocked.Start("0", "1", "0");
  CHECK(outcome.exitCode == 0);
  CHECK(IsReported(outcome.output, said + "Shortcut = 0, Average = 0, Threads = 1"));
  CHECK(outcome.errors.find("output.fdib") != std::string::npos);
}

#endif
