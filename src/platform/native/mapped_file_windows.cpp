#include <windows.h>

#include "platform/mapped_file.h"
#include "platform/native/text.h"

namespace norv {

MappedFile::MappedFile(const std::string& path) {
  const HANDLE file =
      CreateFileW(Wide(path).c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                  OPEN_EXISTING, 0, nullptr);
  if (file == INVALID_HANDLE_VALUE) return;
  LARGE_INTEGER size;
  if (GetFileSizeEx(file, &size)) {
    size_ = size.QuadPart;
    const HANDLE mapping = size_ > 0 ? CreateFileMappingW(file, nullptr, PAGE_READONLY, 0, 0, nullptr) : nullptr;
    if (mapping) bytes_ = static_cast<const char*>(MapViewOfFile(mapping, FILE_MAP_READ, 0, 0, 0));
    if (mapping) CloseHandle(mapping);
    open_ = size_ == 0 || bytes_ != nullptr;
  }
  CloseHandle(file);
}

MappedFile::~MappedFile() {
  if (bytes_) UnmapViewOfFile(bytes_);
}

void MappedFile::Populate() const {
  constexpr int64_t kPage = 4096;
  for (int64_t i = 0; i < size_; i += kPage) (void)*static_cast<const volatile char*>(bytes_ + i);
}

}  // namespace norv
