#include "kit/commands/command.h"
#include "kit/pictures/conversions.h"

namespace norv {
namespace {

struct ImportOptions {
  std::string picture, file;
};

void Declare(CLI::App& command, ImportOptions& options) {
  command.add_option("PICTURE", options.picture, "PNG, JPEG, TIFF or WebP, 8 or 16 bits")->required();
  command
      .add_option("FILE", options.file,
                  ".fdib (three planes; with alpha four), .mat (one plane of luminance, as for training) or .bit")
      ->required();
}

void Run(const ImportOptions& options) {
  const std::string extension = ExtensionOf(options.file);
  if (extension != "fdib" && extension != "mat" && extension != "bit")
    RefuseUsage("FILE has to end in .fdib, .mat or .bit: " + options.file);
  const std::unique_ptr<PictureReader> picture = OpenImage(options.picture);
  CopyRows(*picture, *CreateImage(options.file, picture->Shape(), {}));
}

}  // namespace

CLI::App& AddImport(CLI::App& kit) {
  return AddCommand<ImportOptions>(kit, "import", "Turn a picture into a file of ours: .fdib, .mat or .bit",
                                   "norvkit import photograph.jpg input.fdib", Declare, Run);
}

}  // namespace norv
