// The network's file: its layout byte for byte, and what is refused.
#include "support/nets.h"
#include "support/samples.h"
#include "support/test.h"

namespace {

NeuralNet Loaded(const std::string& bytes) {
  const ScratchFolder folder;
  WriteBytes(folder / "a.net", bytes);
  NeuralNet net;
  LoadNet(net, folder / "a.net", Folder::asGiven);
  return net;
}

// The file with other integers from field `field` on (of four bytes each).
std::string With(std::string bytes, size_t field, const std::vector<int32_t>& values) {
  return bytes.replace(4 * field, 4 * values.size(), BytesOf(values.data(), values.size()));
}

}  // namespace

TEST_CASE("every field of a network file has its place") {
  const NeuralNet net = RandomRecord(2, {2, 1}, {14, 12});
  const NetUnit& unit = net.layers[0].units[1];
  const int32_t header[20] = {2, 2, 2, 1}, spare = net.SpareField, kind[] = {12, 2};
  const float costs[] = {net.Cost, net.SampleCost}, fields[] = {unit.b, unit.vb, unit.z, unit.a, unit.delta};
  const std::string bytes = NetBytes(net), record = bytes.substr(84 + 52, 52);
  CHECK(bytes.size() == 84 + 3 * 52);
  CHECK(bytes.substr(0, 84) == BytesOf(header, 18) + BytesOf(&spare, 1) + BytesOf(costs, 2));
  CHECK(record ==
        BytesOf(kind, 2) + BytesOf(fields, 5) + BytesOf(unit.X.x, 2) + BytesOf(unit.W.x, 2) + BytesOf(unit.V.x, 2));
  // The number of layers is counted anew.
  const NeuralNet loaded = Loaded(With(bytes, 0, {9}) + "bytes behind the records");
  CHECK(NetBytes(loaded) == bytes);
  CHECK((loaded.layers[0].units[1].f(3) == 3));
}

TEST_CASE("49 inputs, any kinds and negative sizes, which are absent layers, pass through a file unchanged") {
  const std::string bytes = NetBytes(RandomRecord(49, {5, 3, 16}, {0, 1, 18, -7, 17}));
  CHECK(bytes.size() == 84 + 5 * (28 + 12 * 49) + 3 * (28 + 12 * 5) + 16 * (28 + 12 * 3));
  for (const std::string& each : {bytes, With(bytes, 5, {-1, 0, -7})}) {
    const NeuralNet net = Loaded(each);
    CHECK((net.Nlayers == 3 && net.layers[0].units[0].X.n == 7));
    CHECK(NetBytes(net) == each);
    CHECK(net.FileBytes() == static_cast<int64_t>(each.size()));
  }
}

TEST_CASE("damaged network files are refused and the network stays as it was; what cannot be written throws") {
  const ScratchFolder folder;
  const std::string good = NetBytes(RandomRecord(2, {2, 1}, {14}));
  const int32_t huge = 2147483647;
  NeuralNet net = RandomRecord(3, {2}, {12});
  const std::string before = NetBytes(net);
  for (const std::string& bytes : {
           std::string(), good.substr(0, 83), good.substr(0, 84), good.substr(0, good.size() - 1),
           With(good, 1, {-2}),                      // inputs
           With(good, 3, {0, 1}),                    // a gap
           With(good, 3, {-1, 1}),                   // a gap
           With(good, 21 + 13 + 1, {3}),             // the second record disagrees with the header
           With(good, 21 + 13 + 1, {-2}),            //
           With(good, 1, {huge, huge, huge, huge}),  // beyond every file
       }) {
    WriteBytes(folder / "a.net", bytes);
    CHECK_THROWS_WITH(LoadNet(net, folder / "a.net", Folder::asGiven), "PROBLEM OPENING FILE!");
    CHECK(NetBytes(net) == before);
  }
  CHECK_THROWS_WITH(LoadNet(net, folder / "none.net", Folder::asGiven), "PROBLEM OPENING FILE!");
  CHECK_THROWS_WITH(SaveNet(net, folder / "missing/a.net", Folder::asGiven), "Problem Saving File");
  CHECK_THROWS_WITH(SaveNet(net, "/dev/full", Folder::asGiven), "Problem Saving File");
}
