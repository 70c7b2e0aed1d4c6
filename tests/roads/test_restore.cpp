// Modes 0 to 5 as the graphical program runs them: planes of floats in modes 0 and 1, bytes in the others.
#include "platform/team.h"
#include "restore/bit_process.h"
#include "support/process.h"
#include "support/restoration.h"
#include "support/test.h"

namespace {

// The first with no more than the emphasis, of which rounding makes no other bytes.
const RestoreParameters kEmphasis = TestParameters(0, 2, 1), kUsual = TestParameters(5, 2, 1);

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

FloatImage FloatResult(const ScratchFolder& folder) {
  FloatImage image;
  REQUIRE_FALSE(image.Load(folder / "output.fdib", Folder::asGiven));
  return image;
}

// The bytes of a .bit file that shows output.fdib.
std::string ExpectedBits(const ScratchFolder& folder) {
  const FloatImage image = FloatResult(folder);
  BitImage bits(image.width, image.height);
  PasteToBitImage(bits, 0, 0, image, nullptr, 0, 0, 0, 0);
  bits.Save(folder / "expected.bit", Folder::asGiven);
  return ReadBytes(folder / "expected.bit");
}

Outcome RunMode(const ScratchFolder& folder, int mode, int threads, const RestoreParameters& asked = kEmphasis,
                const std::string& directory = "") {
  Command command = NorvIn(folder, "");
  command.arguments = ModeWords(mode, asked, threads);
  command.directory = directory.empty() ? folder.Path() : directory;
  return Run(command);
}

// What is said of a number of threads, and of one that is too large.
std::string Threads(int number) { return "\nNumber of threads = " + std::to_string(number); }
std::string Changed(int number) {
  return "\nNumber of threads changed from " + std::to_string(number) + " to " + std::to_string(ProcessorCount()) +
         " because it is the maximum for your CPU.";
}

// Without `border` rows at the top and at the bottom.
double LargestDifference(const FloatImage& a, const FloatImage& b, int32_t border = 0) {
  double largest = 0;
  for (int32_t p = 0; p < a.planes; ++p)
    for (int32_t i = border * a.width; i < a.plane[p].mn - border * a.width; ++i)
      largest = std::max(largest, static_cast<double>(std::abs(a.plane[p].x[i] - b.plane[p].x[i])));
  return largest;
}

}  // namespace

TEST_CASE(
    "modes 0 and 1 enlarge and say so; the seams of bands do not show, thread counts are clamped or worked as one") {
  const ScratchFolder folder;
  SaveFloats(folder / "input.fdib", Picture(30, 70));
  CheckReported(RunMode(folder, 0, 9, kUsual), "\nMode = 0");
  const FloatImage whole = FloatResult(folder);
  CHECK((whole.width == 60 && whole.height == 140 && whole.format == kDefaultFormat));
  const auto banded = [&](int threads) {
    const int most = ProcessorCount();
    CheckReported(RunMode(folder, 1, threads, kUsual),
                  "\nMode = 1" + (threads > most ? Changed(threads) + Threads(most) : Threads(threads)));
    return FloatResult(folder);
  };
  const FloatImage one = banded(1);
  // Behind the margins the band's edge is that of the mirrored picture.
  CHECK(LargestDifference(whole, one) > 0);
  CHECK(LargestDifference(whole, one, 20) < 3);  // of steps of 200 grey levels
  CHECK(LargestDifference(one, banded(-3)) == 0);
  for (const int threads : {2, 1000}) CHECK(LargestDifference(one, banded(threads)) < 3);
}

TEST_CASE("mode 2 is mode 0 in bytes, mode 5 is mode 1 with one thread, mode 4 with as many") {
  const ScratchFolder folder;
  const BitImage picture = Picture(23, 57);
  picture.Save(folder / "input.bit", Folder::asGiven);
  for (const int32_t format : {kLuminance | 7, kDefaultFormat}) {
    CAPTURE(format);
    SaveFloats(folder / "input.fdib", picture, format);
    CHECK(RunMode(folder, 0, 1).exitCode == 0);
    CheckReported(RunMode(folder, 2, 1), "\nMode = 2");
    CHECK(ReadBytes(folder / "output.bit") == ExpectedBits(folder));
  }
  const int most = ProcessorCount();
  for (const int threads : {-3, 0, 1, 2, most + 1}) {
    CAPTURE(threads);
    CHECK(RunMode(folder, 1, threads).exitCode == 0);
    CheckReported(RunMode(folder, 4, threads), "\nMode = 4" + (threads > most ? Changed(threads) : Threads(threads)));
    CHECK(ReadBytes(folder / "output.bit") == ExpectedBits(folder));
    if (threads != 1) continue;
    fs::remove(folder / "output.bit");
    CheckReported(RunMode(folder, 5, 9), "\nMode = 5");
    CHECK(ReadBytes(folder / "output.bit") == ExpectedBits(folder));
  }
}

// On purpose: the graphical program counts on the bit image being processed after the float image, and on where the
// float image is read from.
TEST_CASE("mode 3 reads from the current directory, writes, and goes on as mode 4") {
  const ScratchFolder folder, current;
  const int most = ProcessorCount();
  SaveFloats(current / "input.fdib", Picture(11, 13));
  Picture(20, 30).Save(folder / "input.bit", Folder::asGiven);
  const auto run = [&](int mode) { return RunMode(folder, mode, most + 1, kUsual, current.Path()); };
  CheckReported(run(3), "\nMode = 3" + Changed(most + 1) + Threads(most) + Threads(most));
  const std::string result = ReadBytes(folder / "output.bit");
  CHECK(run(4).exitCode == 0);
  CHECK(result == ReadBytes(folder / "output.bit"));

  // Without the bit image the first result stays, and the run ends in failure.
  fs::remove(folder / "input.bit");
  const Outcome half = run(3);
  CheckEnded(half, 1, "input.bit");
  CHECK_FALSE(Contains(half.output, "Done!"));
  CHECK(ReadBytes(folder / "output.bit").size() == 8 + 68 * 26);
}

TEST_CASE("a missing or empty picture is an empty one; a request that cannot be met has a reason and nothing written") {
  const ScratchFolder folder;
  const std::string floats = folder / "output.fdib", bytes = folder / "output.bit";
  for (const int mode : {0, 1, 2}) {
    CheckEnded(RunMode(folder, mode, 1), 0, "input.fdib");
    CHECK(ReadBytes(mode == 2 ? bytes : floats) == (mode == 2 ? Int32Bytes({0, 0}) : Int32Bytes({0, 0, 23, 0})));
  }
  BitImage(0, 7).Save(folder / "input.bit", Folder::asGiven);
  CHECK(RunMode(folder, 4, 1).exitCode == 0);
  CHECK(ReadBytes(bytes) == Int32Bytes({0, 14}));

  for (const std::string& path : {floats, bytes, folder / "input.bit"}) fs::remove(path);
  REQUIRE_FALSE(FloatImage(8, 8, 0x100).Save(folder / "input.fdib", Folder::asGiven));
  // The first of an image of an unknown format, and of none.
  for (const auto& [factor, code] : {std::pair{2, -1}, {0, -1}, {-4, -1}, {2, 6}, {2, -36}, {2000000000, -1}}) {
    for (const int mode : {0, 1, 4}) {
      RestoreParameters asked = kUsual;
      asked.factor = factor, asked.kernelCode = code;
      INFO("mode ", mode, " factor ", asked.factor, " kernel ", asked.kernelCode);
      const Outcome refused = RunMode(folder, mode, 1, asked);
      CHECK((refused.exitCode == 1 && refused.errors.size() > 10));
      CHECK_FALSE((fs::exists(floats) || fs::exists(bytes)));
    }
    SaveFloats(folder / "input.fdib", Picture(8, 8));
    Picture(8, 8).Save(folder / "input.bit", Folder::asGiven);
  }
}
