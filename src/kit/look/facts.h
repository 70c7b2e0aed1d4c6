// What is known of a file, by names.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace norv {

struct Fact {
  std::string name, value;
  bool isNumber = false;  // the value is one, without a unit
};

class Facts {
 public:
  void Add(std::string name, std::string value) { all_.push_back({std::move(name), std::move(value)}); }
  void AddNumber(std::string name, int64_t number) { all_.push_back({std::move(name), std::to_string(number), true}); }
  // As the file has it, whatever that is; an empty one is none.
  void AddText(std::string name, std::string_view text);
  // "1234 bytes"; nothing for none.
  void AddSize(std::string name, size_t bytes);
  void Add(const Facts& others) { all_.insert(all_.end(), others.all_.begin(), others.all_.end()); }

  const std::vector<Fact>& All() const { return all_; }
  // The value of the first of that name; empty where there is none.
  std::string_view Find(std::string_view name) const;
  // "name: value", a line each, on standard output.
  void Print() const;

 private:
  std::vector<Fact> all_;
};

// Put together as by printf; no longer than 400 bytes.
[[gnu::format(gnu_printf, 1, 2)]] std::string Printed(const char* format, ...);

}  // namespace norv
