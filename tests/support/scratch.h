// A folder of one test's own, whole files in and out of it, and what stands in them.
#pragma once

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <random>
#include <string>

namespace norv::test {

class ScratchFolder {
 public:
  ScratchFolder() {
    static std::atomic<int> number{0};
    path_ = std::filesystem::temp_directory_path() /
            ("norv-test-" + std::to_string(std::random_device{}()) + "-" + std::to_string(++number));
    std::filesystem::create_directories(path_);
  }
  ~ScratchFolder() { std::filesystem::remove_all(path_); }
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;

  std::string operator/(const std::string& name) const { return (path_ / name).string(); }
  std::string Path() const { return path_.string(); }

 private:
  std::filesystem::path path_;
};

template <typename T>
std::string BytesOf(const T* values, size_t n) {
  return std::string(reinterpret_cast<const char*>(values), n * sizeof(T));
}

// The fields with which most files begin.
inline std::string Int32Bytes(std::initializer_list<int32_t> values) { return BytesOf(values.begin(), values.size()); }

inline std::string ReadBytes(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

inline void WriteBytes(const std::string& path, const std::string& bytes) {
  std::ofstream(path, std::ios::binary) << bytes;
}

inline bool Contains(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

}  // namespace norv::test
