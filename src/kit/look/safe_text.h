// Texts that others wrote, fit for a terminal and a line.
#pragma once

#include <string>
#include <string_view>

namespace norv {

inline constexpr size_t kMostOfText = 200;  // characters

// UTF-8 as it is, but line ends, control characters (those of C1 too), marks that turn the direction of writing and
// bytes that are no UTF-8 as \n, \t, \x1b, \u202e; backslashes doubled. What is longer than `most` characters is cut
// and its whole length in bytes said behind it.
std::string SafeText(std::string_view text, size_t most = kMostOfText);

}  // namespace norv
