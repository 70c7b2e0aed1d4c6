#include <optional>

#include "kit/commands/command.h"
#include "kit/pictures/conversions.h"
#include "kit/pictures/restore_picture.h"
#include "kit/pictures/restore_presets.h"

namespace norv {
namespace {

struct RestoreOptions {
  std::string picture, out, preset = "clean";
  int32_t factor = 2, bands = 0, threads = 1;
  bool overBytes = false, denoise = false;
  std::vector<std::optional<double>> knobs;
  WriteChoice choice;
};

void DeclareKnobs(CLI::App& command, RestoreOptions& options) {
  const std::span<const RestoreKnob> knobs = RestoreKnobs();
  options.knobs.resize(knobs.size());
  for (size_t i = 0; i < knobs.size(); ++i) {
    const bool whole = std::holds_alternative<int32_t RestoreParameters::*>(knobs[i].field);
    command.add_option(knobs[i].option, options.knobs[i], knobs[i].meaning)
        ->type_name(whole ? "N" : "X")
        ->check(whole ? CLI::Validator(CLI::TypeValidator<int32_t>("N")) : CLI::Validator(CLI::Number))
        ->default_str("")
        ->group("Instead of the preset's (docs/restoration.md says which to turn when)");
  }
}

void Declare(CLI::App& command, RestoreOptions& options) {
  command.add_option("PICTURE", options.picture, "a picture, .fdib, .mat or .bit")->required();
  command.add_option("OUT", options.out, "the restored one, in the format that its name says")->required();
  command.add_option("--factor", options.factor, "how many times larger, 1 to 64")
      ->type_name("N")
      ->check(CLI::Range(1, 64));
  command.add_option("--preset", options.preset, "clean, compressed (JPEG) or noisy")
      ->type_name("NAME")
      ->check(CLI::IsMember(RestorePresetNames()));
  command.add_option("--threads", options.threads, "as many bands at the same time")
      ->type_name("N")
      ->check(CLI::Range(1, 1024));
  command
      .add_option("--bands", options.bands,
                  "cut into so many bands, of which as many as threads are in memory (default: one a thread, one "
                  "thread: not cut)")
      ->type_name("N")
      ->check(CLI::Range(1, 1024))
      ->default_str("");
  command.add_flag("--bits-road", options.overBytes, "8 bits a sample in and out, as norv 4 does");
  command.add_flag("--denoise", options.denoise, "remove noise first, as norvkit denoise does");
  DeclareKnobs(command, options);
  DeclareWriteChoice(command, options.choice);
}

RestoreParameters Parameters(const RestoreOptions& options) {
  RestoreParameters parameters = RestorePreset(options.preset, options.factor);
  const std::span<const RestoreKnob> knobs = RestoreKnobs();
  for (size_t i = 0; i < knobs.size(); ++i) {
    if (!options.knobs[i]) continue;
    const auto turn = [&](auto field) {
      parameters.*field = static_cast<std::decay_t<decltype(parameters.*field)>>(*options.knobs[i]);
    };
    std::visit(turn, knobs[i].field);
  }
  return parameters;
}

void Run(const RestoreOptions& options) {
  const RestoreParameters parameters = Parameters(options);
  Picture picture = LoadImage(options.picture);
  if (options.denoise) DenoisePicture(picture, {.threads = options.threads});
  const int32_t bands = options.bands > 0 ? options.bands : options.threads > 1 ? options.threads : 0;
  SaveImage(options.out,
            options.overBytes ? RestoreBytes(std::move(picture), parameters, std::max(bands, 1), options.threads)
                              : RestorePicture(std::move(picture), parameters, bands, options.threads),
            options.choice);
}

}  // namespace

CLI::App& AddRestore(CLI::App& kit) {
  return AddCommand<RestoreOptions>(kit, "restore", "Make a picture larger and sharper by edge-preserving restoration",
                                    "norvkit restore small.png large.png --factor 2 --preset clean --threads 2\n  "
                                    "norvkit restore small.jpg large.png --factor 4 --preset compressed --lambda 0.2",
                                    Declare, Run);
}

}  // namespace norv
