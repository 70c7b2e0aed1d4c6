// Modes 2 to 5 against the float road: the same bytes as ToBytes makes of what modes 0 and 1 give.
#ifndef _WIN32

#include <algorithm>
#include <cstring>
#include <doctest/doctest.h>
#include <filesystem>
#include <thread>

#include "platform/team.h"
#include "restore/bit_process.h"
#include "support/messages.h"
#include "support/process.h"
#include "support/restoration.h"
#include "support/scratch.h"

using namespace norv;
using namespace norv::test;

namespace {

BitImage Picture(int32_t width, int32_t height) {
  BitImage image(width, height);
  std::memset(image.pixels.get(), 0, static_cast<size_t>(image.size));
  for (int32_t r = 0; r < height; ++r)
    for (int32_t c = 0; c < 3 * width; ++c)
      image.rows[r][c] = static_cast<uint8_t>((r / 4 + c / 9) % 2 ? 230 + c % 20 : 20 + (r * 7 + c * 3) % 40);
  return image;
}

// The same picture in display colours.
FloatImage Floats(const BitImage& image, int32_t format) {
  FloatImage floats(image.width, image.height, kDefaultFormat);
  for (int32_t r = 0; r < image.height; ++r)
    for (int32_t c = 0; c < image.width; ++c)
      for (int k = 0; k < 3; ++k) floats.plane[k].z[r][c] = image.rows[r][3 * c + 2 - k];
  floats.ConvertTo(format);
  return floats;
}

// The bytes of a .bit file that shows the float file.
std::string AsBits(const ScratchFolder& folder, const char* name) {
  FloatImage image;
  REQUIRE_FALSE(image.Load(folder / name, Folder::asGiven));
  BitImage bits(image.width, image.height);
  std::memset(bits.pixels.get(), 0, static_cast<size_t>(bits.size));
  PasteToBitImage(bits, 0, 0, image, nullptr, 0, 0, 0, 0);
  bits.Save(folder / "expected.bit", Folder::asGiven);
  return ReadBytes(folder / "expected.bit");
}

// The bytes of pixels, the padding apart.
bool SamePixels(const std::string& a, const std::string& b) {
  int32_t width, height;
  if (a.size() != b.size() || a.size() < 8 || a.compare(0, 8, b, 0, 8) != 0) return false;
  std::memcpy(&width, a.data(), 4);
  std::memcpy(&height, a.data() + 4, 4);
  for (int64_t r = 0; r < height; ++r) {
    const size_t row = static_cast<size_t>(8 + r * BitStride(width)), length = static_cast<size_t>(3 * width);
    if (a.compare(row, length, b, row, length) != 0) return false;
  }
  return true;
}

// With no more than the emphasis, of which rounding makes no other bytes.
Outcome RunRestore(const ScratchFolder& folder, int mode, int threads, int32_t factor = 2) {
  return Run({.arguments = ModeWords(mode, TestParameters(0, factor, 1), threads),
              .environment = {"NORV_DIR=" + folder.Path()},
              .directory = folder.Path()});
}

}  // namespace

TEST_CASE("mode 2 is mode 0 in bytes, mode 5 is mode 1 with one thread, mode 4 with as many") {
  const ScratchFolder folder;
  const BitImage picture = Picture(23, 57);
  picture.Save(folder / "input.bit", Folder::asGiven);
  for (const int32_t format : {kDefaultFormat, kLuminance | 7}) {
    CAPTURE(format);
    REQUIRE_FALSE(Floats(picture, format).Save(folder / "input.fdib", Folder::asGiven));
    CHECK(RunRestore(folder, 0, 1).exitCode == 0);
    const Outcome outcome = RunRestore(folder, 2, 1);
    CHECK(IsReported(outcome.output, "\nMode = 2"));
    CHECK(outcome.errors == "");
    CHECK(SamePixels(ReadBytes(folder / "output.bit"), AsBits(folder, "output.fdib")));
  }
  REQUIRE_FALSE(Floats(picture, kDefaultFormat).Save(folder / "input.fdib", Folder::asGiven));
  for (const int threads : {-3, 0, 1, 2}) {
    if (threads > ProcessorCount()) continue;
    CAPTURE(threads);
    CHECK(RunRestore(folder, 1, threads).exitCode == 0);
    const Outcome outcome = RunRestore(folder, 4, threads);
    CHECK(IsReported(outcome.output, "\nMode = 4\nNumber of threads = " + std::to_string(threads)));
    CHECK(outcome.errors == "");
    const std::string expected = AsBits(folder, "output.fdib");
    CHECK(SamePixels(ReadBytes(folder / "output.bit"), expected));
    if (threads != 1) continue;
    std::filesystem::remove(folder / "output.bit");
    CHECK(IsReported(RunRestore(folder, 5, 9).output, "\nMode = 5"));
    CHECK(SamePixels(ReadBytes(folder / "output.bit"), expected));
  }
}

TEST_CASE("mode 4 says that it takes fewer threads than asked for") {
  const ScratchFolder folder;
  Picture(9, 9).Save(folder / "input.bit", Folder::asGiven);
  const std::string most = std::to_string(ProcessorCount()), asked = std::to_string(ProcessorCount() + 5);
  const Outcome outcome = RunRestore(folder, 4, ProcessorCount() + 5);
  CHECK(IsReported(outcome.output, "\nMode = 4\nNumber of threads changed from " + asked + " to " + most +
                                       " because it is the maximum for your CPU."));
}

// On purpose: the graphical program counts on the bit image being processed after the float image, and on where the
// float image is read from.
TEST_CASE("mode 3 reads from the current directory, writes, and goes on as mode 4") {
  const ScratchFolder folder, current;
  const BitImage picture = Picture(20, 30);
  REQUIRE_FALSE(Floats(Picture(11, 13), kDefaultFormat).Save(current / "input.fdib", Folder::asGiven));
  picture.Save(folder / "input.bit", Folder::asGiven);
  const RestoreParameters parameters = TestParameters(5);
  Command command{.arguments = ModeWords(3, parameters, ProcessorCount() + 1),
                  .environment = {"NORV_DIR=" + folder.Path()},
                  .directory = current.Path()};
  const std::string most = std::to_string(ProcessorCount()), asked = std::to_string(ProcessorCount() + 1);
  const std::string said = "\nNumber of threads = " + most;
  const Outcome both = Run(command);
  CHECK(both.exitCode == 0);
  CHECK(IsReported(both.output, "\nMode = 3\nNumber of threads changed from " + asked + " to " + most +
                                    " because it is the maximum for your CPU." + said + said));
  const std::string result = ReadBytes(folder / "output.bit");
  command.arguments[0] = "4";
  CHECK(Run(command).exitCode == 0);
  CHECK(result == ReadBytes(folder / "output.bit"));

  // Without the bit image the first result stays, and the run ends in failure.
  std::filesystem::remove(folder / "input.bit");
  command.arguments[0] = "3";
  const Outcome half = Run(command);
  CHECK(half.exitCode != 0);
  CHECK(half.errors.find("input.bit") != std::string::npos);
  CHECK(half.output.find("Done!") == std::string::npos);
  CHECK(ReadBytes(folder / "output.bit").size() == 8 + 68 * 26);
}

TEST_CASE("empty and missing inputs of the bit modes, and requests that cannot be met") {
  const ScratchFolder folder;
  const Outcome missing = RunRestore(folder, 2, 1);  // the operation runs on the empty image
  CHECK(missing.exitCode == 0);
  CHECK(missing.errors.find("input.fdib") != std::string::npos);
  CHECK(ReadBytes(folder / "output.bit") == std::string(8, '\0'));
  std::filesystem::remove(folder / "output.bit");
  CHECK(RunRestore(folder, 4, 1).exitCode != 0);

  BitImage(0, 7).Save(folder / "input.bit", Folder::asGiven);
  CHECK(RunRestore(folder, 4, 1).exitCode == 0);
  CHECK(ReadBytes(folder / "output.bit") == std::string("\0\0\0\0\x0e\0\0\0", 8));
  std::filesystem::remove(folder / "output.bit");

  Picture(5, 5).Save(folder / "input.bit", Folder::asGiven);
  for (const int32_t factor : {0, -2, 20000}) {
    CAPTURE(factor);
    const Outcome refused = RunRestore(folder, 4, 1, factor);
    CHECK(refused.exitCode != 0);
    CHECK(refused.errors != "");
    CHECK_FALSE(std::filesystem::exists(folder / "output.bit"));
  }
}

#endif
