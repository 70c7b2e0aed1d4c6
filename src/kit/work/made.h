// What has become of one picture.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "kit/measure/certificate.h"

namespace norv {

class JsonObject;

struct Made {
  std::string input = {}, output = {};  // paths as they were given or put together
  int32_t width = 0, height = 0;        // of the result, pixels
  std::string method = {};              // in words
  double seconds = 0;                   // from opening the input until the output stood
  uint64_t memory = 0;                  // the most bytes that the process held meanwhile
  std::optional<Certificate> certificate = {};
  std::string error = {};  // why it was not made; empty: it was

  bool Failed() const { return !error.empty(); }
};

// The row that --json prints of it.
JsonObject RowOf(const Made& made);

}  // namespace norv
