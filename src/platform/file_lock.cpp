#include "platform/file_lock.h"

#ifdef _WIN32
#include <cwctype>
#include <windows.h>

#include "platform/paths.h"
#else
#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace norv {

#ifdef _WIN32

namespace {

// An open handle would keep others from replacing the file, so the lock is a mutex whose name stands for the path.
std::wstring MutexName(const std::string& path) {
  wchar_t full[32768];
  const DWORD length = GetFullPathNameW(Wide(path).c_str(), 32768, full, nullptr);
  unsigned long long hash = 14695981039346656037ull;
  for (DWORD i = 0; i < length && i < 32768; ++i) hash = (hash ^ std::towlower(full[i])) * 1099511628211ull;
  return L"Local\\norv-" + std::to_wstring(hash);
}

}  // namespace

FileLock::FileLock(const std::string& path) : mutex_(CreateMutexW(nullptr, FALSE, MutexName(path).c_str())) {
  if (mutex_) WaitForSingleObject(mutex_, INFINITE);
}

FileLock::~FileLock() {
  if (!mutex_) return;
  ReleaseMutex(mutex_);
  CloseHandle(mutex_);
}

#else

namespace {

bool StillNamed(int descriptor, const char* path) {
  struct stat open, named;
  return fstat(descriptor, &open) == 0 && stat(path, &named) == 0 && open.st_ino == named.st_ino &&
         open.st_dev == named.st_dev;
}

}  // namespace

FileLock::FileLock(const std::string& path) {
  for (;;) {
    descriptor_ = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (descriptor_ < 0) return;
    int locked;
    do locked = flock(descriptor_, LOCK_EX);
    while (locked < 0 && errno == EINTR);
    // Whoever held it may have replaced the file meanwhile: then the lock is on a file without a name.
    if (locked < 0 || StillNamed(descriptor_, path.c_str())) return;
    close(descriptor_);
  }
}

FileLock::~FileLock() {
  if (descriptor_ >= 0) close(descriptor_);
}

#endif

}  // namespace norv
