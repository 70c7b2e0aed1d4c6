#include <algorithm>
#include <memory>

#include "kit/commands/command.h"
#include "kit/commands/shared_rows.h"
#include "kit/failure.h"
#include "kit/ranks/ranks.h"
#include "kit/training/seed_search.h"
#include "kit/training/training_run.h"
#include "kit/work/settings_text.h"
#include "net/net_file.h"
#include "net/team_size.h"
#include "platform/threads/crew.h"
#include "raster/filters.h"

namespace norv {
namespace {

struct Settings {
  TrainingPlan plan;
  std::string jpeg, seeds;
  double rate = 0.01, finalRate = 0.001;
};

Options PictureRows(Settings& settings) {
  PicturePlan& pictures = settings.plan.pictures;
  return {{.name = "--shrink",
           .target = &pictures.reduce,
           .unit = "K",
           .check = Between{1, 64},
           .help = "make the pictures so many times smaller first, so that traces of camera and JPEG vanish"},
          {.name = "--filter",
           .target = &pictures.shrinkOrder,
           .unit = "K",
           .check = Between{-22, 64, true},
           .help = std::string("that makes the small half of a pair: ") + kShrinkOrders,
           .aliases = "--order"},
          {.name = "--jpeg",
           .target = &settings.jpeg,
           .unit = "Q-Q",
           .help = "compress the shrunk pictures as JPEG files of these qualities: a network for such files"},
          {.name = "--valid",
           .target = &pictures.valid,
           .unit = "N|NAME,NAME",
           .help = "how many pictures are held out, or their names",
           .byDefault = "every tenth, at least one"}};
}

Options LearningRows(Settings& settings) {
  TrainingOptions& training = settings.plan.options;
  return {
      {.name = "--epochs",
       .target = &training.iters,
       .unit = "N",
       .check = Between{1, 1000000},
       .help = "how often every pair is learned"},
      {.name = "--rate",
       .target = &settings.rate,
       .unit = "A",
       .check = Between{0, 1000},
       .help = "learning rate of the first epoch"},
      {.name = "--final-rate",
       .target = &settings.finalRate,
       .unit = "B",
       .check = Between{0, 1000},
       .help = "of the last epoch"},
      {.name = "--cost",
       .target = &training.costSelection,
       .unit = "N",
       .check = Between{0, 4},
       .help = "cost function, 0 to 4"},
      {.name = "--alternate",
       .target = &training.alternate,
       .unit = "N",
       .check = Between{0, 2},
       .help = "pairs forward (0), forward and backward in turn (1), backward (2)"},
      {.name = "--patience",
       .target = &settings.plan.patience,
       .unit = "N",
       .check = Between{1, 1000000},
       .help = "stop after N epochs without a better PSNR of the held-out pictures",
       .byDefault = "never"},
      {.name = "--from",
       .target = &settings.plan.from,
       .unit = "NET",
       .help = "start from this .net file; --hidden may add units to its layers",
       .byDefault = "random weights",
       .excludes = "--inputs,--factor,--kinds"},
      {.name = "--resume", .target = &settings.plan.resume, .help = "go on with the training that OUT_DIR holds"},
      {.name = "--seeds",
       .target = &settings.seeds,
       .unit = "N-N",
       .help = "train from each of these seeds (1-16, or 3,5,9), skip those that are trained, keep the best network",
       .excludes = "--seed"}};
}

Options Rows(Settings& settings) {
  TrainingPlan& plan = settings.plan;
  return Joined({{{.name = "FOLDER", .target = &plan.pictures.folder, .help = "pictures to learn from"},
                  {.name = "OUT_DIR", .target = &plan.folder, .help = "where the networks, the log and the curve go"}},
                 NetRows(plan.net, "64,64", "14 and 12"),
                 PictureRows(settings),
                 LearningRows(settings)});
}

// The layers that --from's file has, and --hidden widens.
NetPlan PlanFrom(const TrainingPlan& asked) {
  NeuralNet net;
  LoadNet(net, asked.from, Folder::asGiven);
  if (net.layers.empty()) Fail("%s: an empty network", asked.from.c_str());
  NetPlan plan = LayersOf(net, asked.net.hidden);
  plan.seed = asked.net.seed;
  if (const std::string reason = WhyNotWider(net, plan); !reason.empty())
    Fail("%s: %s", asked.from.c_str(), reason.c_str());
  return plan;
}

// What decides the networks of a search, in words: how far and how fast they are trained may change.
std::string SearchSettings(Settings settings) {
  Settings untouched;
  TrainingPlan& plan = settings.plan;
  plan.options.iters = untouched.plan.options.iters;
  plan.patience = untouched.plan.patience;
  plan.resume = false;
  settings.seeds.clear();
  const std::vector<std::string> words = SettingsWords(Rows(settings), Rows(untouched));
  return LineOfWords(words);
}

// The largest team that training knows.
int32_t TeamWithin(int32_t threads) {
  return *std::ranges::find_if(std::rbegin(kTeamSizes), std::rend(kTeamSizes), [&](int32_t n) { return n <= threads; });
}

void Run(const Settings& settings) {
  TrainingPlan plan = settings.plan;
  plan.threads = UsualThreads();
  plan.options.threads = TeamWithin(plan.threads);
  if (plan.from.empty() && plan.net.hidden.empty()) plan.net.hidden = {64, 64};
  if (plan.from.empty()) ChooseKinds(plan.net, kSlopedRampKind);
  if (!plan.from.empty()) plan.net = PlanFrom(plan);
  if (const std::string reason = WhyNoNet(plan.net); !reason.empty()) throw WrongUsage(reason);
  if (!FilterOfShrinkOrder(plan.pictures.shrinkOrder)) throw WrongUsage("--order: there is no such filter");
  if (!settings.jpeg.empty()) plan.pictures.jpeg = ReadQualityRange(settings.jpeg);
  if (plan.patience > 0 && !plan.pictures.valid.empty() &&
      plan.pictures.valid.find_first_not_of('0') == std::string::npos)
    throw WrongUsage("--patience needs held-out pictures: leave out --valid 0");
  plan.pictures.factor = plan.net.factor;
  plan.options.nu0 = static_cast<float>(settings.rate);
  plan.options.nuf = static_cast<float>(settings.finalRate);
  if (!settings.seeds.empty()) return SearchSeeds(plan, ReadSeeds(settings.seeds), SearchSettings(settings));
  if (World().IsFirst()) TrainingRun(plan, std::make_shared<const TrainingPictures>(plan.pictures)).Run();
}

}  // namespace

Command TrainCommand() {
  Command command = MakeCommand<Settings>(
      {.name = "train",
       .purpose = "From a folder of pictures to a network that enlarges",
       .examples = "norvkit train photographs trained --inputs 48 --factor 2 --hidden 64,64 --shrink 3 --epochs 20\n"
                   "norvkit train photographs trained --shrink 3 --epochs 30 --resume\n"
                   "norvkit train photographs trained --shrink 3 --seeds 1-16"},
      Rows, Run);
  command.shared = true;
  return command;
}

}  // namespace norv
