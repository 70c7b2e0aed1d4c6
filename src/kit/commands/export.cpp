#include "kit/commands/command.h"
#include "kit/pictures/conversions.h"
#include "platform/console.h"

namespace norv {
namespace {

struct ExportOptions {
  std::string file, picture;
  WriteChoice choice;
  bool verbose = false;
};

void Declare(CLI::App& command, ExportOptions& options) {
  command.add_option("FILE", options.file, ".fdib of any colour model, .mat (as grey) or .bit")->required();
  command.add_option("PICTURE", options.picture, "the picture to write: .png, .jpg or .tif")->required();
  DeclareWriteChoice(command, options.choice);
  command.add_flag("--verbose", options.verbose, "say how many samples were outside 0..255");
}

void Run(const ExportOptions& options) {
  if (!CodecOfName(options.picture))
    RefuseUsage("PICTURE has to be named as a picture (" + KnownFormats() + "): " + options.picture);
  const std::unique_ptr<PictureReader> image = OpenImage(options.file);
  const int64_t moved = CopyRows(*image, *CreateImage(options.picture, image->Shape(), options.choice));
  if (options.verbose) Complain("%lld samples were outside 0..255", static_cast<long long>(moved));
}

}  // namespace

CLI::App& AddExport(CLI::App& kit) {
  return AddCommand<ExportOptions>(kit, "export", "Turn a file of ours into a picture",
                                   "norvkit export output.fdib enlarged.png --bits 16", Declare, Run);
}

}  // namespace norv
