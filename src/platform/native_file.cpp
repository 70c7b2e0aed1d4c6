#include "platform/native_file.h"

#include <atomic>
#include <filesystem>

#include "platform/file.h"
#include "platform/paths.h"

#ifdef _WIN32
#include <windows.h>
#else
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace norv {
namespace {

namespace fs = std::filesystem;

#ifdef _WIN32
fs::path ToPath(const std::string& utf8) { return fs::path(Wide(utf8)); }
unsigned long ProcessId() { return GetCurrentProcessId(); }
#else
fs::path ToPath(const std::string& utf8) { return fs::path(utf8); }
unsigned long ProcessId() { return static_cast<unsigned long>(getpid()); }
#endif

std::string TemporaryName(const std::string& destination) {
  static std::atomic<unsigned> counter{0};
  return destination + "." + std::to_string(ProcessId()) + "-" + std::to_string(counter++) + kTemporarySuffix;
}

bool IsTemporaryName(const fs::path& path) { return path.extension() == fs::path(kTemporarySuffix); }

// Removes the file unless somebody holds it locked.
void RemoveIfAbandoned(const fs::path& path);

}  // namespace

void RemoveAbandonedFiles(const std::string& destination) {
  fs::path folder = ToPath(destination).parent_path();
  if (folder.empty()) folder = ".";
  std::error_code ignored;
  for (fs::directory_iterator entry(folder, ignored), end; !ignored && entry != end; entry.increment(ignored))
    if (IsTemporaryName(entry->path())) RemoveIfAbandoned(entry->path());
}

bool RemoveFile(const std::string& path) {
  std::error_code error;
  fs::remove(ToPath(path), error);
  return !error;
}

#ifdef _WIN32

namespace {

void RemoveIfAbandoned(const fs::path& path) {
  // Writers let nobody else write, so this fails while one is alive.
  const HANDLE file = CreateFileW(path.c_str(), GENERIC_WRITE | DELETE, FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
                                  FILE_FLAG_DELETE_ON_CLOSE, nullptr);
  if (file != INVALID_HANDLE_VALUE) CloseHandle(file);
}

}  // namespace

NativeFile::NativeFile() : handle_(INVALID_HANDLE_VALUE) {}

NativeFile NativeFile::OpenForReading(const std::string& path) {
  return NativeFile(CreateFileW(Wide(path).c_str(), GENERIC_READ,
                                FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
                                FILE_FLAG_SEQUENTIAL_SCAN, nullptr));
}

NativeFile NativeFile::OpenForWriting(const std::string& path) {
  return NativeFile(
      CreateFileW(Wide(path).c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, CREATE_ALWAYS, 0, nullptr));
}

NativeFile NativeFile::OpenForUpdate(const std::string& path) {
  return NativeFile(CreateFileW(Wide(path).c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                OPEN_EXISTING, 0, nullptr));
}

NativeFile NativeFile::CreateTemporary(const std::string& destination, std::string& name,
                                       std::optional<ScratchGuard>& guard) {
  for (;;) {
    name = TemporaryName(destination);
    guard.emplace(name);
    // Deletion is shared for our own renaming and for the guard.
    NativeFile file(CreateFileW(Wide(name).c_str(), GENERIC_WRITE, FILE_SHARE_DELETE, nullptr, CREATE_NEW, 0, nullptr));
    if (file.IsOpen() || GetLastError() != ERROR_FILE_EXISTS) return file;
  }
}

bool NativeFile::IsOpen() const { return handle_ != INVALID_HANDLE_VALUE; }

int64_t NativeFile::Size() const {
  LARGE_INTEGER size;
  return GetFileSizeEx(handle_, &size) ? size.QuadPart : 0;
}

int64_t NativeFile::Read(void* bytes, size_t size) {
  DWORD got = 0;
  const DWORD part = static_cast<DWORD>(size < (1u << 30) ? size : (1u << 30));
  return ReadFile(handle_, bytes, part, &got, nullptr) ? static_cast<int64_t>(got) : -1;
}

int64_t NativeFile::Write(const void* bytes, size_t size) {
  DWORD sent = 0;
  const DWORD part = static_cast<DWORD>(size < (1u << 30) ? size : (1u << 30));
  return WriteFile(handle_, bytes, part, &sent, nullptr) ? static_cast<int64_t>(sent) : -1;
}

bool NativeFile::Skip(int64_t bytes) {
  LARGE_INTEGER distance, position;
  distance.QuadPart = bytes;
  return SetFilePointerEx(handle_, distance, &position, FILE_CURRENT) && position.QuadPart <= Size();
}

bool NativeFile::Seek(int64_t offset) {
  LARGE_INTEGER distance;
  distance.QuadPart = offset;
  return SetFilePointerEx(handle_, distance, nullptr, FILE_BEGIN);
}

bool NativeFile::Resize(int64_t size) { return Seek(size) && SetEndOfFile(handle_); }

bool NativeFile::CanSeek() const { return GetFileType(handle_) == FILE_TYPE_DISK; }

bool NativeFile::Flush() { return FlushFileBuffers(handle_); }

bool NativeFile::Close() {
  if (!IsOpen()) return true;
  const bool closed = CloseHandle(handle_);
  handle_ = INVALID_HANDLE_VALUE;
  return closed;
}

bool NativeFile::Rename(const std::string& temporary, const std::string& destination, bool durable) {
  // Renamed while still open, so that no other run takes it for abandoned.
  const DWORD flags = MOVEFILE_REPLACE_EXISTING | (durable ? MOVEFILE_WRITE_THROUGH : 0);
  if (!MoveFileExW(Wide(temporary).c_str(), Wide(destination).c_str(), flags)) return false;
  return Close();
}

std::string LastSystemError() {
  const DWORD code = GetLastError();
  return std::system_category().message(static_cast<int>(code));
}

std::string FinalTarget(const std::string& path) { return path; }

bool IsSpecialFile(const std::string&) { return false; }

#else

namespace {

// Whether the path still names the open file.
bool IsSameFile(int descriptor, const char* path) {
  struct stat open, named;
  return fstat(descriptor, &open) == 0 && stat(path, &named) == 0 && open.st_ino == named.st_ino &&
         open.st_dev == named.st_dev;
}

void RemoveIfAbandoned(const fs::path& path) {
  const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK);
  if (descriptor < 0) return;
  if (flock(descriptor, LOCK_EX | LOCK_NB) == 0 && IsSameFile(descriptor, path.c_str())) unlink(path.c_str());
  close(descriptor);
}

// Repeats a call that a signal interrupted.
template <typename Call>
auto Retry(Call call) {
  auto result = call();
  while (result < 0 && errno == EINTR) result = call();
  return result;
}

}  // namespace

NativeFile::NativeFile() : handle_(-1) {}

NativeFile NativeFile::OpenForReading(const std::string& path) {
  NativeFile file(Retry([&] { return open(path.c_str(), O_RDONLY | O_CLOEXEC); }));
  struct stat status;
  if (file.IsOpen() && fstat(file.handle_, &status) == 0 && S_ISDIR(status.st_mode)) {
    file.Close();
    errno = EISDIR;
  }
  return file;
}

NativeFile NativeFile::OpenForWriting(const std::string& path) {
  return NativeFile(Retry([&] { return open(path.c_str(), O_WRONLY | O_CLOEXEC); }));
}

NativeFile NativeFile::OpenForUpdate(const std::string& path) {
  return NativeFile(Retry([&] { return open(path.c_str(), O_WRONLY | O_CLOEXEC); }));
}

NativeFile NativeFile::CreateTemporary(const std::string& destination, std::string& name,
                                       std::optional<ScratchGuard>& guard) {
  for (;;) {
    name = TemporaryName(destination);
    guard.emplace(name);
    NativeFile file(open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
    if (!file.IsOpen()) {
      if (errno == EEXIST) continue;
      return file;
    }
    // Between creation and lock a cleaning run may have taken the file for an abandoned one: then start again.
    if (flock(file.handle_, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) continue;
    if (!IsSameFile(file.handle_, name.c_str())) continue;
    struct stat old;
    if (stat(destination.c_str(), &old) == 0) (void)!fchmod(file.handle_, old.st_mode & 07777);
    return file;
  }
}

bool NativeFile::IsOpen() const { return handle_ >= 0; }

int64_t NativeFile::Size() const {
  struct stat status;
  return fstat(handle_, &status) == 0 ? status.st_size : 0;
}

int64_t NativeFile::Read(void* bytes, size_t size) {
  return Retry([&] { return read(handle_, bytes, size); });
}

int64_t NativeFile::Write(const void* bytes, size_t size) {
  return Retry([&] { return write(handle_, bytes, size); });
}

bool NativeFile::Skip(int64_t bytes) {
  const off_t position = lseek(handle_, bytes, SEEK_CUR);
  return position >= 0 && position <= Size();
}

bool NativeFile::Seek(int64_t offset) { return lseek(handle_, offset, SEEK_SET) == offset; }

bool NativeFile::Resize(int64_t size) { return ftruncate(handle_, size) == 0; }

bool NativeFile::CanSeek() const { return lseek(handle_, 0, SEEK_CUR) >= 0; }

bool NativeFile::Flush() { return fsync(handle_) == 0; }

bool NativeFile::Close() {
  if (!IsOpen()) return true;
  const int closed = close(handle_);
  handle_ = -1;
  return closed == 0;
}

bool NativeFile::Rename(const std::string& temporary, const std::string& destination, bool durable) {
  // Renamed while still locked, so that no other run takes it for abandoned.
  if (rename(temporary.c_str(), destination.c_str()) != 0) return false;
  Close();
  if (durable) {
    const std::string folder = fs::path(destination).parent_path();
    const int descriptor = open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
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
  char* real = realpath(path.c_str(), nullptr);
  if (!real) return path;
  std::string target = real;
  std::free(real);
  return target;
}

bool IsSpecialFile(const std::string& path) {
  struct stat status;
  return stat(path.c_str(), &status) == 0 && !S_ISREG(status.st_mode) && !S_ISDIR(status.st_mode);
}

#endif

}  // namespace norv
