// Whether a picture that was made again is the very file, and if not, what is different.
#pragma once

#include <cstdint>
#include <string>

namespace norv {

// Bytes of a file that are passed over.
struct LeftOut {
  int64_t at = 0, bytes = 0;
};

// Whether both files have the same bytes, but for what is left out of the first. Throws a Failure for a file that
// cannot be read.
bool SameBytes(const std::string& a, const LeftOut& leftOut, const std::string& b);

// What is different in the pictures of two files: "its pixels differ: 12 of 3072, by at most 3 grey levels". Throws
// what reading them throws.
std::string DifferenceInWords(const std::string& a, const std::string& b);

}  // namespace norv
