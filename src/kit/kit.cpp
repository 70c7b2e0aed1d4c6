#include "kit/kit.h"

#include <algorithm>

#include "kit/command_line.h"
#include "kit/failure.h"
#include "kit/guidance/json.h"
#include "kit/guidance/manner.h"
#include "kit/ranks/ranks.h"
#include "platform/console.h"
#include "platform/threads/crew.h"
#include "simd/levels.h"

namespace norv {
namespace {

constexpr int kGood = 0, kFailed = 1, kWrongUsage = 2, kStopped = 130;

// Why the command line is not even looked at by the rows of a command; empty when it is.
std::string WhyRefused(const std::vector<std::string>& words) {
  if (std::string refusal = ChooseLevelFromEnvironment(); !refusal.empty()) return refusal;
  // The parser would take an empty value for none and skip its checks.
  if (std::ranges::find(words, "") != words.end()) return "an empty word on the command line means nothing";
  return "";
}

void RunCommand(const Command& command) {
  KeepQuiet(RunManner().quiet);
  SetUsualThreads(RunManner().threads);
  if (!command.shared && !World().IsFirst()) return;
  try {
    command.run();
  } catch (const WrongUsage& wrong) {
    throw WrongUsage(wrong.what(), command.name);
  }
}

// A row for programs, unless one has said it; the words for people.
void SayError(const std::string& reason) {
  if (RunManner().json && !ErrorWasSaid()) SayRow(JsonObject().Text("error", reason), true);
}

int Run(const std::vector<std::string>& words) {
  try {
    if (const std::optional<Command> command = ReadCommandLine(words)) RunCommand(*command);
    return kGood;
  } catch (const WrongUsage& wrong) {
    SayError(wrong.what());
    const std::string about = wrong.About().empty() ? "" : wrong.About() + " ";
    Complain("%s\nnorvkit %s--help says more", wrong.what(), about.c_str());
    return kWrongUsage;
  } catch (const Interrupted&) {
    return kStopped;
  } catch (const SomeFailed&) {
  } catch (const SaidFailure&) {
    SayError(FailureInWords());
  } catch (...) {
    const std::string reason = FailureInWords();
    SayError(reason);
    Complain("%s", reason.c_str());
  }
  return kFailed;
}

// What was said and got lost is a failure of its own; a reader that wanted no more needs no word.
int WithItsOutput(int code) {
  bool gone = false;
  const std::string reason = WhyOutputIsLost(gone);
  if (reason.empty()) return code;
  if (!gone) Complain("standard output: %s", reason.c_str());
  return code == kGood ? kFailed : code;
}

}  // namespace

int RunKit(const std::vector<std::string>& arguments) {
  const std::vector<std::string> words(arguments.begin() + 1, arguments.end());
  const std::string refusal = WhyRefused(words);
  if (refusal.empty()) return WithItsOutput(Run(words));
  Complain("%s", refusal.c_str());
  return kWrongUsage;
}

}  // namespace norv
