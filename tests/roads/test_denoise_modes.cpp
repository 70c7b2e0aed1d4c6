// Modes 6 and 7 as the graphical program runs them.
#ifndef _WIN32

#include <doctest/doctest.h>
#include <filesystem>

#include "denoise/components.h"
#include "image/float_image.h"
#include "support/messages.h"
#include "support/nets.h"
#include "support/noisy_pictures.h"
#include "support/process.h"
#include "support/scratch.h"

using namespace norv;
using namespace norv::test;

namespace {

void WriteInput(const ScratchFolder& folder) {
  FloatImage image(60, 44, kDefaultFormat);
  for (int k = 0; k < 3; ++k) {
    image.plane[k] = Scene(60, 44);
    AddNoise(image.plane[k], 20, 3 + k);
  }
  REQUIRE_FALSE(image.Save(folder / "input.fdib", Folder::asGiven));
}

Outcome RunIn(const ScratchFolder& folder, std::vector<std::string> arguments) {
  Command command;
  command.arguments = std::move(arguments);
  command.environment = {"NORV_DIR=" + folder.Path()};
  return Run(command);
}

}  // namespace

TEST_CASE("mode 6 learns numbered matrices and uses them for a series") {
  const ScratchFolder folder;
  WriteInput(folder);
  const Outcome learned = RunIn(folder, {"6", "20", "4", "0", "0", "1", "2", "0", "a.fdib", "1"});
  CHECK(learned.exitCode == 0);
  CHECK(learned.errors == "");
  CHECK(IsReported(learned.output, "\nMode = 6"));
  CHECK(ReadBytes(folder / "finish.mat") == std::string(12, '\0'));
  for (const char* name : {"dr0.mat", "dr1.mat", "dr2.mat"})
    CHECK(std::filesystem::file_size(folder / name) == 12 + 4 * 16 * 17);
  std::filesystem::remove(folder / "finish.mat");

  const std::vector<std::string> reuse = {"6", "20", "4", "0", "0", "1", "1", "1", "b.fdib", "0"};
  CHECK(RunIn(folder, reuse).errors == "");
  CHECK(ReadBytes(folder / "a.fdib") == ReadBytes(folder / "b.fdib"));
  CHECK_FALSE(std::filesystem::exists(folder / "finish.mat"));

  // A matrix of another picture makes another result; missing, of another size or damaged, it is learned and said.
  const std::string first = ReadBytes(folder / "dr0.mat");
  WriteBytes(folder / "dr0.mat", ReadBytes(folder / "dr1.mat"));
  CHECK(RunIn(folder, reuse).errors == "");
  CHECK(ReadBytes(folder / "a.fdib") != ReadBytes(folder / "b.fdib"));
  for (const std::string& bytes :
       {std::string(), first.substr(0, 500), std::string(12, '\0'), std::string(40, '\x7f')}) {
    WriteBytes(folder / "dr0.mat", bytes);
    if (bytes.empty()) std::filesystem::remove(folder / "dr0.mat");
    const Outcome outcome = RunIn(folder, reuse);
    CHECK(outcome.exitCode == 0);
    CHECK(outcome.errors.find("dr0.mat") != std::string::npos);
    CHECK(outcome.errors.find("learned from the image") != std::string::npos);
    CHECK(ReadBytes(folder / "dr0.mat") == bytes);  // a file that does not fit stays as it is
    CHECK(ReadBytes(folder / "a.fdib") == ReadBytes(folder / "b.fdib"));
  }
}

TEST_CASE("mode 6 learns and writes planes without noise as well, and leaves them as they are") {
  const ScratchFolder folder;
  FloatImage image(30, 24, kDefaultFormat);
  image.plane[0] = Scene(30, 24);
  AddNoise(image.plane[0], 20, 3);
  image.plane[1].fill(77);
  for (int32_t i = 0; i < image.count; ++i) image.plane[2].x[i] = static_cast<float>(i % 30 + i / 30);
  REQUIRE_FALSE(image.Save(folder / "input.fdib", Folder::asGiven));
  for (const char* name : {"dr1.mat", "dr2.mat"}) WriteBytes(folder / name, "of another picture");

  CHECK(RunIn(folder, {"6", "0", "4", "0", "0", "0", "1", "0", "a.fdib", "0"}).errors == "");
  matrix components;
  components.load(folder / "dr1.mat", false, Folder::asGiven);
  CHECK(AreComponents(components, 4));
  CHECK(components.z[0][5] == 77);
  components.load(folder / "dr2.mat", false, Folder::asGiven);
  CHECK(AreComponents(components, 4));
  FloatImage result;
  REQUIRE_FALSE(result.Load(folder / "a.fdib", Folder::asGiven));
  CHECK_FALSE(SameBits(result.plane[0], image.plane[0]));
  CHECK(SameBits(result.plane[1], image.plane[1]));
  CHECK(SameBits(result.plane[2], image.plane[2]));
}

TEST_CASE("modes 6 and 7 save an image of an unknown format as it is") {
  const ScratchFolder folder;
  const std::string header("\x09\0\0\0\x08\0\0\0\x30\0\0\0\0\0\0\0", 16);
  WriteBytes(folder / "input.fdib", header);
  for (const std::vector<std::string>& arguments :
       {std::vector<std::string>{"6", "20", "4", "0", "0", "1", "2", "0", "out.fdib", "1"},
        {"7", "2", "5", "20", "0", "0.1", "1", "1", "0", "1", "out.fdib", "1"}}) {
    const Outcome outcome = RunIn(folder, arguments);
    CHECK(outcome.exitCode == 0);
    CHECK(outcome.errors.find("stays as it is") != std::string::npos);
    for (const char* name : {"out.fdib", "finish.mat"}) {
      CHECK(ReadBytes(folder / name) == (name[0] == 'o' ? header : std::string(12, '\0')));
      std::filesystem::remove(folder / name);
    }
  }
}

TEST_CASE("mode 7 writes the file that it is told, and a word about what it could not take") {
  const ScratchFolder folder;
  WriteInput(folder);
  const Outcome plain = RunIn(folder, {"7", "2", "5", "20", "0", "0.1", "1", "1", "0", "1", "out.fdib", "1"});
  CHECK(plain.exitCode == 0);
  CHECK(plain.errors == "");
  CHECK(IsReported(plain.output, "\nMode = 7"));
  CHECK(ReadBytes(folder / "finish.mat") == std::string(12, '\0'));
  CHECK(ReadBytes(folder / "out.fdib").size() == ReadBytes(folder / "input.fdib").size());
  CHECK(ReadBytes(folder / "out.fdib") != ReadBytes(folder / "input.fdib"));

  const Outcome clamped = RunIn(folder, {"7", "1", "13", "20", "0", "0.1", "0", "0", "0", "1", "out.fdib", "0"});
  CHECK(clamped.exitCode == 0);
  CHECK(clamped.errors.find("patch side") != std::string::npos);

  const Outcome nothing = RunIn(folder, {"7", "0", "6", "20", "0", "0.1", "1", "1", "0", "1", "same.fdib", "0"});
  CHECK(nothing.errors == "");
  CHECK(ReadBytes(folder / "same.fdib") == ReadBytes(folder / "input.fdib"));

  std::filesystem::remove(folder / "input.fdib");
  const Outcome missing = RunIn(folder, {"7", "1", "6", "20", "0", "0.1", "1", "1", "0", "1", "empty.fdib", "0"});
  CHECK(missing.exitCode == 0);
  CHECK(missing.errors.find("input.fdib") != std::string::npos);
  CHECK(ReadBytes(folder / "empty.fdib").size() == 16);
}

#endif
