#include "support/places.h"

namespace norv::test {

std::string NorvExecutable() { return NORV_EXECUTABLE; }
std::string NorvkitExecutable() { return NORVKIT_EXECUTABLE; }
std::vector<std::string> EmulatorWords() { return {NORV_EMULATOR}; }
std::string SourceFolder() { return NORV_SOURCE_DIR; }

}  // namespace norv::test
