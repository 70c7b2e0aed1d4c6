// All benchmarks, at the vector level that NORV_SIMD names.
#include <benchmark/benchmark.h>
#include <cstdio>

#include "simd/levels.h"

int main(int argc, char** argv) {
  const std::string refusal = norv::ChooseLevelFromEnvironment();
  if (!refusal.empty()) return std::fprintf(stderr, "%s\n", refusal.c_str()), 2;
  benchmark::AddCustomContext("level", norv::NameOf(norv::ActiveLevel()));
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
