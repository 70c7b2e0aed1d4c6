#include "support/places.h"

namespace norv::test {

std::string NorvExecutable() { return NORV_EXECUTABLE; }
std::string NorvkitExecutable() { return NORVKIT_EXECUTABLE; }
std::string SourceFolder() { return NORV_SOURCE_DIR; }

}  // namespace norv::test
