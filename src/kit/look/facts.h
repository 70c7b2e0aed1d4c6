// What is known of a file, by names.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "kit/guidance/text.h"
#include "kit/measure/summary.h"

namespace norv {

class JsonObject;

struct Fact {
  std::string name, value;
  std::variant<std::monostate, int64_t, Summary, std::vector<int32_t>> figures = {};  // that the value says in words
};

class Facts {
 public:
  void Add(std::string name, std::string value) { all_.push_back({std::move(name), std::move(value)}); }
  void AddNumber(std::string name, int64_t number) {
    all_.push_back({std::move(name), std::to_string(number), number});
  }
  // As the file has it, whatever that is; an empty one is none.
  void AddText(std::string name, std::string_view text);
  // "1234 bytes"; nothing for none.
  void AddSize(std::string name, size_t bytes);
  void AddSummary(std::string name, const Summary& summary);
  // "3 (units 1, 5, 9)".
  void AddUnits(std::string name, const std::vector<int32_t>& units);
  void Add(const Facts& others) { all_.insert(all_.end(), others.all_.begin(), others.all_.end()); }

  const std::vector<Fact>& All() const { return all_; }
  // The value of the first of that name; empty where there is none.
  std::string_view Find(std::string_view name) const;
  // "name: value", a line each, on standard output.
  void Print() const;
  // For programs: numbers as such, of a summary its figures, else the text; a name that is there already with a number.
  void AddTo(JsonObject& row) const;

 private:
  std::vector<Fact> all_;
};

}  // namespace norv
