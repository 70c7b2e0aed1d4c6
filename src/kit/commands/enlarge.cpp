#include <algorithm>
#include <cstdio>
#include <filesystem>

#include "kit/commands/command.h"
#include "kit/commands/shared_rows.h"
#include "kit/failure.h"
#include "kit/measure/certificate.h"
#include "kit/pictures/destination.h"
#include "kit/pictures/image_file.h"
#include "kit/pictures/picture.h"
#include "kit/scale/enlarge_to_size.h"
#include "kit/scale/restore_picture.h"
#include "kit/scale/restore_presets.h"
#include "platform/console.h"
#include "platform/team.h"

namespace norv {
namespace {

struct Settings {
  std::string picture, out, method, net, model, preset;
  WantedSize size;
  bool quick = false, denoise = false, certificate = false;
  NetEnlargement how;
  ReadChoice read;
  WriteChoice choice;
};

Options NetworkRows(Settings& settings) {
  return {{.name = "--quick", .target = &settings.quick, .help = "one plain pass of a network: an eighth of the work"},
          {.name = "--model",
           .target = &settings.model,
           .unit = "NAME",
           .help = "the network of that name (norvkit models lists them)",
           .byDefault = "the best for the picture"},
          {.name = "--net",
           .target = &settings.net,
           .unit = "FILE",
           .help = "the network in a .net file, plain unless --average",
           .excludes = "--model"},
          {.name = "--average",
           .target = &settings.how.average,
           .help = "with --net: mean over the eight orientations, eight times the work",
           .excludes = "--quick"},
          {.name = "--luminance-only",
           .target = &settings.how.shortcut,
           .help = "with --net: the network for the luminance, a third of the work",
           .aliases = "--shortcut"}};
}

// All but the file to write.
Options RowsBeside(Settings& settings) {
  return Joined({{PictureRow(settings.picture)},
                 SizeRows(settings.size, "larger", "2, or what --net does"),
                 {{.name = "--method",
                   .target = &settings.method,
                   .unit = "WAY",
                   .check = OneOf{"nearest,cubic,lanczos,net,both"},
                   .help = "nearest, cubic, lanczos, net or both: a network, then restoration from its answer",
                   .byDefault = "both; net with --net or --quick"},
                  {.name = "--preset",
                   .target = &settings.preset,
                   .unit = "NAME",
                   .check = OneOf{Listed(RestorePresetNames())},
                   .help = "of the restoration: clean, compressed (JPEG), noisy or drawn",
                   .byDefault = "by the picture"}},
                 NetworkRows(settings),
                 {ThreadsRow(settings.how.threads), DenoiseFirstRow(settings.denoise), PageRow(settings.read),
                  CertificateRow(settings.certificate)},
                 WriteRows(settings.choice)});
}

Options Rows(Settings& settings) {
  Options rows = RowsBeside(settings);
  rows.insert(rows.begin() + 1, OutRow(settings.out, "the larger one"));
  return rows;
}

bool ByFilter(const Settings& settings) {
  return !settings.method.empty() && settings.method != "net" && settings.method != "both";
}

// Whether restoration follows the networks, as far as the command line decides it.
bool Refining(const Settings& settings) {
  if (!settings.method.empty()) return settings.method == "both";
  return (settings.net.empty() && !settings.quick) || !settings.preset.empty();
}

// What was said and does nothing in the way that was chosen.
void RefuseIdleOptions(const Settings& settings) {
  struct Said {
    const char* option;
    bool said, idle;
  };
  const bool byFilter = ByFilter(settings);
  for (const auto& [option, said, idle] : {Said{"--net", !settings.net.empty(), byFilter},
                                           {"--model", !settings.model.empty(), byFilter},
                                           {"--quick", settings.quick, byFilter},
                                           {"--average", settings.how.average, byFilter},
                                           {"--luminance-only", settings.how.shortcut, byFilter},
                                           {"--preset", !settings.preset.empty(), !Refining(settings)}})
    if (said && idle)
      throw WrongUsage(std::string(option) + " does nothing with --method " + settings.method +
                       ": leave one of them out");
}

PictureSource Denoised(const PictureSource& picture, int32_t threads) {
  Picture whole = AllRows(picture);
  DenoisePicture(whole, {.threads = threads});
  return HeldPicture(std::move(whole));
}

PictureSize WantedOf(const Settings& settings, const PictureShape& shape) {
  return SizeOf(shape, settings.size.Said() ? settings.size : WantedSize{.by = 2}, Direction::larger);
}

// photo_2x.png or photo_640x480.png beside photo.jpg where no name was given.
std::string NameOf(const Settings& settings, const PictureSize& size) {
  if (!settings.out.empty()) return settings.out;
  const std::filesystem::path picture = settings.picture;
  char ending[64];
  if (settings.size.by > 0 || !settings.size.Said())
    std::snprintf(ending, sizeof ending, "_%.4gx.png", settings.size.Said() ? settings.size.by : 2.0);
  else
    std::snprintf(ending, sizeof ending, "_%dx%d.png", size.width, size.height);
  return (picture.parent_path() / picture.stem()).string() + ending;
}

// Networks that have learned what compression leaves know more of it than a restoration. For pictures of good files
// the others are better, and what they take for detail is smoothed.
std::string PresetFor(const Settings& settings, const NetworkPlan& plan, const PictureShape& shape) {
  if (!settings.preset.empty()) return settings.preset;
  if (plan.passes[0].facts.ForCompressed() && settings.method != "both") return "";
  return shape.jpegQuality > 0 ? "compressed" : "clean";
}

// The file's own network, whose factor decides.
EnlargeWay WayOfFile(const Settings& settings, const PictureShape& shape) {
  const int32_t factor = FactorOfNetwork(settings.net);
  const PictureSize size = SizeOf(shape, {.by = static_cast<double>(factor)}, Direction::larger);
  if (settings.size.Said() && WantedOf(settings, shape) != size)
    Fail("%s enlarges %s: leave out --net, or --by %d", settings.net.c_str(), factor == 2 ? "twice" : "four times",
         factor);
  EnlargeWay way{size, NetworkPlan{{{"", settings.net, factor, {}}}, ""}, settings.how};
  if (Refining(settings)) {
    way.how = {.average = !settings.quick, .shortcut = true, .threads = settings.how.threads};
    way.preset = PresetFor(settings, *way.plan, shape);
  }
  return way;
}

std::optional<NetworkPlan> PlanByName(const Settings& settings, const PictureShape& shape, const PictureSize& size) {
  const double scale =
      std::max(static_cast<double>(size.width) / shape.width, static_cast<double>(size.height) / shape.height);
  if (!settings.model.empty()) return PlanNetwork(FindModel(settings.model), scale);
  const PictureNature nature{shape.jpegQuality, settings.preset == "drawn"};
  return PlanNetworks(FindModels(), settings.quick ? NetworkWay::quick : NetworkWay::best, nature, scale);
}

EnlargeWay WayByName(const Settings& settings, const PictureShape& shape) {
  EnlargeWay way{WantedOf(settings, shape), {}, settings.how};
  way.how.average = !settings.quick;
  way.how.shortcut = true;
  way.plan = PlanByName(settings, shape, way.size);
  if (way.plan && Refining(settings)) way.preset = PresetFor(settings, *way.plan, shape);
  if (way.plan) return way;
  if (settings.method == "net" || settings.method == "both") Fail("%s", NoNetworks().c_str());
  Warn("%s; so Lanczos-3 enlarges, which is worse", NoNetworks().c_str());
  return way;
}

EnlargeWay WayOf(const Settings& settings, const PictureShape& shape) {
  if (!settings.net.empty()) return WayOfFile(settings, shape);
  if (!ByFilter(settings)) return WayByName(settings, shape);
  return {WantedOf(settings, shape),
          {},
          settings.how,
          settings.method == "nearest" ? ResizeFilter::nearest
          : settings.method == "cubic" ? ResizeFilter::cubic
                                       : ResizeFilter::lanczos};
}

// "x2, network x2-48, 2 threads", and why; only of what was chosen here. Then the name where that was.
void SayWay(const Settings& settings, const EnlargeWay& way, const PictureShape& shape, const std::string& name) {
  const int32_t threads = way.how.threads;
  if (way.plan && settings.net.empty())
    std::fprintf(stderr, "%s, network %s, %d %s%s (%s%s)\n", RatioInWords(shape, way.size).c_str(),
                 way.plan->Names().c_str(), threads, threads == 1 ? "thread" : "threads",
                 way.preset.empty() ? "" : (", then restored as " + way.preset).c_str(),
                 settings.quick ? "plain, " : "", way.plan->why.c_str());
  if (settings.out.empty()) std::fprintf(stderr, "%s\n", name.c_str());
}

void Run(const Settings& asked) {
  RefuseIdleOptions(asked);
  Settings settings = asked;
  if (settings.how.threads == 0) settings.how.threads = ProcessorCount();
  settings.choice.encoding.threads = settings.how.threads;
  PictureSource picture = OpenImage(settings.picture, settings.read);
  const EnlargeWay way = WayOf(settings, picture.shape);
  const std::string name = NameOf(settings, way.size);
  PictureShape large = picture.shape;
  large.width = way.size.width;
  large.height = way.size.height;
  const Destination out(name, large, settings.choice, settings.picture);
  SayWay(settings, way, picture.shape, name);
  std::optional<Certifier> certifier;
  if (settings.certificate) certifier.emplace(picture.shape, way.size, -1, out.RoundingOf(large));
  if (certifier) picture = certifier->Input(std::move(picture));
  if (settings.denoise) picture = Denoised(picture, settings.how.threads);
  PictureSource result = Enlarged(std::move(picture), way);
  if (certifier) result = certifier->Result(std::move(result));
  CopyRows(std::move(result), out.Create(large), "Enlarging");
  if (certifier) std::fprintf(stderr, "%s\n", InWords(certifier->Made()).c_str());
}

}  // namespace

Command EnlargeCommand() {
  return MakeCommand<Settings>({.name = "enlarge",
                                .purpose = "Make a picture larger: by the best network there is, or by interpolation",
                                .examples = "norvkit enlarge photo.jpg large.jpg\n"
                                            "norvkit enlarge photo.jpg large.png --width 3000\n"
                                            "norvkit enlarge photo.jpg large.png --by 4 --quick\n"
                                            "norvkit enlarge small.png large.png --net test.net --average"},
                               Rows, Run);
}

Command PictureCommand() {
  return MakeCommand<Settings>({.name = "enlarge", .purpose = "", .examples = ""}, RowsBeside, Run);
}

}  // namespace norv
