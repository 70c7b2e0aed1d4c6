#include "kit/commands/command.h"
#include "kit/commands/shared_rows.h"
#include "kit/failure.h"
#include "kit/pictures/file_kind.h"
#include "kit/pictures/image_file.h"
#include "kit/pictures/picture.h"
#include "kit/scale/enlarge_picture.h"
#include "kit/scale/interpolation.h"
#include "kit/scale/restore_picture.h"
#include "kit/scale/scale.h"
#include "net/net_file.h"

namespace norv {
namespace {

struct Settings {
  std::string picture, out, method, net;
  int32_t factor = 0;
  bool denoise = false;
  NetEnlargement how;
  WriteChoice choice;
};

Options NetworkRows(Settings& settings) {
  return {{.name = "--net", .target = &settings.net, .unit = "FILE", .help = "the .net file"},
          {.name = "--average",
           .target = &settings.how.average,
           .help = "network: mean over the eight orientations, eight times the work"},
          {.name = "--shortcut",
           .target = &settings.how.shortcut,
           .help = "network: only for the luminance, a third of the work"},
          {.name = "--threads",
           .target = &settings.how.bands,
           .unit = "N",
           .check = OneOf{TeamSizes(",", ",")},
           .help = "network: bands at the same time: " + TeamSizes(", ", " or ")}};
}

Options Rows(Settings& settings) {
  return Joined({{PictureRow(settings.picture),
                  OutRow(settings.out, "the larger one"),
                  {.name = "--factor",
                   .target = &settings.factor,
                   .unit = "N",
                   .check = Between{2, 64},
                   .help = "how many times larger",
                   .byDefault = "2, or what the network does"},
                  {.name = "--method",
                   .target = &settings.method,
                   .unit = "WAY",
                   .check = OneOf{"nearest,cubic,lanczos,net"},
                   .help = "nearest, cubic, lanczos or net",
                   .byDefault = "net with --net, else lanczos"}},
                 NetworkRows(settings),
                 {DenoiseFirstRow(settings.denoise)},
                 WriteRows(settings.choice)});
}

Picture LoadInput(const Settings& settings) {
  Picture picture = LoadImage(settings.picture);
  if (settings.denoise) DenoisePicture(picture, {.threads = settings.how.bands});
  return picture;
}

// Row by row where nothing asks for the whole picture: one that is cleaned of noise, or cut into bands.
void RunNetwork(const Settings& settings) {
  if (RecogniseWholeFile(settings.net) != FileKind::net) Fail("%s is no network", settings.net.c_str());
  NeuralNet net;
  LoadNet(net, settings.net, Folder::asGiven);
  if (settings.factor != 0 && settings.factor * settings.factor != net.LastNi())
    Fail("%s does not enlarge %d times", settings.net.c_str(), settings.factor);
  PictureSource picture = settings.denoise ? HeldPicture(LoadInput(settings)) : OpenImage(settings.picture);
  if (GoesInBands(picture.shape, settings.how))
    SaveImage(settings.out, EnlargeByNet(AllRows(picture), net, settings.how), settings.choice);
  else
    EnlargeRowsByNet(std::move(picture), net, settings.how, settings.out, settings.choice);
}

Picture ByMethod(const Settings& settings) {
  const Picture picture = LoadInput(settings);
  const int32_t factor = settings.factor ? settings.factor : 2;
  if (settings.method == "nearest") return RepeatPixels(picture, factor);
  return InterpolatePicture(picture, factor,
                            settings.method == "cubic" ? Interpolation::cubic : Interpolation::lanczos);
}

void Run(const Settings& settings) {
  const bool byNet = settings.method == "net" || (settings.method.empty() && !settings.net.empty());
  if (byNet && settings.net.empty()) throw WrongUsage("--method net needs --net FILE");
  if (!byNet && !settings.net.empty()) throw WrongUsage("--net goes with --method net");
  if (byNet) return RunNetwork(settings);
  SaveImage(settings.out, ByMethod(settings), settings.choice);
}

}  // namespace

Command EnlargeCommand() {
  return MakeCommand<Settings>({.name = "enlarge",
                                .purpose = "Make a picture larger: repeated pixels, interpolation or a network",
                                .examples = "norvkit enlarge small.png large.png --factor 2 --method lanczos\n"
                                            "norvkit enlarge small.png large.png --net test.net --average --threads 4"},
                               Rows, Run);
}

}  // namespace norv
