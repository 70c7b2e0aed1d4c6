// What a restoration is estimated to need of memory against what it then takes.
#ifndef NORV_SANITIZED

#include <fstream>
#include <malloc.h>
#include <sys/resource.h>

#include "image/bit_image.h"
#include "platform/memory.h"
#include "raster/bands.h"
#include "restore/bit_process.h"
#include "restore/memory_need.h"
#include "restore/restore_image.h"
#include "support/places.h"
#include "support/process.h"
#include "support/random_image.h"
#include "support/restoration.h"
#include "support/test.h"

namespace {

int64_t StatusBytes(const std::string& key) {
  std::ifstream status("/proc/self/status");
  for (std::string word; status >> word;)
    if (word == key && status >> word) return std::stoll(word) * 1024;
  return 0;
}

// The largest resident memory beyond what was there before.
int64_t PeakOf(const std::function<void()>& work) {
  malloc_trim(0);
  std::ofstream("/proc/self/clear_refs") << 5;  // the peak begins anew
  const int64_t before = StatusBytes("VmRSS:");
  work();
  return StatusBytes("VmHWM:") - before;
}

RestoreParameters Quick(int32_t type) {
  RestoreParameters parameters = TestParameters(type, 2, 1);
  parameters.steps = 2, parameters.iterations = 1, parameters.edgeThreshold = 0;  // every pixel an edge: the most
  return parameters;
}

// 0 bands: the image as a whole.
void CheckEstimate(const RestoreParameters& parameters, int32_t w, int32_t h, int32_t format, int32_t bands,
                   int32_t threads) {
  int64_t estimated = RestorationMemory(parameters, w, h, format, threads);
  if (bands) {
    const int64_t result = int64_t{3} * 4 * w * h * 4, whole = estimated;
    estimated = result + BandsMemory(parameters, w, PlanBands(h, bands).height, format, threads);
    CHECK((threads > 1 || estimated < whole));
  }
  FloatImage image = RandomFloatImage(w, h, format);
  const int64_t measured = PeakOf([&] {
    StandingTeam team(threads);
    bands ? RestoreImageInBands(image, parameters, bands, threads) : RestoreImage(image, parameters, nullptr, team);
  });
  INFO("type ", parameters.type, " format ", format, " threads ", threads, ": ", estimated, " against ", measured);
  CHECK(estimated >= measured);
  CHECK(static_cast<double>(estimated) <= 1.3 * static_cast<double>(measured));
}

// The memory of an emulated process is its emulator's.
bool IsEmulated() { return !EmulatorWords().empty(); }

}  // namespace

// Whatever ran before leaves gaps in the heap that count, so these run in processes of their own.
TEST_CASE("estimated and measured: what a restoration needs, for every type" * doctest::skip()) {
  for (int32_t type = -1; type <= 7; ++type)
    for (const int32_t format : {kDefaultFormat, 0x2000, 0x80}) {
      if (format != kDefaultFormat && type != 0 && type != 7) continue;
      RestoreParameters parameters = Quick(type);
      if (format == 0x80) parameters.representation = 0;
      for (const int32_t threads : {1, 4})
        CheckEstimate(parameters, 640, 471, format, 0, threads);  // planes that the C library does not keep
    }
  // Smoothing that keeps much of the tensor, and filters with long taps.
  RestoreParameters parameters = Quick(1);
  parameters.orientationScale = 30, parameters.kernelCode = 15, parameters.factor = 3;
  CheckEstimate(parameters, 400, 340, kDefaultFormat, 0, 1);
}

TEST_CASE("estimated and measured: bands take the memory of as many as there are threads" * doctest::skip()) {
  for (const int32_t threads : {1, 2}) CheckEstimate(Quick(5), 3000, 350, kDefaultFormat, 7, threads);
}

TEST_CASE("what a restoration will need of memory is estimated" * doctest::skip(IsEmulated())) {
  const std::string self = fs::read_symlink("/proc/self/exe");
  for (const std::string what : {"what a restoration needs*", "bands take*"}) {
    const Outcome outcome =
        Run({.arguments = {"--no-skip", "-tc=estimated and measured: " + what}, .executable = self});
    CAPTURE(outcome.output);
    CHECK((outcome.exitCode == 0 && Contains(outcome.output, "1 passed")));
  }
}

TEST_CASE("what the machine lacks is refused before anything is changed" * doctest::skip(IsEmulated())) {
  RestoreParameters parameters = Quick(5);
  parameters.factor = 150;
  FloatImage image = RandomFloatImage(300, 300, kDefaultFormat);
  const rlimit limit{size_t{4} << 30, RLIM_INFINITY};
  rlimit before;
  REQUIRE(getrlimit(RLIMIT_AS, &before) == 0);
  REQUIRE(setrlimit(RLIMIT_AS, &limit) == 0);
  CHECK(AvailableMemory() < limit.rlim_cur);
  BitImage bits(300, 300);
  const std::function<void()> roads[] = {[&] { RestoreImage(image, parameters); },
                                         [&] { RestoreImageInBands(image, parameters, 2, 2); },
                                         [&] { ProcessBitImage(bits, parameters, kDefaultFormat, 2); }};
  for (const auto& road : roads)
    CHECK_THROWS_WITH_AS(road(), doctest::Contains(" MB memory for matrix x member.\n\nmatrix::dim"), const char*);
  setrlimit(RLIMIT_AS, &before);
  CHECK((image.width == 300 && bits.width == 300));
}

#endif
