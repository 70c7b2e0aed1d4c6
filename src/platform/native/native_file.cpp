#include "platform/native/native_file.h"

#include <atomic>

#include "platform/file.h"
#include "platform/paths.h"

namespace norv {
namespace {

namespace fs = std::filesystem;

constexpr char kTemporarySuffix[] = ".norv-tmp";

}  // namespace

std::string TemporaryName(const std::string& destination) {
  static std::atomic<unsigned> counter{0};
  // A name may be as long as the system allows, and there is more to come.
  constexpr size_t kLongest = 200;
  const size_t length = ToNative(destination).filename().u8string().size();
  return destination.substr(0, destination.size() - (length > kLongest ? length - kLongest : 0)) + "." +
         std::to_string(ProcessId()) + "-" + std::to_string(counter++) + kTemporarySuffix;
}

void RemoveAbandonedFiles(const std::string& destination) {
  fs::path folder = ToNative(destination).parent_path();
  if (folder.empty()) folder = ".";
  std::error_code ignored;
  for (fs::directory_iterator entry(folder, ignored), end; !ignored && entry != end; entry.increment(ignored))
    if (entry->path().extension() == fs::path(kTemporarySuffix)) RemoveIfAbandoned(entry->path());
}

bool IsSameFile(const std::string& a, const std::string& b) {
  std::error_code error;
  return fs::equivalent(ToNative(a), ToNative(b), error) && !error;
}

bool RemoveFile(const std::string& path) {
  std::error_code error;
  fs::remove(ToNative(path), error);
  return !error;
}

}  // namespace norv
