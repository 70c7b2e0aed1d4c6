// norvkit's own eye on files: info recognises and summarises each kind, curve reads the log of a training.
#include "fuzz.h"
#include "kit/kit.h"

using namespace norv;
using namespace norv::fuzz;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const char* const kNames[] = {"a.fdib", "a.mat", "a.bit", "a.net", "a.dat", "a", "log.csv"};
  Input input(data, size);
  const int32_t kind = input.Below(7);
  const std::string path = PutFile(kNames[kind], input.Rest());
  const int code =
      kind == 6 ? RunKit({"norvkit", "curve", path, Home() + "curve.svg"}) : RunKit({"norvkit", "info", path});
  Require(code == 0 || code == 1, "a file is read or refused");
  return 0;
}
