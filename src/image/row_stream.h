// Pictures that pass by in groups of rows from the top, so that nobody has to hold a whole one.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

namespace norv {

// Rows that several processes make together, each some of them at a time.
//   Rows  what holds a group of rows
template <typename Rows>
class JointRows {
 public:
  // Rows `first` to `end`, made by one of the processes; where there are none, it only takes part.
  struct Piece {
    int32_t who;
    int64_t first, end;
  };

  JointRows() = default;
  virtual ~JointRows() = default;
  JointRows(const JointRows&) = delete;
  JointRows& operator=(const JointRows&) = delete;

  // All of them from the top, which every process knows.
  virtual std::vector<Piece> Pieces() const = 0;
  // The rows of this process's next piece.
  virtual Rows Next() = 0;
  // From now on the source reads its rows from here; those of other processes are asked for.
  virtual void ReadPieces(std::function<Rows(const Piece& piece)> others) = 0;
};

// Where rows come from. What a source reads from stays open as long as a copy of the source exists; copies share their
// place in the picture.
//   Shape  what is known before the first row      Rows  what holds a group of rows
template <typename Shape, typename Rows>
struct RowSource {
  Shape shape{};  // of the whole picture
  // Reads the next `count` rows into rows at, at + 1, ... of `rows`, which is as wide as the picture and of its kind.
  std::function<void(Rows& rows, int32_t at, int32_t count)> read;
  // The next row read is row `first`, and none from `end` on will be asked for before this is called again, with rows
  // that are not above those read. Null: all have to be read.
  std::function<void(int32_t first, int32_t end)> only = nullptr;
  // Where several processes can make the rows together, or those that they are made of (jointBelow). Null: they can't.
  std::shared_ptr<JointRows<Rows>> joint = nullptr;
  bool jointBelow = false;
};

// Where rows go. What was not finished when the last copy of the sink goes was never written.
//   Rows  what is handed over: by value where the sink uses it up      Result  what is known at the end
template <typename Rows, typename Result = void>
struct RowSink {
  std::function<void(Rows rows)> write;  // all rows of the group, below those written before
  std::function<Result()> finish;        // once, after the last row
};

}  // namespace norv
