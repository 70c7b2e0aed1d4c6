#include <cwctype>
#include <windows.h>

#include "platform/file_lock.h"
#include "platform/native/text.h"

namespace norv {
namespace {

// An open handle would keep others from replacing the file, so the lock is a mutex whose name stands for the path.
std::wstring MutexName(const std::string& path) {
  const std::wstring given = Wide(path);
  std::wstring full(GetFullPathNameW(given.c_str(), 0, nullptr, nullptr), L'\0');
  full.resize(GetFullPathNameW(given.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr));
  unsigned long long hash = 14695981039346656037ull;  // FNV-1a
  for (const wchar_t c : full) hash = (hash ^ std::towlower(c)) * 1099511628211ull;
  return L"Local\\norv-" + std::to_wstring(hash);
}

}  // namespace

FileLock::FileLock(const std::string& path) {
  const HANDLE mutex = CreateMutexW(nullptr, FALSE, MutexName(path).c_str());
  if (!mutex) return;
  handle_ = reinterpret_cast<intptr_t>(mutex);
  WaitForSingleObject(mutex, INFINITE);
}

FileLock::~FileLock() {
  if (handle_ == -1) return;
  const HANDLE mutex = reinterpret_cast<HANDLE>(handle_);
  ReleaseMutex(mutex);
  CloseHandle(mutex);
}

}  // namespace norv
