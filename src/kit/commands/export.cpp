#include "kit/commands/command.h"
#include "kit/commands/shared_rows.h"
#include "kit/failure.h"
#include "kit/pictures/image_file.h"
#include "platform/console.h"

namespace norv {
namespace {

struct Settings {
  std::string file, picture;
  WriteChoice choice;
  bool verbose = false;
};

Options Rows(Settings& settings) {
  return Joined(
      {{{.name = "FILE", .target = &settings.file, .help = ".fdib of any colour model, .mat (as grey) or .bit"},
        {.name = "PICTURE", .target = &settings.picture, .help = "the picture to write: " + WrittenExtensions("or")}},
       WriteRows(settings.choice),
       {{.name = "--verbose", .target = &settings.verbose, .help = "say how many samples were outside 0..255"}}});
}

void Run(const Settings& settings) {
  if (!HasPictureName(settings.picture))
    throw WrongUsage("PICTURE has to be named as a picture (" + WrittenExtensions() + "): " + settings.picture);
  const PictureSource image = OpenImage(settings.file);
  const int64_t moved = CopyRows(image, CreateImage(settings.picture, image.shape, settings.choice));
  if (settings.verbose) Complain("%lld samples were outside 0..255", static_cast<long long>(moved));
}

}  // namespace

Command ExportCommand() {
  return MakeCommand<Settings>({.name = "export",
                                .purpose = "Turn a file of ours into a picture",
                                .examples = "norvkit export output.fdib enlarged.png --bits 16"},
                               Rows, Run);
}

}  // namespace norv
