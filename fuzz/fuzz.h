// What the fuzzers share: a folder of their own in memory, files made of the engine's bytes, and what may never happen.
//
// Each target is one file with the engine's entry point, LLVMFuzzerTestOneInput. A crash, a sanitizer's report, a
// broken Require, an allocation beyond what fuzz/memory.cpp grants, or a run that does not end is a finding.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>
#include <string>
#include <string_view>
#include <vector>

namespace norv::fuzz {

// The bytes of one run, taken from the front; zeros behind their end.
class Input {
 public:
  Input(const uint8_t* data, size_t size) : rest_(reinterpret_cast<const char*>(data), size) {}
  uint8_t Byte() {
    const uint8_t value = rest_.empty() ? 0 : static_cast<uint8_t>(rest_[0]);
    rest_.remove_prefix(std::min<size_t>(1, rest_.size()));
    return value;
  }
  // 0 .. limit - 1, for limits up to 256.
  int32_t Below(int32_t limit) { return Byte() % limit; }
  std::string_view Rest() const { return rest_; }

 private:
  std::string_view rest_;
};

// The lines of the bytes as words of a command line, the program's name first.
std::vector<std::string> WordsOf(std::string_view bytes);

// This process's folder: the tool's own (NORV_DIR) and the current one. Gone when the process ends.
const std::string& Home();

// Puts or reads a whole file of the folder; PutFile returns its path. A file that is not there reads as no bytes.
std::string PutFile(const std::string& name, std::string_view bytes);
std::string BytesOf(const std::string& name);

// Removes every file of the folder.
void ClearHome();

// Ends the process with this text when a promise is broken.
void Require(bool kept, const char* promise);

// Runs a reader; whether it accepted the file. Refusals are texts, everything else that is thrown is a finding.
template <typename Reader>
bool Accepts(const Reader& read) {
  try {
    read();
    return true;
  } catch (const char* refusal) {
    Require(refusal && *refusal, "a refusal says why");
    return false;
  } catch (const std::bad_alloc&) {
    return false;
  }
}

template <typename T>
bool SameBits(const T* a, const T* b, size_t n) {
  return n == 0 || std::memcmp(a, b, n * sizeof(T)) == 0;
}
// Files hold one kind of NaN.
inline bool SameBits(const float* a, const float* b, size_t n) {
  for (size_t i = 0; i < n; ++i)
    if (std::memcmp(a + i, b + i, sizeof *a) != 0 && !(std::isnan(a[i]) && std::isnan(b[i]))) return false;
  return true;
}

}  // namespace norv::fuzz
