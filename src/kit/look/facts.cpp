#include "kit/look/facts.h"

#include <cstdarg>
#include <cstdio>

#include "kit/look/safe_text.h"
#include "platform/console.h"

namespace norv {

void Facts::AddText(std::string name, std::string_view text) {
  if (!text.empty()) Add(std::move(name), SafeText(text));
}

void Facts::AddSize(std::string name, size_t bytes) {
  if (bytes > 0) Add(std::move(name), std::to_string(bytes) + " bytes");
}

std::string_view Facts::Find(std::string_view name) const {
  for (const Fact& fact : all_)
    if (fact.name == name) return fact.value;
  return "";
}

void Facts::Print() const {
  for (const Fact& fact : all_) Say("%s: %s\n", fact.name.c_str(), fact.value.c_str());
}

std::string Printed(const char* format, ...) {
  char text[400];
  va_list values;
  va_start(values, format);
  std::vsnprintf(text, sizeof text, format, values);
  va_end(values);
  return text;
}

}  // namespace norv
