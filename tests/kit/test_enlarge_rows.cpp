// Enlargement by a network from file to file: the files are those of the picture in memory, and nothing half-done
// stays.
#include <doctest/doctest.h>
#include <filesystem>

#include "kit/failure.h"
#include "kit/pictures/conversions.h"
#include "kit/pictures/image_file.h"
#include "kit/pictures/picture.h"
#include "kit/scale/enlarge_picture.h"
#include "net/net_file.h"
#include "support/kit.h"
#include "support/nets.h"
#include "support/process.h"
#include "support/scratch.h"

using namespace norv;

namespace {

Picture Sample(int32_t width, int32_t height, int32_t channels) {
  Picture picture(width, height, channels);
  for (int32_t k = 0; k < channels; ++k) picture.plane[k] = test::RandomPlane(width, height, 7 + k);
  return picture;
}

}  // namespace

TEST_CASE("rows from file to file make the file that the whole picture makes") {
  const test::ScratchFolder folder;
  struct Way {
    const char *from, *to;
    int32_t channels, bits;
  };
  const Way ways[] = {{"a.png", "b.png", 1, 8},   {"a.png", "b.tif", 2, 16},  {"a.png", "b.jpg", 4, 8},
                      {"a.tif", "b.fdib", 4, 16}, {"a.tif", "b.mat", 3, 8},   {"a.jpg", "b.png", 3, 8},
                      {"a.fdib", "b.bit", 3, 8},  {"a.fdib", "b.fdib", 2, 8}, {"a.mat", "b.tif", 1, 16},
                      {"a.bit", "b.fdib", 3, 8},  {"a.fdib", "a.fdib", 3, 8}};
  const NeuralNet net = test::RandomRecord(24, {3, 4}, test::kExactKinds);
  for (const Way& way : ways)
    for (const int32_t threads : {0, 1, 5}) {
      const NetEnlargement how{.average = threads == 1, .shortcut = threads == 5, .threads = threads};
      WriteChoice choice = test::Over();
      choice.bits = std::string(way.to) == "b.jpg" ? 8 : way.bits;
      const std::string from = folder / way.from, to = folder / way.to,
                        whole = folder / "whole" + std::filesystem::path(way.to).extension().string();
      SaveImage(from, Sample(9, 12, way.channels), test::Over());
      SaveImage(whole, EnlargeByNet(LoadImage(from), net, how), choice);
      const PictureSource rows = EnlargedByNet(OpenImage(from), net, how);
      CopyRows(rows, CreateImage(to, rows.shape, choice));
      INFO(way.from, " to ", way.to, " by ", threads, " threads");
      CHECK(norv::test::ReadBytes(to) == norv::test::ReadBytes(whole));
      CHECK(!norv::test::ReadBytes(to).empty());
    }
}

TEST_CASE("damage found late, a full disk and impossible sizes leave the old file and no other") {
  const test::ScratchFolder folder;
  const NeuralNet net = test::RandomRecord(24, {3, 4}, test::kExactKinds);
  SaveNet(net, folder / "a.net", Folder::asGiven);
  const std::string to = folder / "b.png";
  test::WriteBytes(to, "old");
  const auto enlarge = [&](const std::string& from, const std::string& out) {
    return test::Run({.arguments = {"enlarge", folder / from, out, "--net", folder / "a.net", "--overwrite"},
                      .executable = test::NorvkitExecutable()});
  };
  for (const char* name : {"a.png", "a.tif", "a.jpg", "a.fdib"}) {
    SaveImage(folder / name, Sample(300, 200, 3), {});
    const std::string bytes = norv::test::ReadBytes(folder / name);
    CHECK(enlarge(name, folder / name).exitCode == 0);  // over itself
    test::WriteBytes(folder / name, bytes.substr(0, bytes.size() - 5000));
    const test::Outcome outcome = enlarge(name, to);
    CAPTURE(outcome.errors);
    CHECK(outcome.exitCode == 1);
    CHECK(outcome.errors.find(folder / name) != std::string::npos);
    CHECK(norv::test::ReadBytes(to) == "old");
    std::filesystem::remove(folder / name);
  }
  SaveImage(folder / "a.fdib", Sample(400, 300, 3), {});
  for (const char* name : {"c.png", "c.tif", "c.jpg", "c.fdib", "c.mat", "c.bit"}) {
    std::filesystem::create_symlink("/dev/full", folder / name);
    const test::Outcome outcome = enlarge("a.fdib", folder / name);
    CAPTURE(name);
    CHECK(outcome.exitCode == 1);
    CHECK(outcome.errors.find("No space left") != std::string::npos);
    std::filesystem::remove(folder / name);
  }
  const int32_t header[] = {30000, 20000, kDefaultFormat, 0};
  test::WriteBytes(folder / "a.fdib", {reinterpret_cast<const char*>(header), sizeof header});
  std::filesystem::resize_file(folder / "a.fdib", 16 + 12 * int64_t{30000} * 20000);
  CHECK(enlarge("a.fdib", folder / "c.fdib").errors.find("cannot hold 60000 x 40000 pixels") != std::string::npos);
  CHECK(std::distance(std::filesystem::directory_iterator(folder.Path()), {}) == 3);
}
