#include "kit/work/result_name.h"

#include <algorithm>
#include <cstdio>
#include <functional>

#include "kit/work/picture_work.h"
#include "platform/paths.h"

namespace norv {
namespace {

constexpr std::string_view kFields[] = {"stem", "ext", "factor", "width", "height", "method"};

std::string FactorText(double factor) {
  char text[32];
  std::snprintf(text, sizeof text, "%.4g", factor);
  return text;
}

// A part of a file's name: the first word of what was done.
std::string ShortMethod(const std::string& method) {
  std::string part = method.substr(0, method.find(','));
  std::ranges::replace_if(
      part, [](char c) { return c == ' ' || c == '/'; }, '-');
  return part;
}

std::string ValueOf(std::string_view field, const std::string& stem, const std::string& ext, const WorkPlan& plan) {
  if (field == "stem") return stem;
  if (field == "ext") return ext;
  if (field == "factor") return FactorText(plan.factor);
  if (field == "width") return std::to_string(plan.result.width);
  if (field == "height") return std::to_string(plan.result.height);
  return ShortMethod(plan.method);
}

// The text with every {field} replaced; one without its end is given as the rest of the text.
std::string Replaced(const std::string& pattern, const std::function<std::string(std::string_view field)>& value) {
  std::string text;
  for (size_t at = 0; at < pattern.size();) {
    const size_t open = std::min(pattern.find('{', at), pattern.size());
    text += pattern.substr(at, open - at);
    if (open == pattern.size()) break;
    const size_t close = std::min(pattern.find('}', open), pattern.size());
    text += value(std::string_view(pattern).substr(open + 1, close - open - 1));
    at = close + 1;
  }
  return text;
}

}  // namespace

std::string ResultName(const std::string& pattern, const std::string& stem, const std::string& ext,
                       const WorkPlan& plan) {
  return Replaced(pattern, [&](std::string_view field) { return ValueOf(field, stem, ext, plan); });
}

std::string WhyNoPattern(const std::string& pattern) {
  if (FileNameOf(pattern) != pattern) return "--name takes a name without folders: those go into --out";
  if (std::ranges::count(pattern, '{') != std::ranges::count(pattern, '}'))
    return "--name has a brace without its other one: " + pattern;
  std::string reason;
  Replaced(pattern, [&](std::string_view field) {
    if (std::ranges::find(kFields, field) == std::end(kFields))
      reason = "--name knows {stem}, {ext}, {factor}, {width}, {height} and {method}, not {" + std::string(field) + "}";
    return std::string();
  });
  return reason;
}

bool NeedsPlan(const std::string& pattern, bool knowsFactor) {
  bool needs = false;
  Replaced(pattern, [&](std::string_view field) {
    needs |= field != "stem" && field != "ext" && !(knowsFactor && field == "factor");
    return std::string();
  });
  return needs;
}

}  // namespace norv
