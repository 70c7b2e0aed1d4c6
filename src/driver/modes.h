// The table of modes and their operations. Each operation decodes its own parameters, does the whole run's work and
// says how the run ends; a failure that it does not handle is thrown as its message text (const char*).
#pragma once

#include <cstdint>
#include <string>

#include "driver/arguments.h"
#include "driver/parameter_names.h"
#include "restore/parameters.h"

namespace norv {

// What the operations are told besides their parameters.
struct Request {
  const Arguments& arguments;
  int32_t mode;
  int32_t start;       // Clock() when the run began
  int32_t processors;  // asked of the system once
  // What the modes of the restoration are asked for; defaults in all others.
  RestoreParameters restore;
  int32_t threads;  // Threads as the graphical program gives it: how many bands modes 1, 3 and 4 cut
};

enum class Ending {
  report,       // the time and "Done!" follow
  silent,       // the mode has said everything
  interrupted,  // somebody stopped the run; its results so far are saved
};

// Restoration, restore_modes.cpp and (from 2 on) bit_modes.cpp.
Ending RestoreWholeImage(const Request& request);              // 0
Ending RestoreOnThreads(const Request& request);               // 1
Ending RestoreToBitImage(const Request& request);              // 2
Ending RestoreInBandsThenProcessBits(const Request& request);  // 3
Ending ProcessBitsInBands(const Request& request);             // 4
Ending ProcessWholeBits(const Request& request);               // 5
// Denoising, denoise_modes.cpp.
Ending RunComponentDenoiser(const Request& request);  // 6
Ending RunGroupDenoiser(const Request& request);      // 7
// The processor benchmark, benchmark.cpp.
Ending RunBenchmark(const Request& request);  // 8
// The network's training and its samples, training_modes.cpp.
Ending RunTraining(const Request& request);         // 9
Ending AddTrainingPairs(const Request& request);    // 11
Ending ShuffleTrainingSet(const Request& request);  // 12
// The network at work, network_modes.cpp.
Ending EnlargeByNetwork(const Request& request);     // 10
Ending ReportNetStatistics(const Request& request);  // 13
// Nothing but a notice, notice_modes.cpp.
Ending NoticeOfSeries(const Request& request);  // 14
Ending Notice(const Request& request);          // 15

struct Mode {
  int32_t number;
  ParameterNames parameters;  // all of which must stand behind the mode's number; none for the restoration's
  Ending (*run)(const Request& request);
};

// Null for a number that no mode has.
const Mode* FindMode(int32_t number);

// The parameters that must stand behind the number, also of a mode that does not exist: negative ones need those of the
// restoration, others none.
int32_t NeededParameters(int32_t number);

// How to call one mode, in one line, and the whole tool.
std::string UsageOf(int32_t number);
std::string Usage();

}  // namespace norv
