#include "kit/commands/command.h"
#include "kit/commands/shared_rows.h"
#include "kit/failure.h"
#include "kit/guidance/manner.h"
#include "kit/pictures/destination.h"
#include "kit/training/start_net.h"
#include "net/net_file.h"

namespace norv {
namespace {

struct Settings {
  std::string file, start = "random";
  NetPlan plan;
  bool overwrite = false;
};

Options Rows(Settings& settings) {
  return Joined({{{.name = "FILE", .target = &settings.file, .help = "the .net file to write"}},
                 NetRows(settings.plan, "64,64; none with --start", "14 and 12; all 12 with --start"),
                 {{.name = "--start",
                   .target = &settings.start,
                   .unit = "WAY",
                   .check = OneOf{"random,cubic,lanczos"},
                   .help = "random, or the interpolation that the network answers: cubic, lanczos"},
                  OverwriteRow(settings.overwrite)}});
}

NeuralNet NetOf(const NetPlan& plan, const std::string& start) {
  if (start == "random") return RandomNet(plan);
  const Interpolation interpolation = start == "cubic" ? Interpolation::cubic : Interpolation::lanczos;
  if (const std::string reason = WhyNoInterpolation(plan, interpolation); !reason.empty()) throw Failure(reason);
  return InterpolationNet(plan, interpolation);
}

void Run(const Settings& settings) {
  NetPlan plan = settings.plan;
  const bool random = settings.start == "random";
  if (random && plan.hidden.empty()) plan.hidden = {64, 64};
  ChooseKinds(plan, random ? kSlopedRampKind : kIdentityKind);
  if (!random && plan.seed != NetPlan().seed)
    throw WrongUsage("--seed does nothing with --start " + settings.start + ": leave one of them out");
  if (const std::string reason = WhyNoNet(plan); !reason.empty()) throw WrongUsage(reason);
  RequireFree(settings.file, settings.overwrite);
  SaveNet(NetOf(plan, settings.start), settings.file, Folder::asGiven);
  SayWritten("", settings.file);
}

}  // namespace

Command NewNetCommand() {
  return MakeCommand<Settings>(
      {.name = "new-net",
       .purpose = "Make a network to start from: random, or an interpolation",
       .examples = "norvkit new-net test.net --inputs 48 --factor 2 --hidden 64,64 --kinds 14,14,12\n"
                   "norvkit new-net net.net --inputs 48 --factor 2 --start lanczos"},
      Rows, Run);
}

}  // namespace norv
