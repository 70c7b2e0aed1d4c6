// Whole files as bytes.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace norv {

using Bytes = std::vector<uint8_t>;

// Throws a Failure that names the file when it cannot be read whole or does not fit into memory.
Bytes ReadBytes(const std::string& path);

// Replaces the file as a whole; throws when that failed, the old file still there.
void WriteBytes(const std::string& path, const Bytes& bytes);

}  // namespace norv
