#include "kit/commands/command.h"
#include "kit/training/training_run.h"
#include "raster/filters.h"

namespace norv {
namespace {

struct TrainOptions {
  TrainingPlan plan;
  double rate = 0.01, finalRate = 0.001;
};

constexpr int32_t kUsualKind = 14, kIdentity = 12;

void DeclareNet(CLI::App& command, NetPlan& net) {
  command.add_option("--layout", net.inputs, "inputs: 8, 24, 48, 49 or 72")->type_name("N");
  command.add_option("--factor", net.factor, "enlargement: 2 or 4")->type_name("N");
  command.add_option("--hidden", net.hidden, "units of the hidden layers (default: 64,64)")
      ->type_name("N,N")
      ->delimiter(',')
      ->default_str("");
  command.add_option("--kinds", net.kinds, "activation kind of every layer, outputs last (default: 14 and 12)")
      ->type_name("K,K,K")
      ->delimiter(',')
      ->default_str("");
  command.add_option("--seed", net.seed, "seed of the random weights")->type_name("N");
}

void DeclarePictures(CLI::App& command, PicturePlan& pictures) {
  command
      .add_option("--shrink", pictures.reduce,
                  "make the pictures so many times smaller first, so that traces of camera and JPEG vanish")
      ->type_name("K")
      ->check(CLI::Range(1, 64));
  command
      .add_option("--order", pictures.shrinkOrder,
                  "filter of the pairs: -1 to -5 cubic, 0 box, 1 tent, 2 to 64 Lanczos, -11 to -22 Gaussian")
      ->type_name("K");
  command
      .add_option("--valid", pictures.valid,
                  "how many pictures are held out, or their names (default: every tenth, at least one)")
      ->type_name("N|NAME,NAME")
      ->default_str("");
}

void DeclareTraining(CLI::App& command, TrainOptions& options) {
  TrainingOptions& training = options.plan.options;
  command.add_option("--epochs", training.iters, "how often every pair is learned")
      ->type_name("N")
      ->check(CLI::Range(1, 1000000));
  command.add_option("--rate", options.rate, "learning rate of the first epoch")->type_name("A");
  command.add_option("--final-rate", options.finalRate, "of the last epoch")->type_name("B");
  command.add_option("--cost", training.costSelection, "cost function, 0 to 4")
      ->type_name("N")
      ->check(CLI::Range(0, 4));
  command
      .add_option("--alternate", training.alternate,
                  "pairs forward (0), forward and backward in turn (1), backward (2)")
      ->type_name("N")
      ->check(CLI::Range(0, 2));
  command.add_option("--threads", training.threads, "1, 4, 8 or 16: the same network")
      ->type_name("N")
      ->check(CLI::IsMember({1, 4, 8, 16}));
  command.add_flag("--resume", options.plan.resume, "go on with the training that OUT_DIR holds");
}

void Declare(CLI::App& command, TrainOptions& options) {
  command.add_option("FOLDER", options.plan.pictures.folder, "pictures to learn from")->required();
  command.add_option("OUT_DIR", options.plan.folder, "where the networks, the log and the curve go")->required();
  DeclareNet(command, options.plan.net);
  DeclarePictures(command, options.plan.pictures);
  DeclareTraining(command, options);
}

void Run(const TrainOptions& options) {
  TrainingPlan plan = options.plan;
  if (plan.net.hidden.empty()) plan.net.hidden = {64, 64};
  if (plan.net.kinds.empty()) {
    plan.net.kinds.assign(plan.net.hidden.size(), kUsualKind);
    plan.net.kinds.push_back(kIdentity);
  }
  if (const char* reason = WhyNoNet(plan.net)) RefuseUsage(reason);
  if (!FilterOfShrinkOrder(plan.pictures.shrinkOrder)) RefuseUsage("--order: there is no such filter");
  plan.pictures.factor = plan.net.factor;
  plan.options.nu0 = static_cast<float>(options.rate);
  plan.options.nuf = static_cast<float>(options.finalRate);
  TrainingRun(plan).Run();
}

}  // namespace

CLI::App& AddTrain(CLI::App& kit) {
  return AddCommand<TrainOptions>(kit, "train", "From a folder of pictures to a network that enlarges",
                                  "norvkit train photographs trained --layout 48 --factor 2 --hidden 64,64 --shrink 3 "
                                  "--epochs 20\n  norvkit train photographs trained --shrink 3 "
                                  "--epochs 30 --resume",
                                  Declare, Run);
}

}  // namespace norv
