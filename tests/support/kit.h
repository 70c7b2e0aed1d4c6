// norvkit run as people run it.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "support/process.h"

namespace norv::test {

inline Outcome Kit(std::vector<std::string> arguments) {
  return Run({.arguments = std::move(arguments), .executable = NorvkitExecutable()});
}

inline bool Contains(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

}  // namespace norv::test
