// Where the build put what the tests run and read; only places.cpp is told, so that no other file depends on it.
#pragma once

#include <string>
#include <vector>

namespace norv::test {

std::string NorvExecutable();
// Empty where the companion is not built.
std::string NorvkitExecutable();
// What runs these executables where the tests are built for another processor: an emulator's words, mostly none.
std::vector<std::string> EmulatorWords();
// The top of the source tree, without a separator at the end.
std::string SourceFolder();

}  // namespace norv::test
