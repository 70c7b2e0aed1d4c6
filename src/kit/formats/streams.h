// What passes once: standard input and output, "-" on the command line, and pipes that are named as files.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "kit/formats/byte_stream.h"

namespace norv {

// Whether the word means standard input or output.
bool IsStandard(const std::string& path);
// How people are told of it: "standard input" or "standard output" for "-", else the path itself.
std::string InputName(const std::string& path);
std::string OutputName(const std::string& path);

// Whether what is read there comes once only.
bool IsStream(const std::string& path);
// All that it brings, read at the first call and kept, for files are opened more than once. Throws a Failure: for a
// terminal, an error, what is no picture, more than memory holds.
const Bytes& AllOfStream(const std::string& path);

// A file that is replaced as a whole, or standard output, which gets all of it at the end, so that a failure before
// leaves nothing there.
class OutputBytes {
 public:
  explicit OutputBytes(const std::string& path);

  // Lives no longer than this.
  ByteSink Sink();
  bool Failed() const;
  // As FileOut's, once. What standard output does not take is said when the run ends.
  bool Commit();

 private:
  bool Keep(int64_t position, const uint8_t* source, size_t bytes);

  std::optional<FileOut> file_;
  std::vector<std::unique_ptr<uint8_t[]>> blocks_;  // of what goes to standard output
  int64_t size_ = 0;
  bool full_ = false;
};

}  // namespace norv
