// Compares single-precision results of the activation kinds with those of the formulas evaluated by this machine's C
// library, for every float there is: activation_check [KIND ...], all kinds by default, at the vector level that
// NORV_SIMD names. Prints a line for each kind; exit code 1 when any result differs. Minutes per kind and core.
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "net/activation.h"
#include "simd/evaluate/kernels.h"
#include "simd/levels.h"
#include "support/plain_activation.h"

using namespace norv;

namespace {

constexpr uint64_t kFloats = uint64_t{1} << 32;
constexpr uint64_t kPiece = 1 << 16;

// Of the floats whose bits are first, first + 1, ..., those whose results differ.
uint64_t DifferencesFrom(uint64_t first, int32_t kind) {
  static std::vector<float> x(kPiece), y(kPiece);
  for (uint64_t i = 0; i < kPiece; ++i) {
    const uint32_t bits = static_cast<uint32_t>(first + i);
    std::memcpy(&x[i], &bits, sizeof bits);
  }
  ActiveEvaluateKernels().activation[kind](x.data(), y.data(), kPiece);
  uint64_t different = 0;
  for (uint64_t i = 0; i < kPiece; ++i) {
    const float want = static_cast<float>(test::PlainActivation(kind, x[i]));
    if (std::memcmp(&want, &y[i], sizeof want) == 0 || (std::isnan(want) && std::isnan(y[i]))) continue;
    if (++different == 1) std::printf("  kind %d at %a: %a, library %a\n", kind, x[i], y[i], want);
  }
  return different;
}

bool Check(int32_t kind) {
  uint64_t different = 0;
  for (uint64_t first = 0; first < kFloats; first += kPiece) different += DifferencesFrom(first, kind);
  std::printf("kind %d, %s: %llu of 2^32 results differ\n", kind, NameOf(ActiveLevel()),
              static_cast<unsigned long long>(different));
  std::fflush(stdout);
  return different == 0;
}

}  // namespace

int main(int argc, char** argv) {
  const std::string refusal = ChooseLevelFromEnvironment();
  if (!refusal.empty()) return std::fprintf(stderr, "%s\n", refusal.c_str()), 2;
  std::vector<int32_t> kinds;
  for (int i = 1; i < argc; ++i) kinds.push_back(std::atoi(argv[i]));
  if (kinds.empty())
    for (int32_t kind = 1; kind < kActivationKinds; ++kind) kinds.push_back(kind);
  bool same = true;
  for (const int32_t kind : kinds) {
    if (kind < 1 || kind >= kActivationKinds)
      return std::fprintf(stderr, "kinds are 1 to %d\n", kActivationKinds - 1), 2;
    same = Check(kind) && same;
  }
  return same ? 0 : 1;
}
