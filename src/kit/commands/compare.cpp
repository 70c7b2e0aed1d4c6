#include <algorithm>
#include <cmath>
#include <optional>

#include "kit/commands/command.h"
#include "kit/commands/shared_rows.h"
#include "kit/failure.h"
#include "kit/guidance/json.h"
#include "kit/guidance/manner.h"
#include "kit/measure/difference_map.h"
#include "kit/measure/quality.h"
#include "kit/pictures/destination.h"
#include "kit/pictures/image_file.h"
#include "kit/pictures/luminance.h"
#include "kit/pictures/picture.h"
#include "platform/console.h"
#include "platform/threads/crew.h"

namespace norv {
namespace {

struct Settings {
  std::string a, b;
  int32_t border = 4;
  bool crop = false;
  std::string map;
  bool overwrite = false;
  ReadChoice read;
};

Options Rows(Settings& settings) {
  return {
      {.name = "A", .target = &settings.a, .help = "a picture, .fdib, .mat or .bit"},
      {.name = "B", .target = &settings.b, .help = "another one of the same size"},
      {.name = "--border",
       .target = &settings.border,
       .unit = "N",
       .check = Between{0, 1000000},
       .help = "pixels left out on every side"},
      {.name = "--crop",
       .target = &settings.crop,
       .help = "the larger one without what shrink had to leave out at the right and below"},
      {.name = "--map",
       .target = &settings.map,
       .unit = "OUT",
       .help = "a picture of where they differ, border and all: of each pixel the largest difference of its colours"},
      OverwriteRow(settings.overwrite),
      PageRow(settings.read)};
}

// The upper left part, no larger than the picture.
void CropTo(Picture& picture, int32_t width, int32_t height) {
  for (int32_t k = 0; k < picture.channels; ++k) {
    matrix part(width, height);
    for (int32_t y = 0; y < height; ++y) std::copy_n(picture.plane[k].z[y], width, part.z[y]);
    picture.plane[k].swap(part);
  }
}

void CropToCommonSize(Picture& a, Picture& b) {
  const int32_t width = std::min(a.Width(), b.Width()), height = std::min(a.Height(), b.Height());
  CropTo(a, width, height);
  CropTo(b, width, height);
}

// The luminance that papers on super-resolution measure: ITU-R BT.601 with its studio range 16..235, not rounded.
matrix StudioLuminanceOf(const Picture& picture) {
  matrix luminance(picture.Width(), picture.Height());
  for (int32_t i = 0; i < luminance.mn; ++i) {
    const double r = picture.Colour(0).x[i], g = picture.Colour(1).x[i], b = picture.Colour(2).x[i];
    luminance.x[i] = static_cast<float>(16 + (65.481 * r + 128.553 * g + 24.966 * b) / 255);
  }
  return luminance;
}

// In a line of text, or in the row for programs, where equal planes have no number.
void Report(const char* what, double ratio, std::optional<double> similarity, JsonObject& row) {
  JsonObject figures;
  figures.Number("psnr", ratio);
  if (similarity) figures.Number("ssim", *similarity);
  row.Object(what, figures);
  if (RunManner().json) return;
  if (std::isinf(ratio) && ratio > 0)
    Say("%-10s  PSNR identical", what);
  else
    Say("%-10s  PSNR %6.2f dB", what, Printable(ratio));
  if (similarity && !std::isnan(*similarity)) Say("  SSIM %.4f", *similarity);
  Say("\n");
}

void ReportColours(const Picture& a, const Picture& b, int32_t border, JsonObject& row) {
  constexpr const char* kNames[] = {"red", "green", "blue"};
  double squares = 0;  // of errors, where the peak is 1
  for (int k = 0; k < 3; ++k) {
    const double ratio = Psnr(WithoutBorder(a.Colour(k), border), WithoutBorder(b.Colour(k), border));
    Report(kNames[k], ratio, {}, row);
    squares += std::pow(10, -ratio / 10);
  }
  Report("colour", -10 * std::log10(squares / 3), {}, row);
}

void RequireComparable(const Picture& a, const Picture& b, int32_t border) {
  if (a.Width() != b.Width() || a.Height() != b.Height())
    Fail("the sizes differ: %d x %d and %d x %d", a.Width(), a.Height(), b.Width(), b.Height());
  if (WithoutBorder(a.plane[0], border).mn == 0)
    Fail("%d x %d pixels have nothing inside a border of %d", a.Width(), a.Height(), border);
}

void SaveMap(const matrix& differences, const Settings& settings) {
  WriteChoice choice;
  choice.overwrite = settings.overwrite;
  Picture map = DifferenceMap(differences);
  const Destination destination(settings.map, map.Shape(), choice, settings.a);
  destination.Save(std::move(map));
}

// Of the whole pictures, border and all.
void ReportLargest(const matrix& differences, JsonObject& row) {
  const DifferenceFigures figures = FiguresOf(differences);
  const double share = static_cast<double>(figures.differing) / differences.mn;
  row.Object("difference", JsonObject()
                               .Number("largest", figures.largest)
                               .Whole("column", figures.column)
                               .Whole("row", figures.row)
                               .Number("share", share));
  row.Flag("identical", figures.differing == 0);
  if (RunManner().json) return;
  if (figures.differing == 0) return Say("difference  none in any pixel\n");
  Say("difference  at most %.6g of 255, first at column %d, row %d; in %.4g %% of the pixels\n", figures.largest,
      figures.column, figures.row, 100 * share);
}

void Run(const Settings& settings) {
  if (!settings.map.empty()) RequireFree(settings.map, settings.overwrite, settings.a);
  Ahead<Picture> loading(UsualThreads());
  loading.Begin([path = settings.a, choice = settings.read] { return LoadImage(path, choice); });
  loading.Begin([path = settings.b] { return LoadImage(path); });
  Picture a = loading.Next(), b = loading.Next();
  if (settings.crop) CropToCommonSize(a, b);
  RequireComparable(a, b, settings.border);
  const matrix differences = LargestDifferences(a, b);
  if (!settings.map.empty()) SaveMap(differences, settings);
  JsonObject row;
  row.Text("a", settings.a).Text("b", settings.b);
  const auto inside = [&](const matrix& plane) { return WithoutBorder(plane, settings.border); };
  for (const auto& [what, luminanceOf] : {std::pair<const char*, matrix (*)(const Picture&)>{"luminance", LuminanceOf},
                                          {"studio Y", StudioLuminanceOf}}) {
    const matrix ofA = inside(luminanceOf(a)), ofB = inside(luminanceOf(b));
    Report(what, Psnr(ofA, ofB), Ssim(ofA, ofB), row);
  }
  if (!a.IsGrey() || !b.IsGrey()) ReportColours(a, b, settings.border, row);
  if (a.HasAlpha() && b.HasAlpha()) Report("alpha", Psnr(inside(a.Alpha()), inside(b.Alpha())), {}, row);
  ReportLargest(differences, row);
  if (a.HasAlpha() != b.HasAlpha()) Warn("only one of them has an alpha plane, which is left out");
  if (RunManner().json) SayRow(row);
}

}  // namespace

Command CompareCommand() {
  return MakeCommand<Settings>(
      {.name = "compare",
       .purpose = "PSNR and SSIM between two pictures, and where they differ",
       .examples = "norvkit compare original.png enlarged.png --border 4\n"
                   "norvkit compare original.png enlarged.png --map differences.png",
       .notes =
           "luminance is 0.299 R + 0.587 G + 0.114 B on 0..255; studio Y is what papers on super-resolution "
           "measure (BT.601,\n16..235: its PSNR comes out 1.3 dB higher). Nothing is rounded before. SSIM: Wang et "
           "al. 2004, 11 x 11 window. colour is the PSNR over red, green and blue together (CPSNR). The last line and "
           "the map take all pixels, rows and columns counted from 0.\n"
           "Colours of the map: 0 black, 1 dark blue, 4 purple, 16 orange, 64 yellow, 255 white, in between the\n"
           "mixture; green where a value is no number."},
      Rows, Run);
}

}  // namespace norv
