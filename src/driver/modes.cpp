#include "driver/modes.h"

#include <iterator>

namespace norv {
namespace {

// A mode's number is its place. The parameters of the restoration are a table of their own.
constexpr Mode kModes[] = {
    {0, kNoParameters, RestoreWholeImage},
    {1, kNoParameters, RestoreOnThreads},
    {2, kNoParameters, RestoreToBitImage},
    {3, kNoParameters, RestoreInBandsThenProcessBits},
    {4, kNoParameters, ProcessBitsInBands},
    {5, kNoParameters, ProcessWholeBits},
    {6, kComponentParameters, RunComponentDenoiser},
    {7, kGroupParameters, RunGroupDenoiser},
    {8, kNoParameters, RunBenchmark},
    {9, kTrainingParameters, RunTraining},
    {10, kEnlargementParameters, EnlargeByNetwork},
    {11, kPairsParameters, AddTrainingPairs},
    {12, kNoParameters, ShuffleTrainingSet},
    {13, kNoParameters, ReportNetStatistics},
    {14, kNoParameters, NoticeOfSeries},
    {15, kNoParameters, Notice},
};

constexpr bool StandInTheirPlaces() {
  for (int32_t number = 0; number < static_cast<int32_t>(std::size(kModes)); ++number)
    if (kModes[number].number != number) return false;
  return true;
}
static_assert(StandInTheirPlaces());

}  // namespace

const Mode* FindMode(int32_t number) {
  return number >= 0 && number < static_cast<int32_t>(std::size(kModes)) ? &kModes[number] : nullptr;
}

int32_t NeededParameters(int32_t number) {
  if (IsRestoration(number)) return kRestoreArguments;
  const Mode* mode = FindMode(number);
  return mode ? mode->parameters.Count() : 0;
}

std::string UsageOf(int32_t number) {
  const Mode* mode = FindMode(number);
  const std::string names = IsRestoration(number) ? RestoreArgumentNames()
                            : mode                ? std::string(mode->parameters.Text())
                                                  : "";
  return "norv " + std::to_string(number) + (names.empty() ? "" : " ") + names;
}

std::string Usage() {
  std::string usage = "usage: norv MODE PARAMETER ...\n  norv 0|1|2|3|4|5 " + RestoreArgumentNames();
  for (const Mode& mode : kModes)
    if (!IsRestoration(mode.number)) usage += "\n  " + UsageOf(mode.number);
  return usage;
}

}  // namespace norv
