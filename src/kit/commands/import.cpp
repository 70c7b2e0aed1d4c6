#include "kit/commands/command.h"
#include "kit/failure.h"
#include "kit/pictures/image_file.h"

namespace norv {
namespace {

struct Settings {
  std::string picture, file;
};

Options Rows(Settings& settings) {
  return {{.name = "PICTURE", .target = &settings.picture, .help = ReadFormats("or")},
          {.name = "FILE",
           .target = &settings.file,
           .help = ".fdib (three planes; with alpha four), .mat (one plane of luminance, as for training) or .bit"}};
}

void Run(const Settings& settings) {
  if (!HasImageName(settings.file)) throw WrongUsage("FILE has to end in .fdib, .mat or .bit: " + settings.file);
  const PictureSource picture = OpenImage(settings.picture);
  CopyRows(picture, CreateImage(settings.file, picture.shape, {}));
}

}  // namespace

Command ImportCommand() {
  return MakeCommand<Settings>({.name = "import",
                                .purpose = "Turn a picture into a file of ours: .fdib, .mat or .bit",
                                .examples = "norvkit import photograph.jpg input.fdib"},
                               Rows, Run);
}

}  // namespace norv
