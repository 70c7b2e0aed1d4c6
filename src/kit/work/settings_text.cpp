#include "kit/work/settings_text.h"

#include <charconv>
#include <cstring>

namespace norv {
namespace {

template <typename Number>
std::string ShortestText(Number value) {
  char text[64];
  return {text, std::to_chars(text, text + sizeof text, value).ptr};
}

std::string TextOf(const std::string& value) { return value; }
std::string TextOf(const std::optional<double>& value) { return value ? ShortestText(*value) : ""; }
std::string TextOf(bool value) { return value ? "true" : ""; }
std::string TextOf(const Times& value) { return value.count > 0 ? ShortestText(value.count) : ""; }
template <typename Number>
requires std::is_arithmetic_v<Number> std::string TextOf(Number value) { return ShortestText(value); }
std::string TextOf(const std::vector<std::string>&) { return ""; }  // places
std::string TextOf(const std::vector<int32_t>& values) {
  std::string list;
  for (const int32_t value : values) list.append(list.empty() ? "" : ",").append(ShortestText(value));
  return list;
}

std::string ValueOf(const Option& row) {
  return std::visit([](const auto* target) { return TextOf(*target); }, row.target);
}

void AddOption(const Option& row, const std::string& value, std::vector<std::string>& words) {
  if (const Times* const* times = std::get_if<Times*>(&row.target)) {
    words.insert(words.end(), static_cast<size_t>((*times)->count), row.name);
  } else if (!row.TakesValue()) {
    words.emplace_back(row.name);
  } else if (value.starts_with('-')) {
    words.push_back(std::string(row.name) + "=" + value);
  } else {
    words.emplace_back(row.name);
    words.push_back(value);
  }
}

bool IsPlain(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
         (c != 0 && std::strchr("_./:=,+@%-", c));
}

std::string Quoted(const std::string& word) {
  bool plain = !word.empty();
  std::string quoted = "'";
  for (const char c : word) {
    plain &= IsPlain(c);
    if (c == '\'')
      quoted += "'\\''";
    else
      quoted += c;
  }
  return plain ? word : quoted + "'";
}

}  // namespace

std::vector<std::string> SettingsWords(const Options& set, const Options& untouched) {
  std::vector<std::string> words;
  for (size_t i = 0; i < set.size() && i < untouched.size(); ++i) {
    if (set[i].HasPlace() || set[i].aside) continue;
    const std::string value = ValueOf(set[i]);
    if (!value.empty() && value != ValueOf(untouched[i])) AddOption(set[i], value, words);
  }
  return words;
}

std::string LineOfWords(std::span<const std::string> words) {
  std::string line;
  for (const std::string& word : words) line.append(line.empty() ? "" : " ").append(Quoted(word));
  return line;
}

std::vector<std::string> WordsOfLine(const std::string& line) {
  std::vector<std::string> words;
  bool inWord = false, inQuotes = false;
  const auto add = [&](char c) {
    if (!inWord) words.emplace_back();
    inWord = true;
    if (c != 0) words.back() += c;
  };
  for (size_t i = 0; i < line.size(); ++i) {
    if (line[i] == '\'') {
      inQuotes = !inQuotes;
      add(0);
    } else if (inQuotes || (line[i] != ' ' && line[i] != '\\')) {
      add(line[i]);
    } else if (line[i] == '\\' && i + 1 < line.size()) {
      add(line[++i]);
    } else {
      inWord = false;
    }
  }
  return words;
}

}  // namespace norv
