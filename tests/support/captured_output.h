// What an action writes to standard output through this program's messages.
#pragma once

#include <cstdio>
#include <string>
#ifdef _WIN32
#include <io.h>
#else
#include <unistd.h>
#endif

#include "support/scratch.h"

namespace norv::test {

template <typename Action>
std::string OutputOf(const Action& action) {
  const ScratchFolder folder;
  std::fflush(stdout);
  const int saved = dup(1);
  FILE* file = std::fopen((folder / "stdout").c_str(), "wb");
  dup2(fileno(file), 1);
  action();
  std::fflush(stdout);
  dup2(saved, 1);
  close(saved);
  std::fclose(file);
  return ReadBytes(folder / "stdout");
}

}  // namespace norv::test
