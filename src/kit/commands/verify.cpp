#include <algorithm>

#include "kit/command_line.h"
#include "kit/commands/command.h"
#include "kit/failure.h"
#include "kit/guidance/json.h"
#include "kit/guidance/manner.h"
#include "kit/proof/made_again.h"
#include "platform/console.h"

namespace norv {
namespace {

struct Settings {
  std::string result;
  Sources sources;
};

Options Rows(Settings& settings) {
  return {{.name = "RESULT", .target = &settings.result, .help = "a picture with a receipt, inside or beside it"},
          {.name = "--input",
           .target = &settings.sources.input,
           .unit = "FILE",
           .help = "the picture that it was made of",
           .byDefault = "the one of that name beside it"},
          {.name = "--net",
           .target = &settings.sources.net,
           .unit = "FILE",
           .help = "the network that made it, where that is none of norvkit models"}};
}

// Another command of this program, without a word of its own.
void RunQuietly(const std::vector<std::string>& words) {
  const Manner own = RunManner();
  struct Back {
    const Manner& manner;
    ~Back() {
      RunManner() = manner;
      KeepQuiet(manner.quiet);
    }
  } back{own};
  try {
    const std::optional<Command> command = ReadCommandLine(words);
    KeepQuiet(true);
    command->run();
  } catch (const WrongUsage& wrong) {
    Fail("the receipt's settings make no picture: %s", wrong.what());
  }
}

void Run(const Settings& settings) {
  const std::vector<std::string> wrong = WhatDiffers(settings.result, settings.sources, RunQuietly);
  if (RunManner().json)
    SayRow(JsonObject().Text("result", settings.result).Flag("same", wrong.empty()).Texts("differs", wrong),
           !wrong.empty());
  else
    for (const std::string& line : wrong) Complain("%s", line.c_str());
  if (!wrong.empty()) throw SaidFailure();
  if (!RunManner().json) Say("same bits\n");
}

}  // namespace

Command VerifyCommand() {
  return MakeCommand<Settings>({.name = "verify",
                                .purpose = "Make a picture again from its receipt and say whether it is the same",
                                .examples = "norvkit verify large.png\n"
                                            "norvkit verify large.png --input originals/photo.jpg",
                                .notes = "A PNG made by enlarge, restore or denoise carries a receipt: what it was\n"
                                         "made of, by which networks and settings. \"same bits\" and exit code 0, or\n"
                                         "what differs or is missing and 1."},
                               Rows, Run);
}

}  // namespace norv
