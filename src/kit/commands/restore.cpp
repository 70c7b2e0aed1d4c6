#include <algorithm>
#include <optional>

#include "kit/commands/command.h"
#include "kit/commands/shared_rows.h"
#include "kit/failure.h"
#include "kit/pictures/picture.h"
#include "kit/scale/restore_picture.h"
#include "kit/scale/restore_presets.h"
#include "kit/scale/scale.h"
#include "kit/work/run_work.h"

namespace norv {
namespace {

struct Settings {
  std::string preset = "clean";
  int32_t factor = 2, bands = 0;
  bool overBytes = false, denoise = false;
  Times sharper, smoother;
  std::optional<double> deblur;
  std::vector<std::optional<double>> knobs;
  WorkChoice choice;
};

// Every parameter that a preset chooses can be given instead.
Options KnobRows(Settings& settings) {
  const std::span<const RestoreKnob> knobs = RestoreKnobs();
  settings.knobs.resize(knobs.size());
  Options rows;
  for (size_t i = 0; i < knobs.size(); ++i) {
    const bool whole = std::holds_alternative<int32_t RestoreParameters::*>(knobs[i].field);
    rows.push_back({.name = knobs[i].option,
                    .target = &settings.knobs[i],
                    .unit = whole ? "N" : "X",
                    .check = Between{knobs[i].low, knobs[i].high, whole},
                    .help = knobs[i].meaning,
                    .aliases = knobs[i].aliases,
                    .heading = "Instead of the preset's (docs/restoration.md says which to turn when)"});
  }
  return rows;
}

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
           .check = Between{0.1, 1.5},
           .help = "take back a blur (Gaussian) of so many pixels of the picture, 0.1 to 1.5",
           .excludes = "--filter"}};
}

Option BandsRow(int32_t& bands) {
  return {.name = "--bands",
          .target = &bands,
          .unit = "N",
          .check = Between{1, 1024},
          .help = "cut into so many bands, of which as many as threads are in memory",
          .byDefault = "one a thread of --threads; else not cut"};
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
                   .check = OneOf{Listed(RestorePresetNames())},
                   .help = "clean, compressed (JPEG), noisy or drawn"}},
                 PeopleRows(settings),
                 {BandsRow(settings.bands),
                  {.name = "--as-bytes",
                   .target = &settings.overBytes,
                   .help = "8 bits a sample in and out, as norv 4 does",
                   .aliases = "--bits-road"},
                  DenoiseFirstRow(settings.denoise),
                  CertificateRow(settings.choice.certificate)},
                 KnobRows(settings),
                 ReceiptRows(settings.choice.receipt),
                 WorkRows(settings.choice)});
}

RestoreParameters Parameters(const Settings& settings) {
  RestoreParameters parameters = RestorePreset(settings.preset, settings.factor);
  for (int32_t i = 0; i < settings.sharper.count; ++i) MakeSharper(parameters);
  for (int32_t i = 0; i < settings.smoother.count; ++i) MakeSmoother(parameters);
  if (settings.deblur) parameters.kernelCode = FilterOfBlur(*settings.deblur, settings.factor);
  const std::span<const RestoreKnob> knobs = RestoreKnobs();
  for (size_t i = 0; i < knobs.size(); ++i) {
    if (!settings.knobs[i]) continue;
    const auto turn = [&](auto field) {
      parameters.*field = static_cast<std::decay_t<decltype(parameters.*field)>>(*settings.knobs[i]);
    };
    std::visit(turn, knobs[i].field);
  }
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

Picture Restored(Picture picture, const Settings& settings, const RestoreParameters& parameters, int32_t threads) {
  if (settings.denoise) DenoisePicture(picture, {.threads = threads});
  return settings.overBytes ? RestoreBytes(std::move(picture), parameters, std::max(settings.bands, 1), threads)
                            : RestorePicture(std::move(picture), parameters, settings.bands, threads);
}

WorkPlan PlanOf(const Settings& settings, const RestoreParameters& parameters, const PictureShape& shape) {
  RequireRoom(shape, settings.factor);
  WorkPlan plan{shape, std::string(settings.denoise ? "denoised, then " : "") + "restored as " + settings.preset,
                static_cast<double>(settings.factor), nullptr};
  plan.result.width *= settings.factor;
  plan.result.height *= settings.factor;
  plan.make = [settings, parameters](PictureSource source, int32_t threads) {
    Picture picture = AllRows(source);
    source = {};
    return HeldPicture(Restored(std::move(picture), settings, parameters, threads));
  };
  plan.cost = CostOfRestoration(shape, parameters, settings.overBytes ? std::max(settings.bands, 1) : settings.bands);
  if (settings.denoise) plan.cost = plan.cost + CostOfDenoising(shape, false);
  plan.reduction = parameters.kernelCode;
  plan.teams = settings.bands > 1;
  return plan;
}

PictureWork WorkOf(Settings& settings) {
  const RestoreParameters parameters = Parameters(settings);
  RefuseIdleKnobs(settings, parameters);
  // Of one picture; many are worked on side by side.
  if (settings.bands == 0 && settings.choice.folder.empty() && settings.choice.threads > 1)
    settings.bands = settings.choice.threads;
  settings.choice.factor = settings.factor;
  if (settings.factor > 1) settings.choice.ownName = "{stem}_{factor}x";
  return {[settings, parameters](const PictureShape& shape) { return PlanOf(settings, parameters, shape); }};
}

}  // namespace

Command RestoreCommand() {
  return MakeWorkCommand<Settings>(
      {.name = "restore",
       .purpose = "Make a picture larger and sharper by edge-preserving restoration",
       .examples = "norvkit restore small.png large.png --by 2\n"
                   "norvkit restore soft.jpg sharp.png --by 1 --deblur 1.0 --preset compressed\n"
                   "norvkit restore small.jpg large.png --by 4 --preset compressed --lambda 0.2"},
      Rows, WorkOf);
}

}  // namespace norv
