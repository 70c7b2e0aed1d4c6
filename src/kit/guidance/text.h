// Text for people at a prompt.
#pragma once

#include <span>
#include <string>
#include <vector>

namespace norv {

inline constexpr size_t kHelpColumns = 100;

// Broken between words into lines of at most kHelpColumns, every line behind the first indented so far; `column` is
// where the first one begins. Line ends in the text stay.
std::string Wrapped(const std::string& text, size_t indent, size_t column);

// "a, b or c".
std::string Enumerated(std::span<const std::string> words, const char* lastWord = "or");

// Put together as by printf; no longer than 511 bytes.
[[gnu::format(gnu_printf, 1, 2)]] std::string Printed(const char* format, ...);

std::vector<std::string> SplitAt(char between, const std::string& text);

// The word that was probably meant: the nearest of the candidates by insertions, deletions, replacements and exchanges
// of neighbours (Damerau 1964), where it is near enough; else empty.
std::string NearestWord(const std::string& word, std::span<const std::string> candidates);

}  // namespace norv
