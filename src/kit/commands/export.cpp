#include "kit/commands/command.h"
#include "kit/commands/shared_rows.h"
#include "kit/failure.h"
#include "kit/guidance/manner.h"
#include "kit/pictures/destination.h"
#include "kit/pictures/image_file.h"
#include "platform/console.h"

namespace norv {
namespace {

struct Settings {
  std::string file, picture;
  ReadChoice read;
  WriteChoice choice;
};

Options Rows(Settings& settings) {
  return Joined(
      {{{.name = "FILE", .target = &settings.file, .help = ".fdib of any colour model, .mat (as grey) or .bit"},
        {.name = "PICTURE", .target = &settings.picture, .help = "the picture to write: " + WrittenExtensions("or")}},
       {PageRow(settings.read)},
       WriteRows(settings.choice)});
}

void Run(const Settings& settings) {
  if (settings.choice.to.empty() && !HasPictureName(settings.picture))
    Fail("%s has to be named as a picture: %s", settings.picture.c_str(), WrittenExtensions("or").c_str());
  const PictureSource image = OpenImage(settings.file, settings.read);
  RefuseRowsBesidePicture(settings.picture);
  const Destination out(settings.picture, image.shape, settings.choice, settings.file);
  const int64_t moved = CopyRows(image, out.Create(image.shape));
  SayWritten(settings.file, settings.picture, image.shape.width, image.shape.height);
  if (RunManner().verbose) Complain("%lld samples were outside 0..255", static_cast<long long>(moved));
}

}  // namespace

Command ExportCommand() {
  return MakeCommand<Settings>({.name = "export",
                                .purpose = "Turn a file of ours into a picture",
                                .examples = "norvkit export output.fdib enlarged.png --bits 16"},
                               Rows, Run);
}

}  // namespace norv
