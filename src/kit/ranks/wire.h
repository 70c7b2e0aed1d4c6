// Records as bytes of a message. One Transfer(wire, record) a record serves both ways; the same build reads what it
// wrote, so that nothing is checked but the lengths.
#pragma once

#include <cstring>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

namespace norv {

class WireOut {
 public:
  template <typename Value>
  void operator()(const Value& value) {
    if constexpr (std::is_same_v<Value, std::string>) {
      (*this)(value.size());
      bytes.append(value);
    } else {
      static_assert(std::is_trivially_copyable_v<Value>);
      bytes.append(reinterpret_cast<const char*>(&value), sizeof value);
    }
  }

  std::string bytes;
};

class WireIn {
 public:
  explicit WireIn(std::string_view bytes) : bytes_(bytes) {}

  template <typename Value>
  void operator()(Value& value) {
    if constexpr (std::is_same_v<Value, std::string>) {
      size_t size = 0;
      (*this)(size);
      value.assign(Next(size), size);
    } else {
      static_assert(std::is_trivially_copyable_v<Value>);
      std::memcpy(&value, Next(sizeof value), sizeof value);
    }
  }

 private:
  const char* Next(size_t size) {
    if (size > bytes_.size()) throw std::runtime_error("a message between ranks ends early");
    const char* next = bytes_.data();
    bytes_.remove_prefix(size);
    return next;
  }

  std::string_view bytes_;
};

// What there may be or not.
template <typename Wire, typename Record>
void TransferOptional(Wire& wire, std::optional<Record>& record) {
  bool there = record.has_value();
  wire(there);
  if (there && !record) record.emplace();
  if (there) Transfer(wire, *record);
}

template <typename Record>
std::string Packed(Record record) {
  WireOut wire;
  Transfer(wire, record);
  return std::move(wire.bytes);
}

template <typename Record>
Record Unpacked(std::string_view bytes) {
  WireIn wire(bytes);
  Record record;
  Transfer(wire, record);
  return record;
}

}  // namespace norv
