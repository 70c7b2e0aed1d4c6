#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include "platform/file_lock.h"
#include "platform/native/descriptor_posix.h"

namespace norv {

FileLock::FileLock(const std::string& path) {
  for (;;) {
    const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    handle_ = descriptor;
    if (descriptor < 0) return;
    const int locked = Retry([&] { return flock(descriptor, LOCK_EX); });
    // Whoever held it may have replaced the file meanwhile: then the lock is on a file without a name.
    if (locked < 0 || StillNamed(descriptor, path.c_str())) return;
    close(descriptor);
  }
}

FileLock::~FileLock() {
  if (handle_ >= 0) close(static_cast<int>(handle_));
}

}  // namespace norv
