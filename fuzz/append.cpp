// test.dat as mode 11 continues it: pairs are added behind the counted records, or the file stays as it is.
#include "fuzz.h"
#include "train/training_pairs.h"

using namespace norv;
using namespace norv::fuzz;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Input input(data, size);
  const int32_t width = 1 + input.Below(40), height = 1 + input.Below(40);
  const int32_t shrinkOrder = static_cast<int8_t>(input.Byte());
  const bool fresh = input.Below(4) == 0;
  matrix picture(width, height);
  for (int32_t i = 0; i < picture.mn; ++i) picture.x[i] = static_cast<float>(31 * i % 256);
  const std::string bytes(input.Rest()), path = PutFile("a.dat", bytes);
  if (fresh) {
    const int32_t inputs = input.Byte(), outputs = input.Byte();
    if (!Accepts([&] { WriteTrainingPairs(path, picture, inputs, outputs, shrinkOrder); }))
      Require(BytesOf("a.dat") == bytes, "the old file stays");
    return 0;
  }
  const bool accepted = Accepts([&] { AppendTrainingPairs(path, picture, shrinkOrder); });
  const std::string after = BytesOf("a.dat");
  if (!accepted) {
    Require(after == bytes, "a refused file stays as it is");
    return 0;
  }
  TrainingHeader before, now;
  std::memcpy(&before, bytes.data(), sizeof before);
  std::memcpy(&now, after.data(), sizeof now);
  Require(now.N > before.N, "pairs are added");
  TrainingSet set;
  const bool wasWhole = int64_t(bytes.size()) >= before.FileBytes();
  Require(Accepts([&] { LoadTrainingSet(set, path, Folder::asGiven); }) == wasWhole, "a whole file stays whole");
  const size_t old = std::min(bytes.size(), size_t(before.FileBytes()));
  Require(after.compare(4, old - 4, bytes, 4, old - 4) == 0, "what was counted stays");
  return 0;
}
