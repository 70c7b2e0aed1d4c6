#include <windows.h>

#include "platform/file.h"
#include "platform/native/native_file.h"
#include "platform/native/text.h"

namespace norv {
namespace {

HANDLE Native(intptr_t handle) { return reinterpret_cast<HANDLE>(handle); }

static_assert(sizeof(intptr_t) == sizeof(HANDLE));

// A handle, or -1, which is what the system calls an invalid one too.
intptr_t Open(const std::string& path, DWORD access, DWORD sharing, DWORD disposition, DWORD flags = 0) {
  return reinterpret_cast<intptr_t>(
      CreateFileW(WidePath(path).c_str(), access, sharing, nullptr, disposition, flags, nullptr));
}

DWORD OnePart(size_t size) { return static_cast<DWORD>(size < (1u << 30) ? size : (1u << 30)); }

bool Move(intptr_t handle, int64_t distance, DWORD from, int64_t* reached = nullptr) {
  LARGE_INTEGER wanted, position;
  wanted.QuadPart = distance;
  if (!SetFilePointerEx(Native(handle), wanted, &position, from)) return false;
  if (reached) *reached = position.QuadPart;
  return true;
}

}  // namespace

NativeFile NativeFile::OpenForReading(const std::string& path) {
  return NativeFile(Open(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, OPEN_EXISTING,
                         FILE_FLAG_SEQUENTIAL_SCAN));
}

NativeFile NativeFile::OpenForWriting(const std::string& path) {
  return NativeFile(Open(path, GENERIC_WRITE, FILE_SHARE_READ, CREATE_ALWAYS));
}

NativeFile NativeFile::OpenForUpdate(const std::string& path) {
  return NativeFile(Open(path, GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, OPEN_EXISTING));
}

NativeFile NativeFile::CreateTemporary(const std::string& destination, std::string& name,
                                       std::optional<ScratchGuard>& guard) {
  for (;;) {
    name = TemporaryName(destination);
    guard.emplace(name);
    // Deletion is shared for our own renaming and for the guard.
    NativeFile file(Open(name, GENERIC_WRITE, FILE_SHARE_DELETE, CREATE_NEW));
    if (file.IsOpen() || GetLastError() != ERROR_FILE_EXISTS) return file;
  }
}

int64_t NativeFile::Size() const {
  LARGE_INTEGER size;
  return GetFileSizeEx(Native(handle_), &size) ? size.QuadPart : 0;
}

int64_t NativeFile::Read(void* bytes, size_t size) {
  DWORD got = 0;
  return ReadFile(Native(handle_), bytes, OnePart(size), &got, nullptr) ? static_cast<int64_t>(got) : -1;
}

int64_t NativeFile::Write(const void* bytes, size_t size) {
  DWORD sent = 0;
  return WriteFile(Native(handle_), bytes, OnePart(size), &sent, nullptr) ? static_cast<int64_t>(sent) : -1;
}

bool NativeFile::Skip(int64_t bytes) {
  int64_t position = 0;
  return Move(handle_, bytes, FILE_CURRENT, &position) && position <= Size();
}

bool NativeFile::Seek(int64_t offset) { return Move(handle_, offset, FILE_BEGIN); }

bool NativeFile::Resize(int64_t size) { return Seek(size) && SetEndOfFile(Native(handle_)); }

bool NativeFile::CanSeek() const { return GetFileType(Native(handle_)) == FILE_TYPE_DISK; }

bool NativeFile::Flush() { return FlushFileBuffers(Native(handle_)); }

void NativeFile::BeginFlush() {}

bool NativeFile::Close() {
  if (!IsOpen()) return true;
  const bool closed = CloseHandle(Native(handle_));
  handle_ = kNone;
  return closed;
}

bool NativeFile::Rename(const std::string& temporary, const std::string& destination, bool durable) {
  // Renamed while still open, so that no other run takes it for abandoned.
  const DWORD flags = MOVEFILE_REPLACE_EXISTING | (durable ? MOVEFILE_WRITE_THROUGH : 0);
  if (!MoveFileExW(WidePath(temporary).c_str(), WidePath(destination).c_str(), flags)) return false;
  return Close();
}

std::string LastSystemError() {
  const auto code = static_cast<int>(GetLastError());
  // In the words of every other system where there are such.
  const std::error_condition condition = std::system_category().default_error_condition(code);
  if (condition.category() == std::generic_category()) return condition.message();
  wchar_t text[512] = L"";
  const DWORD length = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, code, 0,
                                      text, std::size(text), nullptr);
  for (DWORD at = length; at > 0 && text[at - 1] <= L' '; --at) text[at - 1] = 0;
  return length > 0 ? Utf8(text) : "error " + std::to_string(code);
}

std::string FinalTarget(const std::string& path) { return path; }

bool IsSpecialFile(const std::string&) { return false; }

bool IsReadOnly(const std::string& path) {
  const DWORD attributes = GetFileAttributesW(WidePath(path).c_str());
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY);
}

void RemoveIfAbandoned(const std::filesystem::path& path) {
  // Writers let nobody else write, so this fails while one is alive.
  const HANDLE file = CreateFileW(path.c_str(), GENERIC_WRITE | DELETE, FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
                                  FILE_FLAG_DELETE_ON_CLOSE, nullptr);
  if (file != INVALID_HANDLE_VALUE) CloseHandle(file);
}

unsigned long ProcessId() { return GetCurrentProcessId(); }

}  // namespace norv
