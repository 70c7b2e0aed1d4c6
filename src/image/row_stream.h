// Pictures that pass by in groups of rows from the top, so that nobody has to hold a whole one.
#pragma once

#include <cstdint>
#include <functional>

namespace norv {

// Where rows come from. What a source reads from stays open as long as a copy of the source exists; copies share their
// place in the picture.
//   Shape  what is known before the first row      Rows  what holds a group of rows
template <typename Shape, typename Rows>
struct RowSource {
  Shape shape{};  // of the whole picture
  // Reads the next `count` rows into rows at, at + 1, ... of `rows`, which is as wide as the picture and of its kind.
  std::function<void(Rows& rows, int32_t at, int32_t count)> read;
  // Before the first row is read: it is row `first`, and none from `end` on will be asked for. Null: all have to be.
  std::function<void(int32_t first, int32_t end)> only = nullptr;
};

// Where rows go. What was not finished when the last copy of the sink goes was never written.
//   Rows  what is handed over: by value where the sink uses it up      Result  what is known at the end
template <typename Rows, typename Result = void>
struct RowSink {
  std::function<void(Rows rows)> write;  // all rows of the group, below those written before
  std::function<Result()> finish;        // once, after the last row
};

}  // namespace norv
