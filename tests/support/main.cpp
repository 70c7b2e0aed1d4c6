// Runs the tests at the vector level that NORV_SIMD names; exit code 77 when this machine lacks it.
#define DOCTEST_CONFIG_IMPLEMENT
#include <cstdio>
#include <doctest/doctest.h>

#include "simd/levels.h"

int main(int argc, char** argv) {
  const std::string refusal = norv::ChooseLevelFromEnvironment();
  if (!refusal.empty()) {
    std::printf("skipped: %s\n", refusal.c_str());
    return 77;
  }
  return doctest::Context(argc, argv).run();
}
