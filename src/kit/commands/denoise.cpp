#include "kit/commands/command.h"
#include "kit/commands/shared_rows.h"
#include "kit/pictures/destination.h"
#include "kit/pictures/image_file.h"
#include "kit/pictures/picture.h"
#include "kit/scale/restore_picture.h"

namespace norv {
namespace {

struct Settings {
  std::string picture, out;
  bool fast = false;
  DenoiseChoice how;
  ReadChoice read;
  WriteChoice choice;
};

Options Rows(Settings& settings) {
  return Joined({{PictureRow(settings.picture),
                  OutRow(settings.out, "the cleaner one"),
                  {.name = "--fast",
                   .target = &settings.fast,
                   .help = "principal components of patches, as norv 6 (unless --best)"},
                  {.name = "--best",
                   .target = &settings.how.best,
                   .help = "low-rank groups of similar patches, as norv 7: much slower",
                   .excludes = "--fast"},
                  {.name = "--noise",
                   .target = &settings.how.noise,
                   .unit = "N",
                   .check = Between{0, 255},
                   .help = "its standard deviation in grey levels",
                   .byDefault = "estimated"},
                  {.name = "--threads",
                   .target = &settings.how.threads,
                   .unit = "N",
                   .check = Between{1, 1024},
                   .help = "the result does not depend on it; --best: 1 or all processors"}},
                 {PageRow(settings.read)},
                 WriteRows(settings.choice)});
}

void Run(const Settings& settings) {
  const PictureSource source = OpenImage(settings.picture, settings.read);
  const Destination out(settings.out, source.shape, settings.choice, settings.picture);
  Picture picture = AllRows(source);
  DenoisePicture(picture, settings.how);
  out.Save(std::move(picture));
}

}  // namespace

Command DenoiseCommand() {
  return MakeCommand<Settings>({.name = "denoise",
                                .purpose = "Remove noise and compression grain from a picture",
                                .examples = "norvkit denoise noisy.png clean.png --threads 2\n"
                                            "norvkit denoise noisy.png clean.png --best --noise 20"},
                               Rows, Run);
}

}  // namespace norv
