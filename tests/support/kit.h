// norvkit run as people run it.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "kit/formats/encoding.h"
#include "support/process.h"
#include "support/scratch.h"

namespace norv::test {

#ifdef NORV_WEBP
inline constexpr bool kHasWebp = true;
#else
inline constexpr bool kHasWebp = false;
#endif

// For pictures that a test writes again.
inline WriteChoice Over() {
  WriteChoice choice;
  choice.overwrite = true;
  return choice;
}

inline Outcome Kit(std::vector<std::string> arguments) {
  return Run({.arguments = std::move(arguments), .executable = NorvkitExecutable()});
}

// A line of words in a folder.
inline Outcome KitIn(const ScratchFolder& folder, const std::string& line, const std::vector<std::string>& more = {}) {
  return Run({.arguments = Words(line, more), .executable = NorvkitExecutable(), .directory = folder.Path()});
}

// A line of bash in the folder, $k being norvkit.
inline Outcome Shell(const ScratchFolder& folder, const std::string& line) {
  std::string norvkit;
  for (const std::string& word : EmulatorWords()) norvkit += word + " ";
  return Run({.arguments = {"-c", "set -o pipefail; " + line},
              .environment = {"k=" + norvkit + NorvkitExecutable()},
              .executable = "/bin/bash",
              .directory = folder.Path()});
}

}  // namespace norv::test
