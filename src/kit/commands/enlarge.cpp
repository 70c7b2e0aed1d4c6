#include <algorithm>
#include <cstdio>

#include "kit/commands/command.h"
#include "kit/commands/shared_rows.h"
#include "kit/failure.h"
#include "kit/scale/enlarge_to_size.h"
#include "kit/scale/restore_picture.h"
#include "kit/scale/restore_presets.h"
#include "kit/search/blur_estimate.h"
#include "kit/search/stored_presets.h"
#include "kit/work/run_work.h"
#include "net/neural_net.h"
#include "platform/console.h"
#include "platform/paths.h"

namespace norv {
namespace {

struct Settings {
  std::string method, net, model, preset;
  WantedSize size;
  bool quick = false, denoise = false;
  NetEnlargement how;
  KnobValues knobs;
  WorkChoice choice;
};

Options NetworkRows(Settings& settings) {
  return {{.name = "--quick", .target = &settings.quick, .help = "one plain pass of a network: an eighth of the work"},
          {.name = "--model",
           .target = &settings.model,
           .unit = "NAME",
           .help = "the network of that name (norvkit models lists them)",
           .byDefault = "the best for the picture",
           .named = Named::network},
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
  return Joined(
      {PlaceRows(settings.choice.places, "the larger one"),
       SizeRows(settings.size, "larger", "2, or what --net does"),
       {{.name = "--method",
         .target = &settings.method,
         .unit = "WAY",
         .check = OneOf{"nearest,cubic,lanczos,net,both,restore"},
         .help = "nearest, cubic, lanczos, net, both: a network, then restoration from its answer; or restore, alone",
         .byDefault = "both; net with --net or --quick"},
        {.name = "--preset",
         .target = &settings.preset,
         .unit = "NAME",
         .help = "of the restoration: clean, compressed (JPEG), noisy or drawn; or what norvkit rank keeps",
         .byDefault = "by the picture",
         .named = Named::preset}},
       NetworkRows(settings),
       {DenoiseFirstRow(settings.denoise), CertificateRow(settings.choice.certificate)},
       KnobRows(settings.knobs, true),
       ReceiptRows(settings.choice.receipt),
       WorkRows(settings.choice)});
}

// By restoration alone.
bool Restoring(const Settings& settings) { return settings.method == "restore"; }

bool ByFilter(const Settings& settings) {
  return !settings.method.empty() && settings.method != "net" && settings.method != "both" && !Restoring(settings);
}

// Whether restoration follows the networks, as far as the command line decides it.
bool Refining(const Settings& settings) {
  if (!settings.method.empty()) return settings.method == "both" || Restoring(settings);
  return (settings.net.empty() && !settings.quick) || !settings.preset.empty() || FirstSaid(settings.knobs);
}

// In its own size.
bool Sharpening(const Settings& settings) { return settings.size.by == 1; }

// What was said and does nothing in the way that was chosen.
void RefuseIdleOptions(const Settings& settings) {
  struct Said {
    const char* option;
    bool said, idle;
  };
  const char* knob = FirstSaid(settings.knobs);
  const bool noNetwork = ByFilter(settings) || Restoring(settings) || Sharpening(settings);
  const std::string chosen = Sharpening(settings) ? "--by 1" : "--method " + settings.method;
  for (const auto& [option, said, idle] : {Said{"--net", !settings.net.empty(), noNetwork},
                                           {"--model", !settings.model.empty(), noNetwork},
                                           {"--quick", settings.quick, noNetwork},
                                           {"--average", settings.how.average, noNetwork},
                                           {"--luminance-only", settings.how.shortcut, noNetwork},
                                           {"--preset", !settings.preset.empty(), !Refining(settings)},
                                           {knob, knob != nullptr, !Refining(settings)},
                                           {"--method", !settings.method.empty(),
                                            Sharpening(settings) && (ByFilter(settings) || settings.method == "net")}})
    if (said && idle)
      throw WrongUsage(std::string(option) + " does nothing with " + chosen + ": leave one of them out");
}

PictureSize WantedOf(const Settings& settings, const PictureShape& shape) {
  return SizeOf(shape, settings.size.Said() ? settings.size : WantedSize{.by = 2}, Direction::larger);
}

// Networks that have learned what compression leaves know more of it than a restoration. For pictures of good files
// the others are better, and what they take for detail is smoothed.
std::string PresetFor(const Settings& settings, const NetworkPlan& plan, const PictureShape& shape) {
  if (!settings.preset.empty()) return settings.preset;
  const bool asked = settings.method == "both" || FirstSaid(settings.knobs);
  if (plan.passes[0].facts.ForCompressed() && !asked) return "";
  return shape.jpegQuality > 0 ? "compressed" : "clean";
}

// The file's own network, whose factor decides.
EnlargeWay WayOfFile(const Settings& settings, const PictureShape& shape) {
  const int32_t factor = FactorOfNetwork(settings.net);
  const PictureSize size = SizeOf(shape, {.by = static_cast<double>(factor)}, Direction::larger);
  if (settings.size.Said() && WantedOf(settings, shape) != size)
    Fail("%s enlarges %s: leave out --net, or --by %d", settings.net.c_str(), factor == 2 ? "twice" : "four times",
         factor);
  EnlargeWay way{size, NetworkPlan{{{"", settings.net, factor, {}}}, ""}, settings.how};
  if (Refining(settings)) {
    way.how = {.average = !settings.quick, .shortcut = true};
    way.preset = PresetFor(settings, *way.plan, shape);
  }
  return way;
}

std::optional<NetworkPlan> PlanByName(const Settings& settings, const PictureShape& shape, const PictureSize& size) {
  const double scale =
      std::max(static_cast<double>(size.width) / shape.width, static_cast<double>(size.height) / shape.height);
  if (!settings.model.empty()) return PlanNetwork(FindModel(settings.model), scale);
  const PictureNature nature{shape.jpegQuality, settings.preset == "drawn"};
  return PlanNetworks(FindModels(), settings.quick ? NetworkWay::quick : NetworkWay::best, nature, scale);
}

EnlargeWay WayByName(const Settings& settings, const PictureShape& shape) {
  EnlargeWay way{WantedOf(settings, shape), {}, settings.how};
  way.how.average = !settings.quick;
  way.how.shortcut = true;
  way.plan = PlanByName(settings, shape, way.size);
  if (way.plan && Refining(settings)) way.preset = PresetFor(settings, *way.plan, shape);
  if (way.plan) return way;
  if (settings.method == "net" || settings.method == "both") Fail("%s", NoNetworks().c_str());
  Warn("%s; so Lanczos-3 enlarges, which is worse", NoNetworks().c_str());
  return way;
}

EnlargeWay WayOfRestoration(const Settings& settings, const PictureShape& shape) {
  EnlargeWay way{WantedOf(settings, shape), {}, settings.how};
  way.preset = !settings.preset.empty() ? settings.preset : shape.jpegQuality > 0 ? "compressed" : "clean";
  return way;
}

EnlargeWay WayWithoutKnobs(const Settings& settings, const PictureShape& shape) {
  if (Sharpening(settings) || Restoring(settings)) return WayOfRestoration(settings, shape);
  if (!settings.net.empty()) return WayOfFile(settings, shape);
  if (!ByFilter(settings)) return WayByName(settings, shape);
  return {WantedOf(settings, shape),
          {},
          settings.how,
          settings.method == "nearest" ? ResizeFilter::nearest
          : settings.method == "cubic" ? ResizeFilter::cubic
                                       : ResizeFilter::lanczos};
}

EnlargeWay WayOf(const Settings& settings, const PictureShape& shape) {
  EnlargeWay way = WayWithoutKnobs(settings, shape);
  way.knobs = settings.knobs;
  return way;
}

// "network x2-48, averaged, then restored as clean".
std::string MethodOf(const Settings& settings, const EnlargeWay& way) {
  std::string method = settings.denoise ? "denoised, then " : "";
  if (!way.plan && !way.preset.empty()) return method + "restored as " + way.preset;
  if (!way.plan)
    return method += way.filter == ResizeFilter::nearest ? "nearest"
                     : way.filter == ResizeFilter::cubic ? "cubic"
                                                         : "Lanczos-3";
  const std::string own = FileNameOf(settings.net);
  method +=
      "network " + (settings.net.empty() ? way.plan->Names() : own) + (way.how.average ? ", averaged" : ", plain");
  return way.preset.empty() ? method : method + ", then restored as " + way.preset;
}

// "x2, network x2-48, 2 threads", and why.
std::string ChosenWay(const Settings& settings, const EnlargeWay& way, const PictureShape& shape, int32_t threads) {
  return RatioInWords(shape, way.size) + ", network " + way.plan->Names() + ", " + std::to_string(threads) +
         (threads == 1 ? " thread" : " threads") + (way.preset.empty() ? "" : ", then restored as " + way.preset) +
         " (" + (settings.quick ? "plain, " : "") + way.plan->why + ")";
}

double FactorOf(const Settings& settings, const PictureShape& shape, const PictureSize& size) {
  return settings.choice.factor > 0 ? settings.choice.factor : FactorBetween(shape, size);
}

// Of the networks one after another, of what follows them, and of reducing what they make too large.
Cost CostOf(const EnlargeWay& way, PictureShape shape, const PictureShape& result, bool denoise) {
  Cost cost = denoise ? CostOfDenoising(shape, false) : Cost();
  if (!way.plan && way.preset.empty()) return cost + CostOfResampling(shape, result);
  const PictureShape small = shape;
  const int32_t factor = ReachedFactor(way, small);
  for (const Model& pass : way.plan ? way.plan->passes : std::vector<Model>()) {
    cost = cost + CostOfNetwork(shape, LoadNetwork(pass.path), way.how.average, way.how.shortcut);
    shape.width *= pass.factor;
    shape.height *= pass.factor;
  }
  if (!way.preset.empty()) {
    RestoreParameters parameters = way.plan ? RefinementPreset(way.preset, factor) : RestorePreset(way.preset, factor);
    TurnKnobs(parameters, way.knobs);
    shape.width = small.width * factor;
    shape.height = small.height * factor;
    cost = cost + CostOfRefinement(shape, parameters);
  }
  if (AgreesInTheEnd(way, small)) cost = cost + CostOfAgreement(small, factor, result);
  return shape.width == result.width ? cost : cost + CostOfResampling(shape, result);
}

WorkPlan PlanOfWay(const Settings& settings, const EnlargeWay& way, const PictureShape& shape) {
  WorkPlan plan{shape, MethodOf(settings, way), FactorOf(settings, shape, way.size), nullptr};
  plan.result.width = way.size.width;
  plan.result.height = way.size.height;
  plan.make = [way, denoise = settings.denoise](PictureSource picture, int32_t threads) {
    EnlargeWay inTeam = way;
    inTeam.how.threads = threads;
    if (denoise) picture = DenoisedRows(std::move(picture), {.threads = threads});
    return Enlarged(std::move(picture), inTeam);
  };
  if (way.blur > 0) plan.reduction = FilterOfBlur(way.blur, 1);
  plan.cost = CostOf(way, shape, plan.result, settings.denoise);
  if (way.plan)
    for (const Model& pass : way.plan->passes)
      if (std::ranges::count(plan.networks, pass.path) == 0) plan.networks.push_back(pass.path);
  if (way.plan && settings.net.empty())
    plan.chosen = [settings, way, shape](int32_t threads) { return ChosenWay(settings, way, shape, threads); };
  return plan;
}

WorkPlan PlanOf(const Settings& settings, const PictureShape& shape) {
  const EnlargeWay way = WayOf(settings, shape);
  WorkPlan plan = PlanOfWay(settings, way, shape);
  if (Sharpening(settings))
    plan.look = [settings, way, shape](const SeenLuminance& picture) {
      EnlargeWay sharper = way;
      sharper.blur = BlurToTakeBack(picture);
      return PlanOfWay(settings, sharper, shape);
    };
  return plan;
}

// A way that somebody keeps under the name of a preset stands for the options that it is made of.
void TakeKept(Settings& settings) {
  if (settings.preset.empty() || IsOwnPreset(settings.preset)) return;
  const KeptWay kept = FindKept(settings.preset);
  if (!settings.method.empty() || !settings.model.empty() || !settings.net.empty() || settings.quick)
    throw WrongUsage("the preset " + settings.preset + " says the way itself (" + kept.InWords() +
                     "): leave out --method, --model, --net and --quick");
  settings.method = kept.method;
  settings.model = kept.model;
  settings.quick = kept.quick;
  settings.preset = kept.preset;
}

PictureWork WorkOf(Settings& settings) {
  TakeKept(settings);
  RefuseIdleOptions(settings);
  if (settings.size.by > 0 || !settings.size.Said()) {
    const int32_t ofNet = settings.net.empty() ? 2 : FactorOfNetwork(settings.net);
    settings.choice.factor = settings.size.by > 0 ? settings.size.by : ofNet;
  }
  settings.choice.ownName = settings.choice.factor > 0 ? "{stem}_{factor}x" : "{stem}_{width}x{height}";
  return {[settings](const PictureShape& shape) { return PlanOf(settings, shape); }, "Enlarging"};
}

// A picture alone.
PictureWork WorkBeside(Settings& settings) {
  settings.choice.mayLeaveOut = true;
  return WorkOf(settings);
}

}  // namespace

Command EnlargeCommand() {
  return MakeWorkCommand<Settings>(
      {.name = "enlarge",
       .purpose = "Make a picture larger: by the best network there is, or by interpolation",
       .examples = "norvkit enlarge photo.jpg large.jpg\n"
                   "norvkit enlarge photo.jpg large.png --width 3000\n"
                   "norvkit enlarge photo.jpg large.png --by 4 --quick\n"
                   "norvkit enlarge small.png large.png --net test.net --average"},
      Rows, WorkOf);
}

Command PictureCommand() {
  return MakeWorkCommand<Settings>({.name = "enlarge", .purpose = "", .examples = ""}, Rows, WorkBeside);
}

}  // namespace norv
