#include "driver/modes.h"

#include <algorithm>
#include <iterator>

namespace norv {
namespace {

constexpr Mode kModes[] = {
    {0, kRestoreArguments, nullptr, RestoreWholeImage},
    {1, kRestoreArguments, nullptr, RestoreOnThreads},
    {2, kRestoreArguments, nullptr, RestoreToBitImage},
    {3, kRestoreArguments, nullptr, RestoreInBandsThenProcessBits},
    {4, kRestoreArguments, nullptr, ProcessBitsInBands},
    {5, kRestoreArguments, nullptr, ProcessWholeBits},
    {6, 9, "SIGMA SIDE COMPONENTS HARD LUMINANCE THREADS VARIANT FILE FINISH", RunComponentDenoiser},
    {7, 11, "ITERATIONS SIDE SIGMA STRENGTH FEEDBACK PARALLEL LUMINANCE RANKED TWO_STEP FILE FINISH", RunGroupDenoiser},
    {8, 0, "", RunBenchmark},
    {9, 9, "ITERS NU0 NUF COST_SELECTION ALTERNATE CLIP MOMENTUM THREADS SOUND", RunTraining},
    {10, 3, "AVERAGE THREADS SHORTCUT", EnlargeByNetwork},
    {11, 5, "INDEX TOTAL INPUTS OUTPUTS SHRINK_ORDER", AddTrainingPairs},
    {12, 0, "", ShuffleTrainingSet},
    {13, 0, "", ReportNetStatistics},
    {14, 0, "", NoticeOfSeries},
    {15, 0, "", Notice},
};

}  // namespace

const Mode* FindMode(int32_t number) {
  const auto* mode = std::find_if(std::begin(kModes), std::end(kModes), [&](auto& m) { return m.number == number; });
  return mode == std::end(kModes) ? nullptr : mode;
}

int32_t NeededParameters(int32_t number) {
  if (number < 0) return kRestoreArguments;
  const Mode* mode = FindMode(number);
  return mode ? mode->parameters : 0;
}

std::string UsageOf(int32_t number) {
  const Mode* mode = FindMode(number);
  const std::string names = mode && mode->names ? mode->names : NeededParameters(number) ? RestoreArgumentNames() : "";
  return "norv " + std::to_string(number) + (names.empty() ? "" : " ") + names;
}

std::string Usage() {
  std::string usage = "usage: norv MODE PARAMETER ...\n  norv 0|1|2|3|4|5 " + RestoreArgumentNames();
  for (const Mode& mode : kModes)
    if (mode.names) usage += "\n  " + UsageOf(mode.number);
  return usage;
}

}  // namespace norv
