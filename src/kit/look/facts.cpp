#include "kit/look/facts.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <map>

#include "kit/guidance/json.h"
#include "kit/look/safe_text.h"
#include "platform/console.h"

namespace norv {

void Facts::AddText(std::string name, std::string_view text) {
  if (!text.empty()) Add(std::move(name), SafeText(text));
}

void Facts::AddSize(std::string name, size_t bytes) {
  if (bytes > 0) Add(std::move(name), std::to_string(bytes) + " bytes");
}

void Facts::AddSummary(std::string name, const Summary& summary) {
  all_.push_back({std::move(name), summary.Text(), summary});
}

void Facts::AddUnits(std::string name, const std::vector<int32_t>& units) {
  constexpr size_t kMost = 16;
  std::string text = std::to_string(units.size());
  for (size_t i = 0; i < std::min(units.size(), kMost); ++i)
    text += Printed(i ? ", %d" : units.size() == 1 ? " (unit %d" : " (units %d", units[i]);
  if (!units.empty()) text += units.size() > kMost ? " ...)" : ")";
  all_.push_back({std::move(name), text, units});
}

std::string_view Facts::Find(std::string_view name) const {
  for (const Fact& fact : all_)
    if (fact.name == name) return fact.value;
  return "";
}

void Facts::Print() const {
  for (const Fact& fact : all_) Say("%s: %s\n", fact.name.c_str(), fact.value.c_str());
}

void Facts::AddTo(JsonObject& row) const {
  std::map<std::string, int> seen;
  for (const Fact& fact : all_) {
    const int times = ++seen[fact.name];
    const std::string key = times == 1 ? fact.name : fact.name + " " + std::to_string(times);
    if (const auto* number = std::get_if<int64_t>(&fact.figures))
      row.Whole(key, *number);
    else if (const auto* units = std::get_if<std::vector<int32_t>>(&fact.figures))
      row.Numbers(key, {units->begin(), units->end()});
    else if (const auto* summary = std::get_if<Summary>(&fact.figures))
      row.Object(key, JsonObject()
                          .Number("least", summary->Count() ? summary->Min() : NAN)
                          .Number("greatest", summary->Count() ? summary->Max() : NAN)
                          .Number("mean", summary->Count() ? summary->Mean() : NAN)
                          .Number("deviation", summary->Count() ? summary->Deviation() : NAN)
                          .Whole("not finite", summary->NotFinite()));
    else
      row.Text(key, fact.value);
  }
}

}  // namespace norv
