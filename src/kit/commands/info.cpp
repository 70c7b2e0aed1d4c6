#include <set>

#include "image/bit_image.h"
#include "image/float_image.h"
#include "kit/commands/command.h"
#include "kit/commands/shared_rows.h"
#include "kit/failure.h"
#include "kit/measure/summary.h"
#include "kit/metadata/carry.h"
#include "kit/pictures/file_kind.h"
#include "kit/pictures/image_file.h"
#include "kit/pictures/picture.h"
#include "net/net_file.h"
#include "platform/console.h"
#include "platform/file.h"
#include "train/training_header.h"

namespace norv {
namespace {

struct Settings {
  std::vector<std::string> files;
  ReadChoice read;
};

Options Rows(Settings& settings) {
  return {{.name = "FILE",
           .target = &settings.files,
           .help = ".fdib, .mat, .bit, .net, a training set (.dat) or a picture"},
          PageRow(settings.read)};
}

// Planes one by one, then one histogram of all values of the first three.
void PrintPlanes(const matrix* planes, int32_t count, const char* const* names, double low, double high) {
  Histogram histogram(low, high);
  for (int32_t k = 0; k < count; ++k) {
    Summary summary;
    summary.Add(planes[k].x, planes[k].mn);
    summary.Print(names[k]);
    if (k < 3) histogram.Add(planes[k].x, planes[k].mn);
  }
  histogram.Print();
}

constexpr const char* kPlaneNames[] = {"plane 0", "plane 1", "plane 2", "plane 3"};

void PrintPicture(const std::string& path, const ReadChoice& read) {
  static constexpr const char* kNames[4][4] = {
      {"grey"}, {"grey", "alpha"}, {"red", "green", "blue"}, {"red", "green", "blue", "alpha"}};
  const Picture picture = ReadPicture(path, read);
  Say("%d x %d pixels, %d channels, %d bits\n", picture.Width(), picture.Height(), picture.channels, picture.bits);
  const std::string carried = picture.metadata ? ContentsOf(*picture.metadata) : "";
  if (!carried.empty()) Say("carries %s\n", carried.c_str());
  PrintPlanes(picture.plane.data(), picture.channels, kNames[picture.channels - 1], 0, 255);
}

void PrintMatrix(const std::string& path) {
  matrix values;
  values.load(path, false, Folder::asGiven);
  Say("m = %d, n = %d (as a plane: %d x %d pixels)\n", values.m, values.n, values.m, values.n);
  Summary summary;
  summary.Add(values.x, values.mn);
  summary.Print("values");
  Histogram histogram(summary.Min(), summary.Max());
  histogram.Add(values.x, values.mn);
  histogram.Print();
}

void PrintFloatImage(const std::string& path) {
  const FloatImage image = LoadFloatImage(path);
  int64_t set = 0;
  for (int64_t k = 0; k < image.mask.Bits(); ++k) set += image.mask.words[k / 32] >> (k % 32) & 1;
  Say("%d x %d pixels, %d planes, format %d (colour model %d)\n", image.width, image.height, image.planes, image.format,
      ModelOf(image.format));
  if (!image.mask.Empty())
    Say("mask of %lld pixels, %lld set\n", static_cast<long long>(image.mask.Bits()), static_cast<long long>(set));
  PrintPlanes(image.plane.data(), image.planes, kPlaneNames, 0, 255);
}

void PrintBitImage(const std::string& path) {
  static constexpr const char* kNames[] = {"red", "green", "blue"};
  const Picture picture = LoadImage(path);
  Say("%d x %d pixels, 3 bytes a pixel\n", picture.Width(), picture.Height());
  PrintPlanes(picture.plane.data(), 3, kNames, 0, 255);
}

void PrintLayer(const NetLayer& layer, size_t number) {
  std::set<int32_t> kinds;
  Summary weights, biases;
  for (const NetUnit& unit : layer.units) {
    kinds.insert(unit.ActivationKind);
    weights.Add(unit.W.x, unit.W.mn);
    biases.Add(&unit.b, 1);
  }
  Say("layer %zu: %d units of %d inputs, kind", number, layer.Ni, layer.units.empty() ? 0 : layer.units[0].Nin);
  for (const int32_t kind : kinds) Say(" %d", kind);
  Say("\n");
  weights.Print("  weights");
  biases.Print("  biases");
}

void PrintNet(const std::string& path) {
  NeuralNet net;
  LoadNet(net, path, Folder::asGiven);
  Say("%d inputs", net.N0);
  for (const NetLayer& layer : net.layers) Say(" - %d", layer.Ni);
  Say(", cost %.6g, of the last sample %.6g, spare field %d\n", Printable(net.Cost), Printable(net.SampleCost),
      net.SpareField);
  Summary all;
  for (size_t k = 0; k < net.layers.size(); ++k) {
    PrintLayer(net.layers[k], k + 1);
    for (const NetUnit& unit : net.layers[k].units) all.Add(unit.W.x, unit.W.mn);
  }
  Histogram histogram(all.Min(), all.Max());
  for (const NetLayer& layer : net.layers)
    for (const NetUnit& unit : layer.units) histogram.Add(unit.W.x, unit.W.mn);
  histogram.Print();
}

// The set goes by record by record: it may be larger than memory.
void PrintTrainingSet(const std::string& path) {
  FileIn in(path);
  const auto header = ReadHeader<TrainingHeader>(in);
  Say("%d pairs of %d inputs and %d outputs\n", header.N, header.Nin, header.Ny);
  std::vector<float> record(header.N > 0 ? size_t(header.Nin) + header.Ny : 0);
  Summary ofInputs, ofOutputs;
  Histogram histogram(-1, 1);
  for (int32_t i = 0; i < header.N && !record.empty(); ++i) {  // pairs of nothing are quickly looked through
    in.Array(record.data(), record.size());
    ofInputs.Add(record.data(), header.Nin);
    ofOutputs.Add(record.data() + header.Nin, header.Ny);
    histogram.Add(record.data() + header.Nin, header.Ny);
  }
  if (!in.Complete()) Fail("%s cannot be read to its end", path.c_str());
  ofInputs.Print("inputs");
  ofOutputs.Print("outputs");
  histogram.Print();
}

void PrintFile(const std::string& path, const ReadChoice& read) {
  const FileFacts facts = RecogniseFile(path);
  Say("%s: %s, %lld bytes\n", path.c_str(), NameOf(facts.kind), static_cast<long long>(facts.size));
  RecogniseWholeFile(path);
  if (facts.size > facts.expected)
    Say("%lld bytes behind the contents\n", static_cast<long long>(facts.size - facts.expected));
  switch (facts.kind) {
    case FileKind::picture:
      return PrintPicture(path, read);
    case FileKind::matrix:
      return PrintMatrix(path);
    case FileKind::floatImage:
      return PrintFloatImage(path);
    case FileKind::bitImage:
      return PrintBitImage(path);
    case FileKind::net:
      return PrintNet(path);
    case FileKind::trainingSet:
      return PrintTrainingSet(path);
  }
}

void Run(const Settings& settings) {
  for (const std::string& path : settings.files) PrintFile(path, settings.read);
}

}  // namespace

Command InfoCommand() {
  return MakeCommand<Settings>({.name = "info",
                                .purpose = "Show what is in a file: sizes, kinds, ranges, a histogram",
                                .examples = "norvkit info output.fdib net.net test.dat"},
                               Rows, Run);
}

}  // namespace norv
