#include "net/net_file.h"

#include <utility>

#include "platform/assert.h"
#include "platform/console.h"
#include "platform/file.h"
#include "platform/paths.h"

namespace norv {
namespace {

template <typename File, typename Unit>
void TransferUnit(File& file, Unit& unit) {
  const size_t nin = static_cast<size_t>(unit.Nin);
  file.Field(unit.ActivationKind);
  file.Field(unit.Nin);
  file.Field(unit.b);
  file.Field(unit.vb);
  file.Field(unit.z);
  file.Field(unit.a);
  file.Field(unit.delta);
  file.Array(unit.X.x, nin);
  file.Array(unit.W.x, nin);
  file.Array(unit.V.x, nin);
}

// Null when the whole file was read into net, otherwise why not.
const char* ReadNet(FileIn& file, NeuralNet& net) {
  const auto header = ReadHeader<NetHeader>(file);
  if (!file.Complete()) return "the file ends within its header";
  if (const char* problem = WhyNotBuildable(header)) return problem;
  if (file.Size() < header.FileBytes()) return "the file ends before its last unit";
  BuildNet(net, header.N0, header.N);
  net.SpareField = header.SpareField;
  net.Cost = header.Cost;
  net.SampleCost = header.SampleCost;
  for (NetLayer& layer : net.layers)
    for (NetUnit& unit : layer.units) {
      const int32_t nin = unit.Nin;
      TransferUnit(file, unit);
      if (unit.Nin != nin) return "a unit's input count disagrees with the header";
      BindActivation(unit);
    }
  return file.Complete() ? nullptr : "the file cannot be read to its end";
}

}  // namespace

void LoadNet(NeuralNet& net, const std::string& name, Folder folder) {
  FileIn file(PathOf(name, folder));
  NeuralNet loaded;
  const char* problem = file.IsOpen() ? ReadNet(file, loaded) : file.Reason().c_str();
  if (problem) {
    Complain("cannot load %s: %s", file.Path().c_str(), problem);
    throw "PROBLEM OPENING FILE!";
  }
  std::swap(net, loaded);
}

void SaveNet(const NeuralNet& net, const std::string& name, Folder folder) {
  FileOut file(PathOf(name, folder));
  WriteHeader<NetHeader>(file, net);
  for (const NetLayer& layer : net.layers)
    for (const NetUnit& unit : layer.units) {
      NORV_ASSERT(unit.X.mn == unit.Nin && unit.W.mn == unit.Nin && unit.V.mn == unit.Nin);
      TransferUnit(file, unit);
    }
  if (!file.Commit()) throw "Problem Saving File";
}

}  // namespace norv
