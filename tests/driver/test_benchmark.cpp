#include <cmath>
#include <cstdio>
#include <doctest/doctest.h>
#include <sstream>
#include <string>
#include <vector>

#include "driver/benchmark.h"
#include "simd/products/kernels.h"
#include "support/levels.h"
#include "support/places.h"
#include "support/random_plane.h"

using namespace norv;
using namespace norv::test;

TEST_CASE("the benchmark's dot product sums eight lanes, then the rest into lane 0, then the lanes in order") {
  // Every product of 11 elements in the one place of the order where another order would lose it.
  matrix x(11, 1), y(11, 1);
  y.ones();
  x.fill(0);
  x.x[0] = 1e8f, x.x[8] = 3.0f, x.x[9] = 3.0f, x.x[10] = 3.0f, x.x[1] = -1e8f, x.x[2] = 0.5f;
  for (const VectorLevel level : AvailableLevels()) {
    const auto dot = ProductKernelsOf(level).dot;
    for (int32_t length = 1; length <= 150; ++length) {
      CAPTURE(length);
      const matrix a = RandomPlane(length, 1, length), b = RandomPlane(length, 1, length + 200);
      CHECK(dot(a.x, b.x, length) == PlainDot(a, b));
    }
    CHECK(dot(x.x, y.x, 11) == 0.5f);  // each 3 alone is lost beside 1e8; summed first they would leave 8
  }
}

TEST_CASE("the benchmark repeats in teams of any size and fills its vectors with numbers between 0 and 1") {
  matrix a(kBenchmarkLength, 1), b(kBenchmarkLength, 1);
  FillAtRandom(a);
  FillAtRandom(b);
  for (int32_t i = 0; i < kBenchmarkLength; ++i) {
    CHECK(a.x[i] >= 5e-9f);
    CHECK(a.x[i] <= 1.0f);
    CHECK(a.x[i] != b.x[i]);
  }
  for (const int threads : {1, 3, 8}) CHECK(RepeatDot(a, b, 1000, threads) == PlainDot(a, b));
}

// A plain build computes everything anyway, in code of another shape.
#if defined(__OPTIMIZE__) && !defined(NORV_SANITIZED) && !defined(_WIN32)
namespace {

struct Instruction {
  unsigned long address;
  std::string text;
};

// The executable's machine code of all functions whose readable name contains `name`; empty without a disassembler.
std::vector<std::vector<Instruction>> Disassemble(const std::string& name) {
  const std::string command = "objdump -d -C --no-show-raw-insn '" + test::NorvExecutable() + "' 2>&1";
  FILE* pipe = popen(command.c_str(), "r");
  std::vector<std::vector<Instruction>> functions;
  bool inside = false;
  char line[4096];
  while (pipe && std::fgets(line, sizeof line, pipe)) {
    unsigned long address;
    int length = 0;
    if (std::sscanf(line, "%lx <", &address) == 1 && line[0] != ' ') {
      inside = std::string(line).find(name) != std::string::npos;
      if (inside) functions.emplace_back();
    } else if (inside && std::sscanf(line, " %lx: %n", &address, &length) == 1 && length > 0) {
      functions.back().push_back({address, line + length});
    }
  }
  if (pipe) pclose(pipe);
  return functions;
}

int Count(const std::vector<Instruction>& code, const std::string& word) {
  int count = 0;
  for (const Instruction& instruction : code) count += instruction.text.find(word) != std::string::npos;
  return count;
}

// The stretches of code between a backward jump's target and the jump.
std::vector<std::vector<Instruction>> LoopsOf(const std::vector<Instruction>& code) {
  std::vector<std::vector<Instruction>> loops;
  for (const Instruction& jump : code) {
    unsigned long target;
    if (jump.text[0] != 'j' || std::sscanf(jump.text.c_str(), "%*s %lx", &target) != 1 || target > jump.address)
      continue;
    loops.emplace_back();
    for (const Instruction& instruction : code)
      if (instruction.address >= target && instruction.address <= jump.address) loops.back().push_back(instruction);
  }
  return loops;
}

}  // namespace

TEST_CASE("the executable's machine code still computes every product of the benchmark") {
  const auto kernels = Disassemble("::Dot(float const*, float const*, long)>:");
  const auto repeats = Disassemble("norv::RepeatDot(");
  if (kernels.empty() && Disassemble("<main>").empty()) {
    MESSAGE("skipped: no disassembler for this executable");
    return;
  }
  CHECK(kernels.size() == std::size(kLevels));
  for (const auto& kernel : kernels) {
    CHECK(Count(kernel, "vfm") == 0);
    int blockLoops = 0;
    for (const auto& loop : LoopsOf(kernel))
      blockLoops +=
          Count(loop, "vmulps") == 1 && Count(loop, "vaddps") == 1 && Count(loop, "ymm") >= 2 && loop.size() <= 8;
    CHECK(blockLoops == 1);
  }

  int callLoops = 0;
  for (const auto& function : repeats)
    for (const auto& loop : LoopsOf(function)) callLoops += Count(loop, "call ") == 1 && loop.size() <= 16;
  CHECK(callLoops >= 1);
}
#endif
