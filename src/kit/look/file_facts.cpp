#include "kit/look/file_facts.h"

#include <algorithm>
#include <array>
#include <set>
#include <vector>

#include "image/float_image.h"
#include "kit/failure.h"
#include "kit/look/picture_facts.h"
#include "kit/pictures/image_file.h"
#include "kit/pictures/picture.h"
#include "platform/console.h"
#include "platform/file.h"
#include "train/training_header.h"

namespace norv {
namespace {

constexpr const char* kColourNames[4][4] = {
    {"grey"}, {"grey", "alpha"}, {"red", "green", "blue"}, {"red", "green", "blue", "alpha"}};
constexpr const char* kPlaneNames[] = {"plane 0", "plane 1", "plane 2", "plane 3"};

// Planes one by one, and all values of the first three together.
class PlaneLook {
 public:
  void Add(const matrix* planes, int32_t count) {
    for (int32_t k = 0; k < count; ++k) {
      summaries_[k].Add(planes[k].x, planes[k].mn);
      if (k < 3) histogram_.Add(planes[k].x, planes[k].mn);
    }
  }
  void Finish(const char* const* names, int32_t count, Look& look) const {
    for (int32_t k = 0; k < count; ++k) look.facts.AddSummary(names[k], summaries_[k]);
    look.histogram = histogram_;
  }

 private:
  std::array<Summary, 4> summaries_;
  Histogram histogram_{0, 255};
};

void AddHealth(const NetHealth& health, size_t k, const std::string& name, Facts& facts) {
  facts.AddUnits(name + " dead", health.layers[k].dead);
  facts.AddUnits(name + " saturated", health.layers[k].saturated);
  facts.AddUnits(name + " not finite", health.layers[k].notFinite);
}

void AddLayer(const NetLayer& layer, const std::string& name, Facts& facts) {
  std::set<int32_t> kinds;
  Summary weights, biases;
  for (const NetUnit& unit : layer.units) {
    kinds.insert(unit.ActivationKind);
    weights.Add(unit.W.x, unit.W.mn);
    biases.Add(&unit.b, 1);
  }
  std::string words = Printed("%d units of %d inputs, kind", layer.Ni, layer.units.empty() ? 0 : layer.units[0].Nin);
  for (const int32_t kind : kinds) words += Printed(" %d", kind);
  facts.Add(name, words);
  facts.AddSummary(name + " weights", weights);
  facts.AddSummary(name + " biases", biases);
}

void AddVerdict(const NetHealth& health, Facts& facts) {
  size_t dead = 0, saturated = 0, notFinite = 0;
  for (const LayerHealth& layer : health.layers) {
    dead += layer.dead.size();
    saturated += layer.saturated.size();
    notFinite += layer.notFinite.size();
  }
  facts.Add("health", health.IsGood() ? "good: no unit is dead, saturated or not finite"
                                      : Printed("%zu dead, %zu saturated, %zu not finite", dead, saturated, notFinite));
  facts.Add("looked at", health.lookedAt);
}

}  // namespace

Look LookAtPicture(const std::string& path, const ReadChoice& choice) {
  const PictureSource source = OpenPicture(path, choice);
  const PictureShape shape = source.shape;
  Look look{PictureFacts(path, shape, choice), {}};
  PlaneLook planes;
  CopyRows(source, {[&](const Picture& rows) { planes.Add(rows.plane.data(), rows.channels); }, [] { return 0; }});
  planes.Finish(kColourNames[shape.channels - 1], shape.channels, look);
  return look;
}

Look LookAtMatrix(const std::string& path) {
  matrix values;
  values.load(path, false, Folder::asGiven);
  Look look;
  look.facts.Add("size",
                 Printed("m = %d, n = %d (as a plane: %d x %d pixels)", values.m, values.n, values.m, values.n));
  Summary summary;
  summary.Add(values.x, values.mn);
  look.facts.AddSummary("values", summary);
  look.histogram.emplace(summary.Min(), summary.Max()).Add(values.x, values.mn);
  return look;
}

Look LookAtFloatImage(const std::string& path) {
  const FloatImage image = LoadFloatImage(path);
  int64_t set = 0;
  for (int64_t k = 0; k < image.mask.Bits(); ++k) set += image.mask.words[k / 32] >> (k % 32) & 1;
  Look look;
  look.facts.Add("size", Printed("%d x %d pixels, %d planes", image.width, image.height, image.planes));
  look.facts.Add("colour", Printed("format %d (colour model %d)", image.format, ModelOf(image.format)));
  if (!image.mask.Empty())
    look.facts.Add("mask", Printed("of %lld pixels, %lld set", static_cast<long long>(image.mask.Bits()),
                                   static_cast<long long>(set)));
  PlaneLook planes;
  planes.Add(image.plane.data(), image.planes);
  planes.Finish(kPlaneNames, image.planes, look);
  return look;
}

Look LookAtBitImage(const std::string& path) {
  const Picture picture = LoadImage(path);
  Look look;
  look.facts.Add("size", Printed("%d x %d pixels, 3 bytes a pixel", picture.Width(), picture.Height()));
  PlaneLook planes;
  planes.Add(picture.plane.data(), 3);
  planes.Finish(kColourNames[2], 3, look);
  return look;
}

// The set goes by record by record: it may be larger than memory.
Look LookAtTrainingSet(const std::string& path) {
  FileIn in(path);
  const auto header = ReadHeader<TrainingHeader>(in);
  Look look;
  look.facts.Add("pairs", Printed("%d of %d inputs and %d outputs", header.N, header.Nin, header.Ny));
  std::vector<float> record(header.N > 0 ? size_t(header.Nin) + header.Ny : 0);
  Summary ofInputs, ofOutputs;
  Histogram& histogram = look.histogram.emplace(-1, 1);
  for (int32_t i = 0; i < header.N && !record.empty(); ++i) {  // pairs of nothing are quickly looked through
    in.Array(record.data(), record.size());
    ofInputs.Add(record.data(), header.Nin);
    ofOutputs.Add(record.data() + header.Nin, header.Ny);
    histogram.Add(record.data() + header.Nin, header.Ny);
  }
  if (!in.Complete()) Fail("%s cannot be read to its end", path.c_str());
  look.facts.AddSummary("inputs", ofInputs);
  look.facts.AddSummary("outputs", ofOutputs);
  return look;
}

Look LookAtNet(const NeuralNet& net, const NetHealth* health) {
  Look look;
  std::string sizes = Printed("%d inputs", net.N0);
  for (const NetLayer& layer : net.layers) sizes += Printed(" - %d", layer.Ni);
  look.facts.Add("layers", sizes);
  look.facts.Add("cost", Printed("%.6g, of the last sample %.6g, spare field %d", Printable(net.Cost),
                                 Printable(net.SampleCost), net.SpareField));
  Summary all;
  for (size_t k = 0; k < net.layers.size(); ++k) {
    const std::string name = "layer " + std::to_string(k + 1);
    AddLayer(net.layers[k], name, look.facts);
    if (health) AddHealth(*health, k, name, look.facts);
    for (const NetUnit& unit : net.layers[k].units) all.Add(unit.W.x, unit.W.mn);
  }
  if (health) AddVerdict(*health, look.facts);
  if (const char* reason = WhyNotEvaluable(net))
    look.facts.Add("health", std::string("cannot be evaluated: ") + reason);
  Histogram& histogram = look.histogram.emplace(all.Min(), all.Max());
  for (const NetLayer& layer : net.layers)
    for (const NetUnit& unit : layer.units) histogram.Add(unit.W.x, unit.W.mn);
  return look;
}

}  // namespace norv
