#include "kit/commands/command.h"
#include "kit/failure.h"
#include "kit/pictures/conversions.h"
#include "kit/pictures/scale.h"

namespace norv {
namespace {

struct ShrinkOptions {
  std::string picture, out;
  int32_t factor = 2, order = -1;
  WriteChoice choice;
};

void Declare(CLI::App& command, ShrinkOptions& options) {
  command.add_option("PICTURE", options.picture, "a picture, .fdib, .mat or .bit")->required();
  command.add_option("OUT", options.out, "the smaller one, in the format that its name says")->required();
  command.add_option("--factor", options.factor, "how many times smaller, 2 to 64")
      ->type_name("N")
      ->check(CLI::Range(2, 64));
  command
      .add_option("--order", options.order,
                  "filter: -1 to -5 cubic, 0 box, 1 tent, 2 to 64 Lanczos, -11 to -22 Gaussian")
      ->type_name("K");
  DeclareWriteChoice(command, options.choice);
}

void Run(const ShrinkOptions& options) {
  SaveImage(options.out, ShrinkPicture(LoadImage(options.picture), options.factor, options.order), options.choice);
}

}  // namespace

CLI::App& AddShrink(CLI::App& kit) {
  return AddCommand<ShrinkOptions>(kit, "shrink", "Make a picture smaller as training pictures are",
                                   "norvkit shrink original.png small.png --factor 2 --order -1", Declare, Run);
}

}  // namespace norv
