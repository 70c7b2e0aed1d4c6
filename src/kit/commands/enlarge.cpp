#include "kit/commands/command.h"
#include "kit/failure.h"
#include "kit/pictures/conversions.h"
#include "kit/pictures/restore_picture.h"
#include "kit/pictures/scale.h"
#include "net/net_file.h"

namespace norv {
namespace {

struct EnlargeOptions {
  std::string picture, out, method, net;
  int32_t factor = 0;
  bool denoise = false;
  NetEnlargement how;
  WriteChoice choice;
};

void Declare(CLI::App& command, EnlargeOptions& options) {
  command.add_option("PICTURE", options.picture, "a picture, .fdib, .mat or .bit")->required();
  command.add_option("OUT", options.out, "the larger one, in the format that its name says")->required();
  command.add_option("--factor", options.factor, "how many times larger (default: 2, or what the network does)")
      ->type_name("N")
      ->check(CLI::Range(2, 64))
      ->default_str("");
  command
      .add_option("--method", options.method, "nearest, cubic, lanczos or net (default: net with --net, else lanczos)")
      ->type_name("WAY")
      ->check(CLI::IsMember({"nearest", "cubic", "lanczos", "net"}));
  command.add_option("--net", options.net, "the .net file")->type_name("FILE");
  command.add_flag("--average", options.how.average, "network: mean over the eight orientations, eight times the work");
  command.add_flag("--shortcut", options.how.shortcut, "network: only for the luminance, a third of the work");
  command.add_option("--threads", options.how.threads, "network: bands at the same time: 1, 4, 8 or 16")
      ->type_name("N")
      ->check(CLI::IsMember({1, 4, 8, 16}));
  command.add_flag("--denoise", options.denoise, "remove noise first, as norvkit denoise does");
  DeclareWriteChoice(command, options.choice);
}

Picture LoadInput(const EnlargeOptions& options) {
  Picture picture = LoadImage(options.picture);
  if (options.denoise) DenoisePicture(picture, {.threads = options.how.threads});
  return picture;
}

// Row by row where nothing asks for the whole picture: one that is cleaned of noise, or cut into bands.
void EnlargeByNet(const EnlargeOptions& options) {
  if (RecogniseWholeFile(options.net) != FileKind::net) Fail("%s is no network", options.net.c_str());
  NeuralNet net;
  LoadNet(net, options.net, Folder::asGiven);
  if (options.factor != 0 && options.factor * options.factor != net.LastNi())
    Fail("%s does not enlarge %d times", options.net.c_str(), options.factor);
  std::unique_ptr<PictureReader> picture = options.denoise ? ReadHeld(LoadInput(options)) : OpenImage(options.picture);
  if (GoesInBands(picture->Shape(), options.how))
    SaveImage(options.out, EnlargeByNet(ReadAll(*picture), net, options.how), options.choice);
  else
    EnlargeRowsByNet(std::move(picture), net, options.how, options.out, options.choice);
}

Picture ByMethod(const EnlargeOptions& options) {
  const Picture picture = LoadInput(options);
  const int32_t factor = options.factor ? options.factor : 2;
  if (options.method == "nearest") return RepeatPixels(picture, factor);
  return InterpolatePicture(picture, factor, options.method == "cubic" ? Interpolation::cubic : Interpolation::lanczos);
}

void Run(const EnlargeOptions& options) {
  const bool byNet = options.method == "net" || (options.method.empty() && !options.net.empty());
  if (byNet && options.net.empty()) RefuseUsage("--method net needs --net FILE");
  if (!byNet && !options.net.empty()) RefuseUsage("--net goes with --method net");
  if (byNet) return EnlargeByNet(options);
  SaveImage(options.out, ByMethod(options), options.choice);
}

}  // namespace

CLI::App& AddEnlarge(CLI::App& kit) {
  return AddCommand<EnlargeOptions>(kit, "enlarge",
                                    "Make a picture larger: repeated pixels, interpolation or a network",
                                    "norvkit enlarge small.png large.png --factor 2 --method lanczos\n  "
                                    "norvkit enlarge small.png large.png --net test.net --average --threads 4",
                                    Declare, Run);
}

}  // namespace norv
