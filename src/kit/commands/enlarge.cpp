#include <algorithm>
#include <cstdio>

#include "kit/commands/command.h"
#include "kit/commands/shared_rows.h"
#include "kit/failure.h"
#include "kit/pictures/destination.h"
#include "kit/pictures/image_file.h"
#include "kit/pictures/picture.h"
#include "kit/scale/enlarge_to_size.h"
#include "kit/scale/restore_picture.h"
#include "platform/console.h"
#include "platform/team.h"

namespace norv {
namespace {

struct Settings {
  std::string picture, out, method, net, model;
  WantedSize size;
  int32_t threads = 0;
  bool quick = false, denoise = false;
  NetEnlargement how;
  WriteChoice choice;
};

Options NetworkRows(Settings& settings) {
  return {{.name = "--quick", .target = &settings.quick, .help = "one plain pass of a network: an eighth of the work"},
          {.name = "--model",
           .target = &settings.model,
           .unit = "NAME",
           .help = "the network of that name (norvkit models lists them)",
           .byDefault = "the best for the picture"},
          {.name = "--net",
           .target = &settings.net,
           .unit = "FILE",
           .help = "the network in a .net file, plain unless --average",
           .excludes = "--model"},
          {.name = "--average",
           .target = &settings.how.average,
           .help = "with --net: mean over the eight orientations, eight times the work",
           .excludes = "--quick"},
          {.name = "--luminance-only",
           .target = &settings.how.shortcut,
           .help = "with --net: the network for the luminance, a third of the work",
           .aliases = "--shortcut"}};
}

Options Rows(Settings& settings) {
  return Joined({{PictureRow(settings.picture), OutRow(settings.out, "the larger one")},
                 SizeRows(settings.size, "larger", "2, or what --net does"),
                 {{.name = "--method",
                   .target = &settings.method,
                   .unit = "WAY",
                   .check = OneOf{"nearest,cubic,lanczos,net"},
                   .help = "nearest, cubic, lanczos or net",
                   .byDefault = "net"}},
                 NetworkRows(settings),
                 {ThreadsRow(settings.threads), DenoiseFirstRow(settings.denoise)},
                 WriteRows(settings.choice)});
}

bool ByFilter(const Settings& settings) { return !settings.method.empty() && settings.method != "net"; }

// What was said and does nothing in the way that was chosen.
void RefuseIdleOptions(const Settings& settings) {
  const std::pair<const char*, bool> ofNetworks[] = {{"--net", !settings.net.empty()},
                                                     {"--model", !settings.model.empty()},
                                                     {"--quick", settings.quick},
                                                     {"--average", settings.how.average},
                                                     {"--luminance-only", settings.how.shortcut}};
  for (const auto& [option, said] : ofNetworks)
    if (said && ByFilter(settings))
      throw WrongUsage(std::string(option) + " does nothing with --method " + settings.method +
                       ": leave one of them out");
}

Destination OutOf(const Settings& settings, PictureShape shape, const PictureSize& size) {
  shape.width = size.width;
  shape.height = size.height;
  return Destination(settings.out, shape, settings.choice, settings.picture);
}

PictureSource Cleaned(const Settings& settings, PictureSource picture) {
  if (!settings.denoise) return picture;
  Picture whole = AllRows(picture);
  DenoisePicture(whole, {.threads = settings.threads});
  return HeldPicture(std::move(whole));
}

PictureSize WantedOf(const Settings& settings, const PictureShape& shape) {
  return SizeOf(shape, settings.size.Said() ? settings.size : WantedSize{.by = 2}, Direction::larger);
}

// The file's own network, whose factor decides.
NetworkPlan PlanOfFile(const Settings& settings, const PictureShape& shape, PictureSize& size) {
  const int32_t factor = FactorOfNetwork(settings.net);
  size = SizeOf(shape, {.by = static_cast<double>(factor)}, Direction::larger);
  if (settings.size.Said() && WantedOf(settings, shape) != size)
    Fail("%s enlarges %s: leave out --net, or --by %d", settings.net.c_str(), factor == 2 ? "twice" : "four times",
         factor);
  return {{{"", settings.net, factor, {}}}, ""};
}

std::optional<NetworkPlan> PlanByName(const Settings& settings, const PictureShape& shape, const PictureSize& size) {
  const double scale =
      std::max(static_cast<double>(size.width) / shape.width, static_cast<double>(size.height) / shape.height);
  if (!settings.model.empty()) return PlanNetwork(FindModel(settings.model), scale);
  return PlanNetworks(FindModels(), settings.quick ? NetworkWay::quick : NetworkWay::best, {}, scale);
}

std::string ThreadsInWords(int32_t threads) {
  return std::to_string(threads) + (threads == 1 ? " thread" : " threads");
}

void SayChoice(const Settings& settings, const NetworkPlan& plan, const PictureShape& shape, const PictureSize& size) {
  std::fprintf(stderr, "%s, network %s, %s (%s%s)\n", RatioInWords(shape, size).c_str(), plan.Names().c_str(),
               ThreadsInWords(settings.how.threads).c_str(), settings.quick ? "plain, " : "", plan.why.c_str());
}

void RunNetwork(Settings settings) {
  PictureSource picture = OpenImage(settings.picture);
  const PictureShape shape = picture.shape;
  PictureSize size;
  if (!settings.net.empty()) {
    const NetworkPlan plan = PlanOfFile(settings, shape, size);
    const Destination out = OutOf(settings, shape, size);
    return EnlargeByNetworks(Cleaned(settings, std::move(picture)), plan, settings.how, size, out);
  }
  size = WantedOf(settings, shape);
  const Destination out = OutOf(settings, shape, size);
  settings.how = {.average = !settings.quick, .shortcut = true, .threads = settings.how.threads};
  if (const auto plan = PlanByName(settings, shape, size)) {
    SayChoice(settings, *plan, shape, size);
    return EnlargeByNetworks(Cleaned(settings, std::move(picture)), *plan, settings.how, size, out);
  }
  if (settings.method == "net") Fail("%s", NoNetworks().c_str());
  Warn("%s; so Lanczos-3 enlarges, which is worse", NoNetworks().c_str());
  EnlargeByFilter(Cleaned(settings, std::move(picture)), ResizeFilter::lanczos, size, out);
}

void Run(const Settings& asked) {
  RefuseIdleOptions(asked);
  Settings settings = asked;
  if (settings.threads == 0) settings.threads = ProcessorCount();
  settings.how.threads = settings.threads;
  if (!ByFilter(settings)) return RunNetwork(settings);
  PictureSource picture = OpenImage(settings.picture);
  const PictureSize size = WantedOf(settings, picture.shape);
  const Destination out = OutOf(settings, picture.shape, size);
  EnlargeByFilter(Cleaned(settings, std::move(picture)),
                  settings.method == "nearest" ? ResizeFilter::nearest
                  : settings.method == "cubic" ? ResizeFilter::cubic
                                               : ResizeFilter::lanczos,
                  size, out);
}

}  // namespace

Command EnlargeCommand() {
  return MakeCommand<Settings>({.name = "enlarge",
                                .purpose = "Make a picture larger: by the best network there is, or by interpolation",
                                .examples = "norvkit enlarge photo.jpg large.jpg\n"
                                            "norvkit enlarge photo.jpg large.png --width 3000\n"
                                            "norvkit enlarge photo.jpg large.png --by 4 --quick\n"
                                            "norvkit enlarge small.png large.png --net test.net --average"},
                               Rows, Run);
}

}  // namespace norv
