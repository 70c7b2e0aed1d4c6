#include "kit/commands/command.h"
#include "kit/pictures/conversions.h"
#include "kit/pictures/restore_picture.h"

namespace norv {
namespace {

struct DenoiseOptions {
  std::string picture, out;
  bool fast = false;
  DenoiseChoice how;
  WriteChoice choice;
};

void Declare(CLI::App& command, DenoiseOptions& options) {
  command.add_option("PICTURE", options.picture, "a picture, .fdib, .mat or .bit")->required();
  command.add_option("OUT", options.out, "the cleaner one, in the format that its name says")->required();
  CLI::Option* fast =
      command.add_flag("--fast", options.fast, "principal components of patches, as norv 6 (unless --best)");
  command.add_flag("--best", options.how.best, "low-rank groups of similar patches, as norv 7: much slower")
      ->excludes(fast);
  command.add_option("--noise", options.how.noise, "its standard deviation in grey levels (default: estimated)")
      ->type_name("N")
      ->check(CLI::Range(0.0, 255.0))
      ->default_str("");
  command.add_option("--threads", options.how.threads, "the result does not depend on it; --best: 1 or all processors")
      ->type_name("N")
      ->check(CLI::Range(1, 1024));
  DeclareWriteChoice(command, options.choice);
}

void Run(const DenoiseOptions& options) {
  Picture picture = LoadImage(options.picture);
  DenoisePicture(picture, options.how);
  SaveImage(options.out, std::move(picture), options.choice);
}

}  // namespace

CLI::App& AddDenoise(CLI::App& kit) {
  return AddCommand<DenoiseOptions>(kit, "denoise", "Remove noise and compression grain from a picture",
                                    "norvkit denoise noisy.png clean.png --threads 2\n  "
                                    "norvkit denoise noisy.png clean.png --best --noise 20",
                                    Declare, Run);
}

}  // namespace norv
