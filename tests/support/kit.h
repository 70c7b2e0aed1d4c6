// norvkit run as people run it.
#pragma once

#include <iterator>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "support/process.h"
#include "support/scratch.h"

namespace norv::test {

inline Outcome Kit(std::vector<std::string> arguments) {
  return Run({.arguments = std::move(arguments), .executable = NorvkitExecutable()});
}

// The words of one line of a shell without quotes, and further ones behind them.
inline std::vector<std::string> Words(const std::string& line, const std::vector<std::string>& more = {}) {
  std::istringstream stream(line);
  std::vector<std::string> words(std::istream_iterator<std::string>(stream), {});
  words.insert(words.end(), more.begin(), more.end());
  return words;
}

// A line of words in a folder.
inline Outcome KitIn(const ScratchFolder& folder, const std::string& line, const std::vector<std::string>& more = {}) {
  return Run({.arguments = Words(line, more), .executable = NorvkitExecutable(), .directory = folder.Path()});
}

inline bool Contains(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

}  // namespace norv::test
