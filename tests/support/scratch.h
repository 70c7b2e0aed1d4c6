// A folder of one test's own, and whole files in and out of it.
#pragma once

#include <atomic>
#include <filesystem>
#include <fstream>
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

inline std::string ReadBytes(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

inline void WriteBytes(const std::string& path, const std::string& bytes) {
  std::ofstream(path, std::ios::binary) << bytes;
}

}  // namespace norv::test
