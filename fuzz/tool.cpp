// The command line of norv, every mode. The first line says how large the picture is, its format and which files there
// are; the other lines are the words behind the program's name.
#include "driver/tool.h"

#include <cstdio>

#include "driver/arguments.h"
#include "fuzz.h"
#include "image/bit_image.h"
#include "image/float_image.h"
#include "net/net_file.h"
#include "train/training_set.h"

using namespace norv;
using namespace norv::fuzz;

namespace {

constexpr int32_t kBenchmark = 8;  // has nothing to decode and takes seconds

struct Scene {
  int width = 6, height = 5, format = 23, missing = 0;

  explicit Scene(const std::string& line) {
    std::sscanf(line.c_str(), "%4d %4d %9d %2d", &width, &height, &format, &missing);
    width = std::clamp(width, 0, 24);
    height = std::clamp(height, 0, 24);
  }
  bool Has(int file) const { return (missing >> file & 1) == 0; }
};

void PutImages(const Scene& scene) {
  FloatImage image(scene.width, scene.height, scene.format);
  for (int32_t k = 0; k < image.planes; ++k)
    for (int32_t i = 0; i < image.count; ++i) image.plane[k].x[i] = static_cast<float>((37 * i + 90 * k) % 256);
  BitImage bits(scene.width, scene.height);
  for (int32_t i = 0; i < bits.size; ++i) bits.pixels[i] = static_cast<uint8_t>(29 * i);
  if (scene.Has(0)) Require(!image.Save("input.fdib", Folder::executable), "the scene can be written");
  if (scene.Has(1)) bits.Save("input.bit", Folder::executable);
  if (scene.Has(2)) image.plane[0].save("standard.mat", Folder::executable);
}

void PutLearning(const Scene& scene) {
  NeuralNet net;
  BuildNet(net, 8, {3, 4});
  for (NetLayer& layer : net.layers)
    for (NetUnit& unit : layer.units) {
      unit.ActivationKind = 14;
      BindActivation(unit);
      for (int32_t i = 0; i < unit.Nin; ++i) unit.W.x[i] = 0.01f * static_cast<float>(i % 7 - 3);
    }
  TrainingSet set;
  CreateTrainingSet(set, 3, 8, 4);
  for (int32_t i = 0; i < 3 * set.RecordFloats(); ++i) set.block[i] = 0.1f * static_cast<float>(i % 9 - 4);
  if (scene.Has(3)) SaveNet(net, "net.net", Folder::executable);
  if (scene.Has(4)) SaveNet(net, "test.net", Folder::executable);
  if (scene.Has(5)) SaveTrainingSet(set, "test.dat", Folder::executable);
}

// Steps that the words ask for; a run of so many pixels and steps ends, but not soon.
double WorkOf(const Arguments& a, const Scene& scene) {
  const auto times = [&](int position) {
    return position < a.Count() ? std::max(1.0, static_cast<double>(a.Integer(position))) : 1.0;
  };
  const double pixels = 50.0 + scene.width * scene.height;
  switch (a.Integer(1)) {
    case 7:
      return times(2) * pixels * 100;
    case 9:
      return times(2) * 100;
    case 0:
    case 1:
    case 2:
    case 3:
    case 4:
    case 5:
      return (scene.Has(0) || scene.Has(1) ? pixels * times(2) * times(2) : 1.0) * times(14) * times(15) * times(17);
    default:
      return 0;
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  std::vector<std::string> words = WordsOf(Input(data, size).Rest());
  const Scene scene(words[0]);
  const Arguments arguments(words);
  if (words.size() > 1 && (arguments.Integer(1) == kBenchmark || WorkOf(arguments, scene) > 2e4)) return 0;
  // Modes 6 and 7 write where they are told to: only here.
  for (const std::string& word : words)
    if (word.find_first_of(std::string_view("/\0", 2)) != std::string::npos) return 0;
  ClearHome();
  PutImages(scene);
  PutLearning(scene);
  words[0] = "norv";
  const int code = RunTool(words);
  Require(code >= 0 && code <= 2, "a run ends well, in a failure, or as wrong use");
  return 0;
}
