#include "kit/commands/command.h"
#include "kit/commands/shared_rows.h"
#include "kit/failure.h"
#include "kit/formats/bytes.h"
#include "kit/guidance/json.h"
#include "kit/guidance/manner.h"
#include "kit/look/file_facts.h"
#include "kit/look/safe_text.h"
#include "kit/look/weight_sheet.h"
#include "kit/pictures/destination.h"
#include "kit/pictures/file_kind.h"
#include "kit/pictures/image_file.h"
#include "kit/pictures/luminance.h"
#include "net/layouts.h"
#include "net/net_file.h"
#include "platform/console.h"

namespace norv {
namespace {

struct Settings {
  std::vector<std::string> files, on;
  std::string sheet;
  bool overwrite = false;
  ReadChoice read;
};

Options Rows(Settings& settings) {
  return {{.name = "FILE",
           .target = &settings.files,
           .help = "a picture, .fdib, .mat, .bit, .net or a training set (.dat)"},
          {.name = "--on",
           .target = &settings.on,
           .unit = "PICTURE",
           .help = "that a network looks at, to find dead and saturated units; again for more pictures",
           .byDefault = "our test card"},
          {.name = "--sheet",
           .target = &settings.sheet,
           .unit = "FILE.svg",
           .help = "draw what each unit of the first layer of a network looks for"},
          OverwriteRow(settings.overwrite),
          PageRow(settings.read)};
}

LookedAt PicturesToLookAt(const std::vector<std::string>& paths) {
  if (paths.empty()) return TestCardToLookAt();
  LookedAt lookedAt;
  for (const std::string& path : paths) {
    if (!lookedAt.words.empty()) lookedAt.words += ", ";
    lookedAt.words += SafeText(path);
    lookedAt.planes.push_back(LoadLuminance(path));
  }
  return lookedAt;
}

void DrawSheet(const NeuralNet& net, const NetHealth& health, const Settings& settings) {
  const std::string drawing = DrawWeightSheet(net, health);
  WriteBytes(settings.sheet, {drawing.begin(), drawing.end()});
}

Look LookAtNetFile(const std::string& path, const Settings& settings) {
  NeuralNet net;
  LoadNet(net, path, Folder::asGiven);
  if (!settings.on.empty() && !FindLayout(net.N0))
    Fail("%s has %d inputs, for which there is no layout: pictures cannot be shown to it", path.c_str(), net.N0);
  if (net.layers.empty() || WhyNotEvaluable(net)) {
    if (!settings.sheet.empty()) Fail("%s cannot be evaluated, so no sheet is drawn", path.c_str());
    return LookAtNet(net, nullptr);
  }
  const NetHealth health = HealthOf(net, PicturesToLookAt(settings.on));
  if (!settings.sheet.empty()) DrawSheet(net, health, settings);
  return LookAtNet(net, &health);
}

Look LookAt(FileKind kind, const std::string& path, const Settings& settings) {
  switch (kind) {
    case FileKind::picture:
      return LookAtPicture(path, settings.read);
    case FileKind::matrix:
      return LookAtMatrix(path);
    case FileKind::floatImage:
      return LookAtFloatImage(path);
    case FileKind::bitImage:
      return LookAtBitImage(path);
    case FileKind::net:
      return LookAtNetFile(path, settings);
    case FileKind::trainingSet:
      break;
  }
  return LookAtTrainingSet(path);
}

void Print(const FileFacts& file, const Look& look) {
  if (file.size > file.expected)
    Say("%lld bytes behind the contents\n", static_cast<long long>(file.size - file.expected));
  look.facts.Print();
  if (look.histogram) look.histogram->Print();
}

void SayRowOf(const std::string& path, const FileFacts& file, const Look& look) {
  JsonObject row;
  row.Text("file", path).Text("kind", NameOf(file.kind)).Whole("bytes", file.size);
  if (file.size > file.expected) row.Whole("bytes behind the contents", file.size - file.expected);
  look.facts.AddTo(row);
  SayRow(row);
}

void ShowFile(const std::string& path, const Settings& settings) {
  const FileFacts file = RecogniseFile(path);
  if (!RunManner().json)
    Say("%s: %s, %lld bytes\n", SafeText(path, SIZE_MAX).c_str(), NameOf(file.kind), static_cast<long long>(file.size));
  RecogniseWholeFile(path);
  if (file.kind != FileKind::net && (!settings.sheet.empty() || !settings.on.empty()))
    Fail("%s is a %s: --sheet and --on are for networks", path.c_str(), NameOf(file.kind));
  const Look look = LookAt(file.kind, path, settings);
  RunManner().json ? SayRowOf(path, file, look) : Print(file, look);
}

void Run(const Settings& settings) {
  if (!settings.sheet.empty()) {
    if (settings.files.size() > 1) throw WrongUsage("--sheet draws one network: name one file");
    if (ExtensionOf(settings.sheet) != "svg") throw WrongUsage("--sheet writes an SVG file: name one, FILE.svg");
    RequireFree(settings.sheet, settings.overwrite, settings.files[0]);
  }
  for (const std::string& path : settings.files) ShowFile(path, settings);
}

}  // namespace

Command InfoCommand() {
  return MakeCommand<Settings>(
      {.name = "info",
       .purpose = "Show all that a file carries: sizes, format, camera, profile, texts; a network's health",
       .examples = "norvkit info photo.jpg\nnorvkit info x2-48.net --sheet units.svg\n"
                   "norvkit info output.fdib test.dat",
       .notes = "Texts of a file are shown with control characters escaped and cut after 200 characters. The quality "
                "of a JPEG is estimated from its tables.\n"
                "A unit of a network is dead if its output is the same wherever it looks, saturated if its slope is "
                "under 5 per cent of the steepest that its activation has at 99.9 per cent of the pixels or more (of "
                "a ramp: it is never on). The sheet shows how much a unit's sum grows (red) or falls (blue) with each "
                "pixel of the neighbourhood."},
      Rows, Run);
}

}  // namespace norv
