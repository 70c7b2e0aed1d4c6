#include <random>

#include "kit/commands/command.h"
#include "kit/pictures/conversions.h"

namespace norv {
namespace {

struct NoiseOptions {
  std::string picture, out;
  float sigma = 20;
  uint32_t seed = 1;
  WriteChoice choice;
};

void Declare(CLI::App& command, NoiseOptions& options) {
  command.add_option("PICTURE", options.picture, "a picture, .fdib, .mat or .bit")->required();
  command.add_option("OUT", options.out, "the noisy one, in the format that its name says")->required();
  command.add_option("--sigma", options.sigma, "standard deviation in grey levels")
      ->type_name("X")
      ->check(CLI::Range(0.0, 255.0));
  command.add_option("--seed", options.seed, "the same seed gives the same noise")->type_name("N");
  DeclareWriteChoice(command, options.choice);
}

// Near enough to the normal distribution, and the same on every machine: the sum of twelve even numbers.
void AddNoise(matrix& plane, float sigma, std::mt19937& generator) {
  for (int32_t i = 0; i < plane.mn; ++i) {
    double sum = -6;
    for (int k = 0; k < 12; ++k) sum += static_cast<double>(generator()) / 4294967296.0;
    plane.x[i] += sigma * static_cast<float>(sum);
  }
}

void Run(const NoiseOptions& options) {
  Picture picture = LoadImage(options.picture);
  std::mt19937 generator(options.seed);
  for (int32_t k = 0; k < picture.Colours(); ++k) AddNoise(picture.plane[k], options.sigma, generator);
  SaveImage(options.out, std::move(picture), options.choice);
}

}  // namespace

CLI::App& AddNoise(CLI::App& kit) {
  return AddCommand<NoiseOptions>(kit, "noise", "Add normal noise to every colour of a picture, to try what removes it",
                                  "norvkit noise clean.png noisy.png --sigma 20 --seed 1", Declare, Run);
}

}  // namespace norv
