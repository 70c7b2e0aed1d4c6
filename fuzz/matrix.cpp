// .mat: what was accepted is a whole matrix, and its file reads back to the same bits.
#include "fuzz.h"
#include "linear/matrix2.h"

using namespace norv;
using namespace norv::fuzz;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string path = PutFile("a.mat", Input(data, size).Rest());
  matrix a;
  if (!Accepts([&] { a.load(path, false, Folder::asGiven); })) {
    Require(a.mn == 0 && !a.x, "a refused matrix leaves nothing");
    return 0;
  }
  Require(int64_t{a.m} * a.n == a.mn, "m x n elements");
  for (int32_t j = 0; j < a.n; ++j) Require(a.z[j] == a.x + int64_t{a.m} * j, "columns lie one behind the other");
  a.save(path, Folder::asGiven);
  matrix b;
  b.load(path, false, Folder::asGiven);
  Require(a.m == b.m && a.n == b.n && SameBits(a.x, b.x, size_t(a.mn)), "what is written reads back");
  return 0;
}
