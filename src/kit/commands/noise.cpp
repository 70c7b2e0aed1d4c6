#include <random>

#include "kit/commands/command.h"
#include "kit/commands/shared_rows.h"
#include "kit/guidance/manner.h"
#include "kit/pictures/destination.h"
#include "kit/pictures/image_file.h"
#include "kit/pictures/picture.h"

namespace norv {
namespace {

struct Settings {
  std::string picture, out;
  float sigma = 20;
  uint32_t seed = 1;
  ReadChoice read;
  WriteChoice choice;
};

Options Rows(Settings& settings) {
  return Joined(
      {{PictureRow(settings.picture),
        OutRow(settings.out, "the noisy one"),
        {.name = "--sigma",
         .target = &settings.sigma,
         .unit = "X",
         .check = Between{0, 255},
         .help = "standard deviation in grey levels"},
        {.name = "--seed", .target = &settings.seed, .unit = "N", .help = "the same seed gives the same noise"}},
       {PageRow(settings.read)},
       WriteRows(settings.choice)});
}

// Near enough to the normal distribution, and the same on every machine: the sum of twelve even numbers.
void AddNoise(matrix& plane, float sigma, std::mt19937& generator) {
  for (int32_t i = 0; i < plane.mn; ++i) {
    double sum = -6;
    for (int k = 0; k < 12; ++k) sum += static_cast<double>(generator()) / 4294967296.0;
    plane.x[i] += sigma * static_cast<float>(sum);
  }
}

void Run(const Settings& settings) {
  const PictureSource source = OpenImage(settings.picture, settings.read);
  RefuseRowsBesidePicture(settings.out);
  const Destination out(settings.out, source.shape, settings.choice, settings.picture);
  Picture picture = AllRows(source);
  std::mt19937 generator(settings.seed);
  for (int32_t k = 0; k < picture.Colours(); ++k) AddNoise(picture.plane[k], settings.sigma, generator);
  out.Save(std::move(picture));
  SayWritten(settings.picture, settings.out, source.shape.width, source.shape.height);
}

}  // namespace

Command NoiseCommand() {
  return MakeCommand<Settings>({.name = "noise",
                                .purpose = "Add normal noise to every colour of a picture, to try what removes it",
                                .examples = "norvkit noise clean.png noisy.png --sigma 20 --seed 1"},
                               Rows, Run);
}

}  // namespace norv
