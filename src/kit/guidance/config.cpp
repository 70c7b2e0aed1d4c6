#include "kit/guidance/config.h"

#include <algorithm>
#include <charconv>

#include "kit/failure.h"
#include "kit/guidance/usage.h"

namespace norv {
namespace {

const Option& RowOf(const Command& command, const ConfigItem& item) {
  const Option& row = RowNamed(command, "--" + item.key);
  if (std::string_view(row.name) == "--config") throw WrongUsage("a file of settings cannot name another one");
  return row;
}

// How often a flag is meant.
int32_t TimesOf(const Option& row, const std::string& value) {
  if (value == "true") return 1;
  if (value == "false") return 0;
  constexpr int32_t kMost = 100;
  int32_t count = -1;
  const char* end = value.data() + value.size();
  const bool whole = std::from_chars(value.data(), end, count).ptr == end && !value.empty();
  if (!std::holds_alternative<Times*>(row.target) || !whole || count < 0 || count > kMost)
    throw WrongUsage(std::string(row.name) + " is true or false, not " + value);
  return count;
}

void AddWords(const Option& row, const ConfigItem& item, std::vector<std::string>& words) {
  std::string value;
  for (const std::string& each : item.values) value += (value.empty() ? "" : ",") + each;
  if (!row.TakesValue()) {
    words.insert(words.end(), static_cast<size_t>(TimesOf(row, value)), row.name);
    return;
  }
  if (value.empty()) throw WrongUsage(std::string(row.name) + " needs a value: " + item.key + " = " + row.unit);
  words.push_back(std::string(row.name) + "=" + value);
}

bool IsOverruled(const Option& row, const std::vector<const Option*>& said) {
  return std::ranges::any_of(
      said, [&](const Option* other) { return other == &row || Excludes(row, *other) || Excludes(*other, row); });
}

Command OtherCommand(const std::string& section) {
  for (const CommandRow& row : CommandTable())
    if (Command command = row.make(); command.name == section) return command;
  throw WrongUsage("there is no command [" + section + "]");
}

}  // namespace

std::vector<std::string> ConfigWords(const Command& command, const std::vector<ConfigItem>& items,
                                     const std::vector<const Option*>& said) {
  std::vector<std::string> words;
  for (const ConfigItem& item : items) {
    if (!item.section.empty() && item.section != command.name) {
      RowOf(OtherCommand(item.section), item);
      continue;
    }
    const Option& row = RowOf(command, item);
    if (!IsOverruled(row, said)) AddWords(row, item, words);
  }
  return words;
}

}  // namespace norv
