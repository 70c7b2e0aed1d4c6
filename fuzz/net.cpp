// .net: a refused file leaves the network alone; an accepted one is written back byte for byte, and can be evaluated
// when its kinds can.
#include "fuzz.h"
#include "net/enlarge.h"
#include "net/net_file.h"

using namespace norv;
using namespace norv::fuzz;

namespace {

NeuralNet SmallNet() {
  NeuralNet net;
  BuildNet(net, 3, {2});
  return net;
}

// Work of an evaluation grows with the weights; small networks show all there is to see.
bool IsSmall(const NeuralNet& net) {
  int64_t weights = 0;
  for (const NetLayer& layer : net.layers) weights += int64_t{layer.Ni} * layer.units[0].Nin;
  return weights < 10000;
}

void Enlarge(const NeuralNet& net) {
  FloatImage image(5, 3, kDefaultFormat);
  for (int32_t k = 0; k < 3; ++k)
    for (int32_t i = 0; i < image.count; ++i) image.plane[k].x[i] = static_cast<float>(17 * i % 256);
  NetEnlargeImage(image, net, true, true, 1);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string_view bytes = Input(data, size).Rest();
  const std::string path = PutFile("a.net", bytes);
  NeuralNet net = SmallNet();
  if (!Accepts([&] { LoadNet(net, path, Folder::asGiven); })) {
    Require(net.N0 == 3 && net.N[0] == 2 && net.layers.size() == 1, "a refused file leaves the network alone");
    return 0;
  }
  float mean, deviation;
  NetWeightStatistics(net, mean, deviation);
  SaveNet(net, path, Folder::asGiven);
  const std::string written = BytesOf("a.net");
  // The first field is counted anew.
  Require(written.size() <= bytes.size() && written.size() % 4 == 0, "no more than there was, in whole fields");
  std::vector<float> before(written.size() / 4), after(before.size());
  std::memcpy(before.data(), bytes.data(), written.size());
  std::memcpy(after.data(), written.data(), written.size());
  Require(SameBits(before.data() + 1, after.data() + 1, before.size() - 1), "reads back");
  if (!WhyNotEvaluable(net) && IsSmall(net)) Enlarge(net);
  return 0;
}
