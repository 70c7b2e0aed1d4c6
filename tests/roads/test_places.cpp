// Mode 13, and with it where the tool looks for its files.
#include "support/nets.h"
#include "support/process.h"
#include "support/test.h"

namespace {

// A network whose weights, but for the output layer's, have this mean and the deviation 0.5.
std::string NetOfMean(float mean) {
  norv::NeuralNet net = RandomRecord(2, {2, 1}, {12});
  for (norv::NetUnit& unit : net.layers[0].units)
    for (int i = 0; i < 2; ++i) unit.W.x[i] = mean + static_cast<float>(i) - 0.5f;
  return NetBytes(net);
}

std::string Statistics(const std::string& mean, const std::string& deviation) {
  return kBanner + "\nMode = 13\nMean = " + mean + "\n\nStd. Dev. = " + deviation +
         "\n\n\nDone!\nPress any key 3 times to exit.";
}

}  // namespace

TEST_CASE("mode 13 prints mean and deviation; those of a single layer are no numbers; without a network it gives up") {
  const ScratchFolder folder;
  const Outcome none = RunIn(folder, "13");
  CHECK(none.exitCode == 0);
  CHECK(none.output == kBanner + "\nMode = 13\nNo test.net. Abort! Press any key.");
  WriteBytes(folder / "test.net", NetOfMean(-2));
  CHECK(RunIn(folder, "13").output == Statistics("-2.000000", "0.500000"));
  WriteBytes(folder / "test.net", NetBytes(RandomRecord(3, {2}, {0})));
  const Outcome single = RunIn(folder, "13");
  CHECK(single.output == Statistics("nan", "nan"));
  CheckEnded(single, 0);
}

TEST_CASE("files lie beside the executable, whatever its folder is called and however it is started") {
  const ScratchFolder scratch;
  // Longer than one buffer of 512 bytes, with blanks and letters of several bytes.
  fs::path folder = scratch.Path();
  for (int i = 0; i < 12; ++i) folder /= "Größe 画像 of a rather long folder's name " + std::to_string(i);
  fs::create_directories(folder);
  fs::copy_file(NorvExecutable(), folder / "norv");
  WriteBytes(folder / "test.net", NetOfMean(3));
  fs::create_directory(scratch / "bin");
  fs::create_symlink(folder / "norv", scratch / "bin/tool");
  WriteBytes(scratch / "test.net", NetOfMean(5));
  const auto check = [&](const std::string& executable, const std::string& place, const std::string& mean) {
    const std::string bin = scratch / "bin", beside = "NORV_DIR=" + place;
    CHECK(Run({.arguments = {"13"}, .environment = {beside}, .executable = executable, .directory = bin}).output ==
          Statistics(mean, "0.500000"));
  };
  for (const std::string& started : {(folder / "norv").string(), scratch / "bin/tool", std::string("./tool")})
    check(started, "", "3.000000");
  for (const std::string& place : {scratch.Path(), scratch / ""}) check(folder / "norv", place, "5.000000");
  CHECK(Run({.arguments = {"13"}, .executable = folder / "norv"}).output == Statistics("3.000000", "0.500000"));
}
