// Rows of figures for programs: one JSON object (RFC 8259) a line.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace norv {

// An object, its members in the order in which they were added. Text comes out as valid UTF-8 whatever went in (bytes
// that are none as U+FFFD); numbers that are not finite come out as null.
class JsonObject {
 public:
  JsonObject& Text(std::string_view key, std::string_view value);
  JsonObject& Number(std::string_view key, double value);  // shortest form that gives the same value again
  JsonObject& Whole(std::string_view key, int64_t value);
  JsonObject& Flag(std::string_view key, bool value);
  JsonObject& Null(std::string_view key);
  JsonObject& Object(std::string_view key, const JsonObject& value);
  JsonObject& List(std::string_view key, const std::vector<JsonObject>& values);
  JsonObject& Numbers(std::string_view key, const std::vector<double>& values);
  JsonObject& Texts(std::string_view key, const std::vector<std::string>& values);

  // Without an end of line.
  std::string Line() const { return "{" + members_ + "}"; }

 private:
  JsonObject& Add(std::string_view key, const std::string& value);

  std::string members_;
};

// The text as a JSON string, in quotes; no < stands in it, so that it may stand in a page's script too.
std::string JsonText(std::string_view text);
// "null" where it is not finite.
std::string JsonNumber(double value);

}  // namespace norv
