// How the start of a format is described: once, for those who read it, write it, and guess what a file is.
//
// A header is a struct of the fields, each with a default, and beside it in the same namespace
//
//   template <typename File>
//   constexpr void Transfer(File& file, Header& header) { file.Field(header.size); ... }
//
// which names every field in the file's order.
#pragma once

#include <concepts>

#include "platform/file.h"

namespace norv {

// Possible(): whether a file may begin like that. FileBytes(): what such a file measures from its first byte to the
// last one that the header speaks of; possible headers only.
template <typename T>
concept FileHeader = std::default_initializable<T> && requires(const T& header) {
  { header.Possible() } -> std::same_as<bool>;
  { header.FileBytes() } -> std::same_as<int64_t>;
};

// What stands behind the file's end reads as zeros.
template <FileHeader Header>
Header ReadHeader(FileIn& file) {
  Header header;
  Transfer(file, header);
  return header;
}

template <FileHeader Header>
void WriteHeader(FileOut& file, Header header) {
  Transfer(file, header);
}

// Stands in for a file where only the bytes of its fields matter.
struct FieldCounter {
  int64_t bytes = 0;

  template <RawElement T>
  constexpr void Field(const T&) {
    bytes += sizeof(T);
  }
  template <RawElement T>
  constexpr void Array(const T*, size_t n) {
    bytes += static_cast<int64_t>(n * sizeof(T));
  }
};

// Bytes of the header itself.
template <FileHeader Header>
consteval int64_t HeaderBytes() {
  Header header;
  FieldCounter counter;
  Transfer(counter, header);
  return counter.bytes;
}

}  // namespace norv
