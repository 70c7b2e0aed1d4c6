#include <algorithm>
#include <cstdlib>
#include <optional>

#include "kit/commands/command.h"
#include "kit/commands/shared_rows.h"
#include "kit/failure.h"
#include "kit/scale/restore_picture.h"
#include "kit/scale/restore_presets.h"
#include "kit/scale/restored_rows.h"
#include "kit/scale/scale.h"
#include "kit/search/blur_estimate.h"
#include "kit/search/stored_presets.h"
#include "kit/work/run_work.h"
#include "platform/console.h"

namespace norv {
namespace {

constexpr char kAuto[] = "auto";

struct Settings {
  std::string preset = "clean", deblur;
  int32_t factor = 2, bands = 0;
  bool overBytes = false, denoise = false;
  Times sharper, smoother;
  KnobValues knobs;
  WorkChoice choice;
};

// What people see, instead of what a restoration counts.
Options PeopleRows(Settings& settings) {
  return {{.name = "--sharper",
           .target = &settings.sharper,
           .help = "than the preset; given twice, more so",
           .excludes = "--smoother"},
          {.name = "--smoother", .target = &settings.smoother, .help = "than the preset; given twice, more so"},
          {.name = "--deblur",
           .target = &settings.deblur,
           .unit = "SIGMA",
           .check = BetweenOr{kLeastBlur, kMostBlur, kAuto},
           .help = "take back a blur (Gaussian) of so many pixels of the picture, 0.1 to 1.5; auto finds it",
           .excludes = "--filter"}};
}

Option BandsRow(int32_t& bands) {
  return {.name = "--bands",
          .target = &bands,
          .unit = "N",
          .check = Between{1, 1024},
          .help = "cut into so many bands, pictures of their own, as norv's mode 1 does with as many threads",
          .byDefault = "not cut: the picture is restored as a whole, a large one in strips"};
}

Options Rows(Settings& settings) {
  return Joined({PlaceRows(settings.choice.places, "the restored one"),
                 {{.name = "--by",
                   .target = &settings.factor,
                   .unit = "N",
                   .check = Between{1, 64},
                   .help = "how many times larger, 1 to 64",
                   .aliases = "--factor"},
                  {.name = "--preset",
                   .target = &settings.preset,
                   .unit = "NAME",
                   .help = "clean, compressed (JPEG), noisy or drawn; or a restoration that norvkit rank keeps",
                   .named = Named::preset}},
                 PeopleRows(settings),
                 {BandsRow(settings.bands),
                  {.name = "--as-bytes",
                   .target = &settings.overBytes,
                   .help = "8 bits a sample in and out, as norv 4 does",
                   .aliases = "--bits-road"},
                  DenoiseFirstRow(settings.denoise),
                  CertificateRow(settings.choice.certificate)},
                 KnobRows(settings.knobs, false),
                 ReceiptRows(settings.choice.receipt),
                 WorkRows(settings.choice)});
}

// Those to start from, with the blur to take back in pixels, 0: none. Where one was looked for and none is there, a
// picture that is not to become larger stays as it is, but for what the other presets are meant to remove.
RestoreParameters StartOf(const Settings& settings, double blur) {
  if (blur > 0) return DeblurringPreset(settings.preset, settings.factor, blur);
  RestoreParameters parameters = RestorePreset(settings.preset, settings.factor);
  const bool good = settings.preset == "clean" || settings.preset == "drawn";
  if (settings.deblur == kAuto && settings.factor == 1 && good) parameters.iterations = 0;
  return parameters;
}

RestoreParameters Parameters(const Settings& settings, double blur) {
  RestoreParameters parameters = StartOf(settings, blur);
  for (int32_t i = 0; i < settings.sharper.count; ++i) MakeSharper(parameters);
  for (int32_t i = 0; i < settings.smoother.count; ++i) MakeSmoother(parameters);
  TurnKnobs(parameters, settings.knobs);
  return parameters;
}

// Values that only one type of regulariser looks at.
void RefuseIdleKnobs(const Settings& settings, const RestoreParameters& parameters) {
  const std::span<const RestoreKnob> knobs = RestoreKnobs();
  for (size_t i = 0; i < knobs.size(); ++i)
    if (settings.knobs[i] && knobs[i].onlyOfType != 0 && knobs[i].onlyOfType != parameters.type)
      throw WrongUsage(std::string(knobs[i].option) + " does nothing without --type " +
                       std::to_string(knobs[i].onlyOfType) + ": leave it out, or add that");
}

// Rows as they are asked for, where nothing has to see the whole picture.
PictureSource Restored(PictureSource source, const Settings& settings, const RestoreParameters& parameters,
                       int32_t threads) {
  if (settings.denoise) source = DenoisedRows(std::move(source), {.threads = threads});
  if (settings.bands == 0 && !settings.overBytes) return RestoredRows(std::move(source), parameters, threads);
  const auto restored = settings.overBytes ? RestoredOverBytes : RestoredInBands;
  return restored(std::move(source), parameters, std::max(settings.bands, 1), threads);
}

WorkPlan PlanOf(const Settings& settings, const RestoreParameters& parameters, const PictureShape& shape) {
  RequireRoom(shape, settings.factor);
  WorkPlan plan{shape, std::string(settings.denoise ? "denoised, then " : "") + "restored as " + settings.preset,
                static_cast<double>(settings.factor), nullptr};
  plan.result.width *= settings.factor;
  plan.result.height *= settings.factor;
  plan.make = [settings, parameters](PictureSource source, int32_t threads) {
    return Restored(std::move(source), settings, parameters, threads);
  };
  plan.cost = CostOfRestoration(shape, parameters, settings.overBytes ? std::max(settings.bands, 1) : settings.bands);
  if (settings.denoise) plan.cost = plan.cost + CostOfDenoising(shape, false);
  plan.reduction = parameters.kernelCode;
  return plan;
}

WorkPlan PlanAfterLook(const Settings& settings, const PictureShape& shape) {
  WorkPlan plan = PlanOf(settings, Parameters(settings, 0), shape);
  plan.look = [settings, shape](const SeenLuminance& picture) {
    return PlanOf(settings, Parameters(settings, BlurToTakeBack(picture)), shape);
  };
  return plan;
}

// What somebody keeps under the name of a preset.
void TakeKept(std::string& preset) {
  if (IsOwnPreset(preset)) return;
  const KeptWay kept = FindKept(preset);
  if (kept.method != "restore")
    throw WrongUsage("the preset " + preset + " is more than a restoration (" + kept.InWords() +
                     "): norvkit enlarge takes it");
  preset = kept.preset;
}

PictureWork WorkOf(Settings& settings) {
  TakeKept(settings.preset);
  const bool finding = settings.deblur == kAuto;
  const double given = finding || settings.deblur.empty() ? 0 : std::strtod(settings.deblur.c_str(), nullptr);
  const RestoreParameters parameters = Parameters(settings, given);
  RefuseIdleKnobs(settings, parameters);
  settings.choice.factor = settings.factor;
  if (settings.factor > 1) settings.choice.ownName = "{stem}_{factor}x";
  if (finding) return {[settings](const PictureShape& shape) { return PlanAfterLook(settings, shape); }};
  return {[settings, parameters](const PictureShape& shape) { return PlanOf(settings, parameters, shape); }};
}

}  // namespace

Command RestoreCommand() {
  return MakeWorkCommand<Settings>(
      {.name = "restore",
       .purpose = "Make a picture larger and sharper by edge-preserving restoration",
       .examples = "norvkit restore small.png large.png --by 2\n"
                   "norvkit restore soft.jpg sharp.png --by 1 --deblur auto\n"
                   "norvkit restore small.jpg large.png --by 4 --preset compressed --lambda 0.2"},
      Rows, WorkOf);
}

}  // namespace norv
