#include "kit/commands/command.h"
#include "kit/commands/shared_rows.h"
#include "kit/failure.h"
#include "kit/guidance/manner.h"
#include "kit/pictures/destination.h"
#include "kit/pictures/image_file.h"
#include "platform/file.h"

namespace norv {
namespace {

struct Settings {
  std::string picture, file;
  bool overwrite = false;
  ReadChoice read;
};

Options Rows(Settings& settings) {
  return {{.name = "PICTURE", .target = &settings.picture, .help = ReadFormats("or")},
          {.name = "FILE",
           .target = &settings.file,
           .help = ".fdib (three planes; with alpha four), .mat (one plane of luminance, as for training) or .bit"},
          {.name = "--overwrite", .target = &settings.overwrite, .help = "FILE may be the PICTURE itself"},
          PageRow(settings.read)};
}

void Run(const Settings& settings) {
  if (!HasImageName(settings.file)) Fail("%s has to end in .fdib, .mat or .bit", settings.file.c_str());
  const PictureSource picture = OpenImage(settings.picture, settings.read);
  WriteChoice choice;
  choice.overwrite = settings.overwrite || !IsSameFile(settings.picture, settings.file);
  const Destination out(settings.file, picture.shape, choice, settings.picture);
  CopyRows(picture, out.Create(picture.shape));
  SayWritten(settings.picture, settings.file, picture.shape.width, picture.shape.height);
}

}  // namespace

Command ImportCommand() {
  return MakeCommand<Settings>({.name = "import",
                                .purpose = "Turn a picture into a file of ours: .fdib, .mat or .bit",
                                .examples = "norvkit import photograph.jpg input.fdib"},
                               Rows, Run);
}

}  // namespace norv
