#include "driver/tool.h"

#include <cstdio>
#include <exception>
#include <new>

#include "driver/arguments.h"
#include "driver/modes.h"
#include "driver/report.h"
#include "platform/clock.h"
#include "platform/console.h"
#include "platform/paths.h"
#include "platform/team.h"
#include "simd/levels.h"

namespace norv {
namespace {

constexpr int kRan = 0, kFailed = 1, kWrongUse = 2;
constexpr int kInterrupted = 130;  // as a shell reports a run that Ctrl-C ended

Request MakeRequest(const Arguments& arguments, int32_t mode, int32_t start) {
  Request request{arguments, mode, start, ProcessorCount(), DefaultRestoreParameters(), 1};
  if (IsRestoration(mode)) {
    request.restore = DecodeRestoreParameters(arguments);
    request.threads = arguments.Integer(kThreadsPosition);
  }
  return request;
}

int RunMode(const Request& request) {
  const Mode* mode = FindMode(request.mode);
  const Ending ending = mode ? mode->run(request) : Ending::report;
  if (ending == Ending::report) SayEndReport(request.start);
  return ending == Ending::interrupted ? kInterrupted : kRan;
}

int Run(const Arguments& arguments) {
  Say("\nBegin 64 bit Command Line Processing\nVersion 5.6");
  const int32_t start = Clock();
  ExecutableDirectory();
  if (const std::string refusal = ChooseLevelFromEnvironment(); !refusal.empty()) {
    Complain("%s", refusal.c_str());
    return kWrongUse;
  }
  if (arguments.Count() < 2) {
    Complain("no mode was given\n%s", Usage().c_str());
    return kWrongUse;
  }
  const int32_t mode = arguments.Integer(1), given = arguments.Count() - 2, needed = NeededParameters(mode);
  if (given < needed) {
    Complain("mode %d needs %d parameters, not %d\nusage: %s", mode, needed, given, UsageOf(mode).c_str());
    return kWrongUse;
  }
  const Request request = MakeRequest(arguments, mode, start);
  Say("\nMode = %d", mode);
  return RunMode(request);
}

int Fail(const char* reason) {
  std::fflush(stdout);
  Complain("%s", reason);
  return kFailed;
}

}  // namespace

int RunTool(const std::vector<std::string>& arguments) {
  try {
    return Run(Arguments(arguments));
  } catch (const char* reason) {
    return Fail(reason);
  } catch (const std::bad_alloc&) {
    return Fail("out of memory");
  } catch (const std::exception& failure) {
    return Fail(failure.what());
  }
}

}  // namespace norv
