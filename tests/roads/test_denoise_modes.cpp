// Modes 6 and 7 as the graphical program runs them.
#include "denoise/components.h"
#include "image/float_image.h"
#include "support/noisy_pictures.h"
#include "support/process.h"
#include "support/random_plane.h"
#include "support/test.h"

namespace {

// A folder with a noisy input.fdib.
struct Workplace {
  Workplace() {
    for (int k = 0; k < 3; ++k) {
      image.plane[k] = Scene(60, 44);
      AddNoise(image.plane[k], 20, 3 + k);
    }
    Write();
  }
  void Write() const { REQUIRE_FALSE(image.Save(folder / "input.fdib", Folder::asGiven)); }
  std::string Bytes(const char* name) const { return ReadBytes(folder / name); }

  ScratchFolder folder;
  FloatImage image{60, 44, kDefaultFormat};
};

const std::string kEmptyMatrix(12, '\0');

}  // namespace

TEST_CASE("mode 6 learns numbered matrices and uses them for a series") {
  const Workplace place;
  const ScratchFolder& folder = place.folder;
  CheckReported(RunIn(folder, "6 20 4 0 0 1 2 0 a.fdib 1"), "\nMode = 6");
  CHECK(place.Bytes("finish.mat") == kEmptyMatrix);
  for (const char* name : {"dr0.mat", "dr1.mat", "dr2.mat"}) CHECK(place.Bytes(name).size() == 12 + 4 * 16 * 17);
  fs::remove(folder / "finish.mat");

  const std::string reuse = "6 20 4 0 0 1 1 1 b.fdib 0";
  CheckEnded(RunIn(folder, reuse), 0);
  CHECK(place.Bytes("a.fdib") == place.Bytes("b.fdib"));
  CHECK_FALSE(fs::exists(folder / "finish.mat"));

  // A matrix of another picture makes another result; missing, of another size or damaged, it is learned and said.
  const std::string first = place.Bytes("dr0.mat");
  WriteBytes(folder / "dr0.mat", place.Bytes("dr1.mat"));
  CheckEnded(RunIn(folder, reuse), 0);
  CHECK(place.Bytes("a.fdib") != place.Bytes("b.fdib"));
  for (const std::string& bytes : {std::string(), first.substr(0, 500), kEmptyMatrix, std::string(40, '\x7f')}) {
    WriteBytes(folder / "dr0.mat", bytes);
    if (bytes.empty()) fs::remove(folder / "dr0.mat");
    const Outcome outcome = RunIn(folder, reuse);
    CheckEnded(outcome, 0, "learned from the image");
    CHECK(Contains(outcome.errors, "dr0.mat"));
    CHECK(place.Bytes("dr0.mat") == bytes);  // a file that does not fit stays as it is
    CHECK(place.Bytes("a.fdib") == place.Bytes("b.fdib"));
  }
}

TEST_CASE("mode 6 learns and writes planes without noise as well, and leaves them as they are") {
  Workplace place;
  FloatImage& image = place.image;
  image.plane[1].fill(77);
  for (int32_t i = 0; i < image.count; ++i) image.plane[2].x[i] = static_cast<float>(i % 60 + i / 60);
  place.Write();
  for (const char* name : {"dr1.mat", "dr2.mat"}) WriteBytes(place.folder / name, "of another picture");

  CheckEnded(RunIn(place.folder, "6 0 4 0 0 0 1 0 a.fdib 0"), 0);
  FloatImage result;
  REQUIRE_FALSE(result.Load(place.folder / "a.fdib", Folder::asGiven));
  for (const int k : {0, 1, 2}) {
    matrix components;
    components.load(place.folder / ("dr" + std::to_string(k) + ".mat"), false, Folder::asGiven);
    CHECK(AreComponents(components, 4));
    if (k == 1) CHECK(components.z[0][5] == 77);
    CHECK(SameBits(result.plane[k], image.plane[k]) == (k > 0));
  }
}

TEST_CASE("modes 6 and 7 save an image of an unknown format as it is") {
  const ScratchFolder folder;
  const std::string header = Int32Bytes({9, 8, 0x30, 0});
  WriteBytes(folder / "input.fdib", header);
  for (const char* line : {"6 20 4 0 0 1 2 0 6.fdib 1", "7 2 5 20 0 0.1 1 1 0 1 7.fdib 1"}) {
    CheckEnded(RunIn(folder, line), 0, "stays as it is");
    CHECK(ReadBytes(folder / (line[0] + std::string(".fdib"))) == header);
    CHECK(fs::remove(folder / "finish.mat"));
  }
}

TEST_CASE("mode 7 writes the file that it is told, and a word about what it could not take") {
  const Workplace place;
  const std::string input = place.Bytes("input.fdib");
  CheckReported(RunIn(place.folder, "7 2 5 20 0 0.1 1 1 0 1 out.fdib 1"), "\nMode = 7");
  CHECK(place.Bytes("finish.mat") == kEmptyMatrix);
  CHECK((place.Bytes("out.fdib").size() == input.size() && place.Bytes("out.fdib") != input));
  CheckReported(RunIn(place.folder, "7 0 6 20 0 0.1 1 1 0 1 same.fdib 0"), "\nMode = 7");
  CHECK(place.Bytes("same.fdib") == input);
  CheckEnded(RunIn(place.folder, "7 1 13 20 0 0.1 0 0 0 1 out.fdib 0"), 0, "patch side");
  fs::remove(place.folder / "input.fdib");
  CheckEnded(RunIn(place.folder, "7 1 6 20 0 0.1 1 1 0 1 empty.fdib 0"), 0, "input.fdib");
  CHECK(place.Bytes("empty.fdib").size() == 16);
}
