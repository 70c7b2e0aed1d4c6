// What several files say about descriptors.
#pragma once

#include <cerrno>
#include <sys/stat.h>

namespace norv {

// Whether the path still names the open file, which somebody may have removed or replaced.
inline bool StillNamed(int descriptor, const char* path) {
  struct stat open, named;
  return fstat(descriptor, &open) == 0 && stat(path, &named) == 0 && open.st_ino == named.st_ino &&
         open.st_dev == named.st_dev;
}

// Repeats a call that a signal interrupted.
template <typename Call>
auto Retry(Call call) {
  auto result = call();
  while (result < 0 && errno == EINTR) result = call();
  return result;
}

}  // namespace norv
