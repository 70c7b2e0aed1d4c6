#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/mapped_file.h"

namespace norv {

MappedFile::MappedFile(const std::string& path) {
  const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (descriptor < 0) return;
  struct stat status;
  if (fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode)) {
    size_ = status.st_size;
    void* memory =
        size_ > 0 ? mmap(nullptr, static_cast<size_t>(size_), PROT_READ, MAP_SHARED, descriptor, 0) : nullptr;
    if (memory != MAP_FAILED) bytes_ = static_cast<const char*>(memory);
    open_ = memory != MAP_FAILED;
  }
  close(descriptor);
}

MappedFile::~MappedFile() {
  if (bytes_) munmap(const_cast<char*>(bytes_), static_cast<size_t>(size_));
}

void MappedFile::Populate() const {
  if (!bytes_) return;
  madvise(const_cast<char*>(bytes_), static_cast<size_t>(size_), MADV_SEQUENTIAL);
#ifdef MADV_POPULATE_READ
  madvise(const_cast<char*>(bytes_), static_cast<size_t>(size_), MADV_POPULATE_READ);
#else
  constexpr int64_t kPage = 4096;
  for (int64_t i = 0; i < size_; i += kPage) (void)*static_cast<const volatile char*>(bytes_ + i);
#endif
  madvise(const_cast<char*>(bytes_), static_cast<size_t>(size_), MADV_RANDOM);
}

}  // namespace norv
