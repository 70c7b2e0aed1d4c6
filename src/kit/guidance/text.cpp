#include "kit/guidance/text.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <sstream>

namespace norv {
namespace {

// Of one word to another by single letters.
size_t EditsBetween(const std::string& a, const std::string& b) {
  std::vector<std::vector<size_t>> edits(a.size() + 1, std::vector<size_t>(b.size() + 1));
  for (size_t i = 0; i <= a.size(); ++i)
    for (size_t j = 0; j <= b.size(); ++j) {
      if (i == 0 || j == 0) {
        edits[i][j] = i + j;
        continue;
      }
      const bool same = a[i - 1] == b[j - 1];
      edits[i][j] = std::min({edits[i - 1][j] + 1, edits[i][j - 1] + 1, edits[i - 1][j - 1] + (same ? 0 : 1)});
      if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1])
        edits[i][j] = std::min(edits[i][j], edits[i - 2][j - 2] + 1);
    }
  return edits.back().back();
}

}  // namespace

std::string Wrapped(const std::string& text, size_t indent, size_t column) {
  std::string lines;
  std::stringstream paragraphs(text);
  for (std::string paragraph; std::getline(paragraphs, paragraph);) {
    if (!lines.empty()) lines.append("\n").append(column = indent, ' ');
    bool first = true;
    for (const std::string& word : SplitAt(' ', paragraph)) {
      if (!first && column + 1 + word.size() > kHelpColumns) {
        lines.append("\n").append(column = indent, ' ');
        first = true;
      }
      lines += (first ? "" : " ") + word;
      column += word.size() + (first ? 0 : 1);
      first = false;
    }
  }
  return lines;
}

std::string Enumerated(std::span<const std::string> words, const char* lastWord) {
  std::string list;
  for (size_t i = 0; i < words.size(); ++i)
    list += (i == 0 ? "" : i + 1 == words.size() ? std::string(" ") + lastWord + " " : ", ") + words[i];
  return list;
}

std::string Printed(const char* format, ...) {
  char text[512];
  va_list values;
  va_start(values, format);
  std::vsnprintf(text, sizeof text, format, values);
  va_end(values);
  return text;
}

std::vector<std::string> SplitAt(char between, const std::string& text) {
  std::vector<std::string> parts;
  std::stringstream rest(text);
  for (std::string part; std::getline(rest, part, between);)
    if (!part.empty()) parts.push_back(part);
  return parts;
}

std::string NearestWord(const std::string& word, std::span<const std::string> candidates) {
  size_t least = std::max<size_t>(word.size() / 3, 1) + 1;
  std::string nearest;
  for (const std::string& candidate : candidates) {
    if (std::max(word.size(), candidate.size()) - std::min(word.size(), candidate.size()) >= least) continue;
    const size_t edits = EditsBetween(word, candidate);
    if (edits >= least) continue;
    least = edits;
    nearest = candidate;
  }
  return nearest;
}

}  // namespace norv
