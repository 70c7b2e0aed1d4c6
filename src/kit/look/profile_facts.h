// What a colour profile says of itself (ICC.1:2022), without making anything of it.
#pragma once

#include <cstdint>
#include <span>

#include "kit/look/facts.h"

namespace norv {

// Its name, size, kind, colours and version; of what is no profile the size alone.
void AddProfileFacts(std::span<const uint8_t> icc, Facts& facts);

}  // namespace norv
