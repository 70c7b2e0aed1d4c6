#include <charconv>
#include <cstdio>
#include <limits>
#include <optional>

#include "kit/guidance/text.h"
#include "kit/guidance/usage.h"

namespace norv {
namespace {

// Numbers that a row accepts.
struct Numbers {
  bool whole;
  double low, high;
};

template <typename Value>
constexpr bool kIsNumber = std::is_arithmetic_v<Value> && !std::is_same_v<Value, bool>;

template <typename Value>
Numbers NumbersOf() {
  return {std::is_integral_v<Value>, static_cast<double>(std::numeric_limits<Value>::lowest()),
          static_cast<double>(std::numeric_limits<Value>::max())};
}

// Nothing for a row of words.
std::optional<Numbers> NumbersOf(const Option& row) {
  std::optional<Numbers> numbers = std::visit(
      [](auto* target) -> std::optional<Numbers> {
        using Value = std::decay_t<decltype(*target)>;
        if constexpr (kIsNumber<Value>) return NumbersOf<Value>();
        if constexpr (std::is_same_v<Value, std::vector<int32_t>>) return NumbersOf<int32_t>();
        if constexpr (std::is_same_v<Value, std::optional<double>>) return NumbersOf<double>();
        return std::nullopt;
      },
      row.target);
  if (const Between* range = std::get_if<Between>(&row.check); range && numbers)
    numbers = {numbers->whole || range->whole, range->low, range->high};
  return numbers;
}

std::string Shown(double value) {
  char text[32];
  std::snprintf(text, sizeof text, "%.10g", value);
  return text;
}

std::string InWords(const Numbers& numbers) {
  constexpr double kTooLargeToSay = 2e9;
  std::string words = numbers.whole ? "a whole number" : "a number";
  if (numbers.low > -kTooLargeToSay) words += " from " + Shown(numbers.low);
  if (numbers.low > -kTooLargeToSay && numbers.high >= kTooLargeToSay) words += " on";
  if (numbers.high < kTooLargeToSay) words += " to " + Shown(numbers.high);
  return words;
}

// All of the text as a number in the range, which no NaN is in and, as ranges are finite, nothing infinite.
bool IsAmong(const Numbers& numbers, const std::string& text) {
  const char* end = text.data() + text.size();
  double value = 0;
  const auto read = std::from_chars(text.data(), end, value);
  if (read.ec != std::errc() || read.ptr != end) return false;
  if (!numbers.whole) return value >= numbers.low && value <= numbers.high;
  int64_t whole = 0;
  uint64_t natural = 0;
  const bool counts =
      std::from_chars(text.data(), end, whole).ptr == end || std::from_chars(text.data(), end, natural).ptr == end;
  return counts && value >= numbers.low && value <= numbers.high;
}

bool IsAmong(const std::vector<std::string>& words, const std::string& text) {
  for (const std::string& word : words)
    if (word == text) return true;
  return false;
}

}  // namespace

std::string WhyNotValue(const Option& row, const std::string& text) {
  const std::string name = row.name;
  if (const OneOf* choice = std::get_if<OneOf>(&row.check)) {
    const std::vector<std::string> words = SplitAt(',', choice->words);
    return IsAmong(words, text) ? "" : name + " takes " + Enumerated(words) + ", not " + text;
  }
  if (const BetweenOr* choice = std::get_if<BetweenOr>(&row.check)) {
    const Numbers range{false, choice->low, choice->high};
    return text == choice->word || IsAmong(range, text)
               ? ""
               : name + " takes " + InWords(range) + ", or " + choice->word + ", not " + text;
  }
  const std::optional<Numbers> numbers = NumbersOf(row);
  if (!numbers) return "";
  const bool several = std::holds_alternative<std::vector<int32_t>*>(row.target);
  for (const std::string& part : several ? SplitAt(',', text) : std::vector<std::string>{text})
    if (!IsAmong(*numbers, part)) return name + " takes " + InWords(*numbers) + ", not " + part;
  return "";
}

}  // namespace norv
