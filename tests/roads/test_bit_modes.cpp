// Modes 2 to 5 against the float road: the same bytes as ToBytes makes of what modes 0 and 1 give.
#include "platform/team.h"
#include "restore/bit_process.h"
#include "support/messages.h"
#include "support/process.h"
#include "support/restoration.h"
#include "support/test.h"

namespace {

BitImage Picture(int32_t width, int32_t height) {
  BitImage image(width, height);
  for (int32_t r = 0; r < height; ++r)
    for (int32_t c = 0; c < 3 * width; ++c)
      image.rows[r][c] = static_cast<uint8_t>((r / 4 + c / 9) % 2 ? 230 + c % 20 : 20 + (r * 7 + c * 3) % 40);
  return image;
}

// Writes the same picture in display colours, converted to the format.
void SaveFloats(const std::string& path, const BitImage& image, int32_t format = kDefaultFormat) {
  FloatImage floats(image.width, image.height, kDefaultFormat);
  for (int32_t r = 0; r < image.height; ++r)
    for (int32_t c = 0; c < image.width; ++c)
      for (int k = 0; k < 3; ++k) floats.plane[k].z[r][c] = image.rows[r][3 * c + 2 - k];
  floats.ConvertTo(format);
  REQUIRE_FALSE(floats.Save(path, Folder::asGiven));
}

// The bytes of a .bit file that shows output.fdib.
std::string ExpectedBits(const ScratchFolder& folder) {
  FloatImage image;
  REQUIRE_FALSE(image.Load(folder / "output.fdib", Folder::asGiven));
  BitImage bits(image.width, image.height);
  PasteToBitImage(bits, 0, 0, image, nullptr, 0, 0, 0, 0);
  bits.Save(folder / "expected.bit", Folder::asGiven);
  return ReadBytes(folder / "expected.bit");
}

// With no more than the emphasis, of which rounding makes no other bytes.
Outcome RunRestore(const ScratchFolder& folder, int mode, int threads, int32_t factor = 2) {
  Command command = NorvIn(folder, "");
  command.arguments = ModeWords(mode, TestParameters(0, factor, 1), threads);
  command.directory = folder.Path();
  return Run(command);
}

// What a run says that was asked for one thread more than there are processors.
std::string Changed() {
  const int most = ProcessorCount();
  return "\nNumber of threads changed from " + std::to_string(most + 1) + " to " + std::to_string(most) +
         " because it is the maximum for your CPU.";
}

}  // namespace

TEST_CASE("mode 2 is mode 0 in bytes, mode 5 is mode 1 with one thread, mode 4 with as many") {
  const ScratchFolder folder;
  const BitImage picture = Picture(23, 57);
  picture.Save(folder / "input.bit", Folder::asGiven);
  for (const int32_t format : {kLuminance | 7, kDefaultFormat}) {
    CAPTURE(format);
    SaveFloats(folder / "input.fdib", picture, format);
    CHECK(RunRestore(folder, 0, 1).exitCode == 0);
    CheckReported(RunRestore(folder, 2, 1), "\nMode = 2");
    CHECK(ReadBytes(folder / "output.bit") == ExpectedBits(folder));
  }
  const int more = ProcessorCount() + 1;
  for (const int threads : {-3, 0, 1, 2, more}) {
    if (threads > more) continue;
    CAPTURE(threads);
    CHECK(RunRestore(folder, 1, threads).exitCode == 0);
    CheckReported(RunRestore(folder, 4, threads),
                  "\nMode = 4" + (threads == more ? Changed() : "\nNumber of threads = " + std::to_string(threads)));
    CHECK(ReadBytes(folder / "output.bit") == ExpectedBits(folder));
    if (threads != 1) continue;
    fs::remove(folder / "output.bit");
    CheckReported(RunRestore(folder, 5, 9), "\nMode = 5");
    CHECK(ReadBytes(folder / "output.bit") == ExpectedBits(folder));
  }
}

// On purpose: the graphical program counts on the bit image being processed after the float image, and on where the
// float image is read from.
TEST_CASE("mode 3 reads from the current directory, writes, and goes on as mode 4") {
  const ScratchFolder folder, current;
  SaveFloats(current / "input.fdib", Picture(11, 13));
  Picture(20, 30).Save(folder / "input.bit", Folder::asGiven);
  Command command = NorvIn(folder, "");
  command.arguments = ModeWords(3, TestParameters(5), ProcessorCount() + 1);
  command.directory = current.Path();
  const std::string said = "\nNumber of threads = " + std::to_string(ProcessorCount());
  CheckReported(Run(command), "\nMode = 3" + Changed() + said + said);
  const std::string result = ReadBytes(folder / "output.bit");
  command.arguments[0] = "4";
  CHECK(Run(command).exitCode == 0);
  CHECK(result == ReadBytes(folder / "output.bit"));

  // Without the bit image the first result stays, and the run ends in failure.
  fs::remove(folder / "input.bit");
  command.arguments[0] = "3";
  const Outcome half = Run(command);
  CHECK(half.exitCode != 0);
  CHECK(Contains(half.errors, "input.bit"));
  CHECK_FALSE(Contains(half.output, "Done!"));
  CHECK(ReadBytes(folder / "output.bit").size() == 8 + 68 * 26);
}

TEST_CASE("empty and missing inputs of the bit modes, and requests that cannot be met") {
  const ScratchFolder folder;
  const Outcome missing = RunRestore(folder, 2, 1);  // the operation runs on the empty image
  CHECK(missing.exitCode == 0);
  CHECK(Contains(missing.errors, "input.fdib"));
  CHECK(ReadBytes(folder / "output.bit") == std::string(8, '\0'));
  BitImage(0, 7).Save(folder / "input.bit", Folder::asGiven);
  CHECK(RunRestore(folder, 4, 1).exitCode == 0);
  CHECK(ReadBytes(folder / "output.bit") == std::string("\0\0\0\0\x0e\0\0\0", 8));

  fs::remove(folder / "output.bit");
  fs::remove(folder / "input.bit");
  for (const int32_t factor : {2, 0, -2, 20000}) {  // the first without a picture
    CAPTURE(factor);
    const Outcome refused = RunRestore(folder, 4, 1, factor);
    CHECK(refused.exitCode != 0);
    CHECK(refused.errors != "");
    CHECK_FALSE(fs::exists(folder / "output.bit"));
    Picture(5, 5).Save(folder / "input.bit", Folder::asGiven);
  }
}
