// Where the build put what the tests run and read; only places.cpp is told, so that no other file depends on it.
#pragma once

#include <string>

namespace norv::test {

std::string NorvExecutable();
// Empty where the companion is not built.
std::string NorvkitExecutable();
// The top of the source tree, without a separator at the end.
std::string SourceFolder();

}  // namespace norv::test
