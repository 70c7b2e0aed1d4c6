// What an action writes to standard output or error through this program's messages.
#pragma once

#include <cstdio>
#include <string>
#include <unistd.h>

#include "support/scratch.h"

namespace norv::test {

template <typename Action>
std::string OutputOf(const Action& action, int stream = 1) {
  const ScratchFolder folder;
  std::fflush(nullptr);
  const int saved = dup(stream);
  FILE* file = std::fopen((folder / "messages").c_str(), "wb");
  dup2(fileno(file), stream);
  action();
  std::fflush(nullptr);
  dup2(saved, stream);
  close(saved);
  std::fclose(file);
  return ReadBytes(folder / "messages");
}

template <typename Action>
std::string ErrorsOf(const Action& action) {
  return OutputOf(action, 2);
}

}  // namespace norv::test
