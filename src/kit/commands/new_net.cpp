#include "kit/commands/command.h"
#include "kit/failure.h"
#include "kit/training/start_net.h"
#include "net/net_file.h"

namespace norv {
namespace {

struct NewNetOptions {
  std::string file, start = "random";
  NetPlan plan;
};

// Hidden layers that rectify with a slope, and outputs that may take any value.
constexpr int32_t kUsualKind = 14, kIdentity = 12;

void Declare(CLI::App& command, NewNetOptions& options) {
  NetPlan& plan = options.plan;
  command.add_option("FILE", options.file, "the .net file to write")->required();
  command.add_option("--layout", plan.inputs, "inputs: 8, 24, 48, 49 or 72")->type_name("N");
  command.add_option("--factor", plan.factor, "enlargement: 2 or 4")->type_name("N");
  command.add_option("--hidden", plan.hidden, "units of the hidden layers (default: 64,64; none with --start)")
      ->type_name("N,N")
      ->delimiter(',')
      ->default_str("");
  command
      .add_option("--kinds", plan.kinds,
                  "activation kind of every layer, outputs last (default: 14 and 12; all 12 with --start)")
      ->type_name("K,K,K")
      ->delimiter(',')
      ->default_str("");
  command.add_option("--seed", plan.seed, "seed of the random weights")->type_name("N");
  command.add_option("--start", options.start, "random, or the interpolation that the network answers: cubic, lanczos")
      ->type_name("WAY")
      ->check(CLI::IsMember({"random", "cubic", "lanczos"}));
}

void Run(const NewNetOptions& options) {
  NetPlan plan = options.plan;
  const bool random = options.start == "random";
  if (random && plan.hidden.empty()) plan.hidden = {64, 64};
  if (plan.kinds.empty()) {
    plan.kinds.assign(plan.hidden.size(), random ? kUsualKind : kIdentity);
    plan.kinds.push_back(kIdentity);
  }
  if (const char* reason = WhyNoNet(plan)) RefuseUsage(reason);
  if (random) return SaveNet(RandomNet(plan), options.file, Folder::asGiven);
  const Interpolation interpolation = options.start == "cubic" ? Interpolation::cubic : Interpolation::lanczos;
  if (const char* reason = WhyNoInterpolation(plan, interpolation)) Fail("%s", reason);
  SaveNet(InterpolationNet(plan, interpolation), options.file, Folder::asGiven);
}

}  // namespace

CLI::App& AddNewNet(CLI::App& kit) {
  return AddCommand<NewNetOptions>(kit, "new-net", "Make a network to start from: random, or an interpolation",
                                   "norvkit new-net test.net --layout 48 --factor 2 --hidden 64,64 --kinds 14,14,12\n  "
                                   "norvkit new-net net.net --layout 48 --factor 2 --start lanczos",
                                   Declare, Run);
}

}  // namespace norv
