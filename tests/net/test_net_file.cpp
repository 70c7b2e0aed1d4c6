// The network's file: its layout byte for byte, and what is refused.
#include <doctest/doctest.h>

#include "net/net_file.h"
#include "support/nets.h"
#include "support/scratch.h"

using namespace norv;
using namespace norv::test;

namespace {

// A file put together field by field.
struct Bytes : std::string {
  template <typename T>
  Bytes& operator<<(T value) {
    append(reinterpret_cast<const char*>(&value), sizeof value);
    return *this;
  }
};

Bytes Header(int32_t N0, const std::vector<int32_t>& sizes) {
  Bytes bytes;
  bytes << int32_t{9} << N0;
  for (size_t i = 0; i < 16; ++i) bytes << (i < sizes.size() ? sizes[i] : 0);
  return bytes << int32_t{77} << 0.5f << 0.25f;
}

Bytes Record(int32_t kind, int32_t nin, float first) {
  Bytes bytes;
  bytes << kind << nin << first << first + 1 << first + 2 << first + 3 << first + 4;
  for (int32_t i = 0; i < 3 * nin; ++i) bytes << 100 * first + static_cast<float>(i);
  return bytes;
}

const std::string kSmall = Header(2, {2, 1}) + Record(14, 2, 1) + Record(12, 2, 10) + Record(15, 2, 20);

void CheckRefused(const std::string& bytes, const char* what) {
  CAPTURE(what);
  ScratchFolder folder;
  WriteBytes(folder / "a.net", bytes);
  NeuralNet net = RandomRecord(3, {2}, {12});
  const NeuralNet before = net;
  CHECK_THROWS_WITH(LoadNet(net, folder / "a.net", Folder::asGiven), "PROBLEM OPENING FILE!");
  CHECK(net.N == before.N);
  CHECK(net.SpareField == before.SpareField);
  CHECK(SameBits(net.layers[0].units[1].W, before.layers[0].units[1].W));
}

}  // namespace

TEST_CASE("every field of a network file has its place") {
  ScratchFolder folder;
  WriteBytes(folder / "a.net", kSmall + "bytes behind the records");
  NeuralNet net;
  LoadNet(net, folder / "a.net", Folder::asGiven);
  CHECK(net.Nlayers == 2);  // counted anew
  CHECK(net.N0 == 2);
  CHECK(net.SpareField == 77);
  CHECK(net.Cost == 0.5f);
  CHECK(net.SampleCost == 0.25f);
  const NetUnit& unit = net.layers[0].units[1];
  CHECK(unit.ActivationKind == 12);
  CHECK(unit.b == 10);
  CHECK(unit.vb == 11);
  CHECK(unit.z == 12);
  CHECK(unit.a == 13);
  CHECK(unit.delta == 14);
  CHECK(unit.X.x[1] == 1001);
  CHECK(unit.W.x[0] == 1002);
  CHECK(unit.V.x[1] == 1005);
  CHECK(unit.f(3) == 3);
  SaveNet(net, folder / "b.net", Folder::asGiven);
  std::string expected = kSmall;
  expected[0] = 2;
  CHECK(ReadBytes(folder / "b.net") == expected);
}

TEST_CASE("a negative layer size is an absent layer that passes through") {
  ScratchFolder folder;
  const std::string bytes = Header(2, {2, 1, -1, 0, -7}) + kSmall.substr(84);
  WriteBytes(folder / "a.net", bytes);
  NeuralNet net;
  LoadNet(net, folder / "a.net", Folder::asGiven);
  CHECK(net.Nlayers == 2);
  SaveNet(net, folder / "b.net", Folder::asGiven);
  CHECK(ReadBytes(folder / "b.net").substr(4) == bytes.substr(4));
}

TEST_CASE("49 inputs and any kinds pass through a file unchanged") {
  ScratchFolder folder;
  const NeuralNet net = RandomRecord(49, {5, 3, 16}, {0, 1, 18, -7, 17});
  SaveNet(net, folder / "a.net", Folder::asGiven);
  CHECK(ReadBytes(folder / "a.net").size() == 84 + 5 * (28 + 12 * 49) + 3 * (28 + 12 * 5) + 16 * (28 + 12 * 3));
  NeuralNet loaded;
  LoadNet(loaded, folder / "a.net", Folder::asGiven);
  CHECK(loaded.layers[0].units[0].X.n == 7);
  SaveNet(loaded, folder / "b.net", Folder::asGiven);
  CHECK(ReadBytes(folder / "a.net") == ReadBytes(folder / "b.net"));
}

TEST_CASE("damaged network files are refused and the network stays as it was") {
  CheckRefused("", "empty");
  CheckRefused(kSmall.substr(0, 83), "ends within the header");
  CheckRefused(kSmall.substr(0, 84), "ends behind the header");
  CheckRefused(kSmall.substr(0, kSmall.size() - 1), "ends within the last array");
  CheckRefused(Header(-2, {2, 1}) + kSmall.substr(84), "negative input count");
  CheckRefused(Header(2, {2, -1, 1}) + kSmall.substr(84), "gap");
  CheckRefused(Header(2, {2, 1}) + Record(14, 2, 1) + Record(12, 3, 10) + Record(15, 2, 20), "record disagrees");
  CheckRefused(Header(2, {2, 1}) + Record(14, 2, 1) + Record(12, -2, 10) + Record(15, 2, 20), "negative record");
  const int32_t huge = 2147483647;
  CheckRefused(Header(huge, {huge, huge, huge}) + kSmall.substr(84), "sizes beyond every file");
  CheckRefused(Header(huge, {1}) + kSmall.substr(84), "inputs beyond every file");
  NeuralNet net;
  ScratchFolder folder;
  CHECK_THROWS_WITH(LoadNet(net, folder / "none.net", Folder::asGiven), "PROBLEM OPENING FILE!");
}

TEST_CASE("a network that cannot be written throws and the old file stays") {
  ScratchFolder folder;
  const NeuralNet net = RandomRecord(3, {2}, {12});
  CHECK_THROWS_WITH(SaveNet(net, folder / "missing/a.net", Folder::asGiven), "Problem Saving File");
#ifndef _WIN32
  CHECK_THROWS_WITH(SaveNet(net, "/dev/full", Folder::asGiven), "Problem Saving File");
#endif
}
