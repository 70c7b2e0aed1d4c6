#include "fuzz.h"

#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <unistd.h>

namespace norv::fuzz {
namespace {

namespace fs = std::filesystem;

std::string MakeHome() {
  std::string name = fs::is_directory("/dev/shm") ? "/dev/shm/norv-fuzz-XXXXXX" : "/tmp/norv-fuzz-XXXXXX";
  if (!mkdtemp(name.data())) std::abort();
  return name + "/";
}

void RemoveHome() {
  std::error_code ignored;
  fs::remove_all(Home(), ignored);
}

}  // namespace

const std::string& Home() {
  static const std::string folder = MakeHome();
  return folder;
}

std::string PutFile(const std::string& name, std::string_view bytes) {
  const std::string path = Home() + name;
  std::ofstream(path, std::ios::binary) << bytes;
  return path;
}

std::string BytesOf(const std::string& name) {
  std::ifstream file(Home() + name, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

void ClearHome() {
  for (const auto& entry : fs::directory_iterator(Home())) fs::remove_all(entry.path());
}

std::vector<std::string> WordsOf(std::string_view bytes) {
  std::vector<std::string> words(1);
  for (const char c : bytes)
    if (c == '\n')
      words.emplace_back();
    else
      words.back() += c;
  return words;
}

void Require(bool kept, const char* promise) {
  if (kept) return;
  std::fprintf(stderr, "broken promise: %s\n", promise);
  std::abort();
}

}  // namespace norv::fuzz

// The engine calls this first. Key presses are read from the null device.
extern "C" int LLVMFuzzerInitialize(int*, char***) {
  using norv::fuzz::Home;
  setenv("NORV_DIR", Home().c_str(), 1);
  std::atexit(norv::fuzz::RemoveHome);
  const int null = open("/dev/null", O_RDWR);
  return dup2(null, STDIN_FILENO) == STDIN_FILENO && dup2(null, STDOUT_FILENO) == STDOUT_FILENO ? 0 : 1;
}
