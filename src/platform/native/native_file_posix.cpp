#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/file.h"
#include "platform/native/descriptor_posix.h"
#include "platform/native/native_file.h"

namespace norv {
namespace {

int Native(intptr_t handle) { return static_cast<int>(handle); }

// A descriptor or -1.
int Open(const std::string& path, int flags) {
  return Retry([&] { return open(path.c_str(), flags | O_CLOEXEC); });
}

}  // namespace

NativeFile NativeFile::OpenForReading(const std::string& path) {
  NativeFile file(Open(path, O_RDONLY));
  struct stat status;
  if (file.IsOpen() && fstat(Native(file.handle_), &status) == 0 && S_ISDIR(status.st_mode)) {
    file.Close();
    errno = EISDIR;
  }
  return file;
}

NativeFile NativeFile::OpenForWriting(const std::string& path) { return NativeFile(Open(path, O_WRONLY)); }

NativeFile NativeFile::OpenForUpdate(const std::string& path) { return NativeFile(Open(path, O_WRONLY)); }

NativeFile NativeFile::CreateTemporary(const std::string& destination, std::string& name,
                                       std::optional<ScratchGuard>& guard) {
  for (;;) {
    name = TemporaryName(destination);
    guard.emplace(name);
    const int descriptor = open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    NativeFile file(descriptor);
    if (!file.IsOpen()) {
      if (errno == EEXIST) continue;
      return file;
    }
    // Between creation and lock a cleaning run may have taken the file for an abandoned one: then start again.
    if (flock(descriptor, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) continue;
    if (!StillNamed(descriptor, name.c_str())) continue;
    struct stat old;
    if (stat(destination.c_str(), &old) == 0) (void)!fchmod(descriptor, old.st_mode & 07777);
    return file;
  }
}

int64_t NativeFile::Size() const {
  struct stat status;
  return fstat(Native(handle_), &status) == 0 ? status.st_size : 0;
}

int64_t NativeFile::Read(void* bytes, size_t size) {
  return Retry([&] { return read(Native(handle_), bytes, size); });
}

int64_t NativeFile::Write(const void* bytes, size_t size) {
  return Retry([&] { return write(Native(handle_), bytes, size); });
}

bool NativeFile::Skip(int64_t bytes) {
  const off_t position = lseek(Native(handle_), bytes, SEEK_CUR);
  return position >= 0 && position <= Size();
}

bool NativeFile::Seek(int64_t offset) { return lseek(Native(handle_), offset, SEEK_SET) == offset; }

bool NativeFile::Resize(int64_t size) { return ftruncate(Native(handle_), size) == 0; }

bool NativeFile::CanSeek() const { return lseek(Native(handle_), 0, SEEK_CUR) >= 0; }

bool NativeFile::Flush() { return fsync(Native(handle_)) == 0; }

void NativeFile::BeginFlush() {
#ifdef SYNC_FILE_RANGE_WRITE
  static_cast<void>(sync_file_range(Native(handle_), 0, 0, SYNC_FILE_RANGE_WRITE));
#endif
}

bool NativeFile::Close() {
  if (!IsOpen()) return true;
  const int closed = close(Native(handle_));
  handle_ = kNone;
  return closed == 0;
}

bool NativeFile::Rename(const std::string& temporary, const std::string& destination, bool durable) {
  // Renamed while still locked, so that no other run takes it for abandoned.
  if (rename(temporary.c_str(), destination.c_str()) != 0) return false;
  Close();
  if (durable) {
    const std::string folder = std::filesystem::path(destination).parent_path();
    const int descriptor = Open(folder.empty() ? "." : folder, O_RDONLY | O_DIRECTORY);
    if (descriptor >= 0) {
      fsync(descriptor);
      close(descriptor);
    }
  }
  return true;
}

std::string LastSystemError() { return std::strerror(errno); }

std::string FinalTarget(const std::string& path) {
  struct stat status;
  if (lstat(path.c_str(), &status) != 0 || !S_ISLNK(status.st_mode)) return path;
  if (char* real = realpath(path.c_str(), nullptr)) {
    std::string target = real;
    std::free(real);
    return target;
  }
  // A link to what is not there yet names the file that is made.
  std::filesystem::path target = path;
  std::error_code error;
  for (int links = 0; links < 40 && std::filesystem::is_symlink(target, error); ++links)
    target = target.parent_path() / std::filesystem::read_symlink(target, error);
  return target;
}

bool IsSpecialFile(const std::string& path) {
  struct stat status;
  return stat(path.c_str(), &status) == 0 && !S_ISREG(status.st_mode) && !S_ISDIR(status.st_mode);
}

bool IsReadOnly(const std::string& path) {
  struct stat status;
  if (stat(path.c_str(), &status) != 0) return false;
  return geteuid() == 0 && S_ISREG(status.st_mode) ? !(status.st_mode & S_IWUSR) : access(path.c_str(), W_OK) != 0;
}

void RemoveIfAbandoned(const std::filesystem::path& path) {
  const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK);
  if (descriptor < 0) return;
  if (flock(descriptor, LOCK_EX | LOCK_NB) == 0 && StillNamed(descriptor, path.c_str())) unlink(path.c_str());
  close(descriptor);
}

unsigned long ProcessId() { return static_cast<unsigned long>(getpid()); }

}  // namespace norv
