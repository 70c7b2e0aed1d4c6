// Those that restore one plane together, each a run of its blocks: processes, on one machine or on many. Every one of
// them goes through all steps of the restoration with planes of the whole size, of which it touches its own rows and
// those that it looks at: memory that is never touched is none. What it looks at is handed round, sums of the whole
// plane are formed by the first, block by block, so that everyone decides alike and no bit depends on how many they
// are.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "linear/matrix2.h"
#include "restore/blocks/row_runs.h"

namespace norv {

// The one that asks, among its peers; by itself: alone.
class Peers {
 public:
  Peers() = default;
  virtual ~Peers() = default;
  Peers(const Peers&) = delete;
  Peers& operator=(const Peers&) = delete;

  virtual int32_t Number() const { return 0; }
  virtual int32_t Count() const { return 1; }
  // Hands bytes to another and waits for nobody.
  virtual void Send(int32_t, std::string&&) {}
  // Waits until all that was handed over is taken: what is large goes only while somebody sees to it.
  virtual void Settle() {}
  // What the other has sent, in the order of its sending.
  virtual std::string Receive(int32_t) { return {}; }

  static Peers& None();
};

// Which rows of a plane every one of them makes, and which it looks at.
struct RowsOfPeers {
  std::vector<Range> own, seen;
};

// What of each the two say for its blocks.
template <typename Own, typename Seen>
RowsOfPeers RowsOfEach(const RowRuns& cut, const Own& own, const Seen& seen) {
  RowsOfPeers rows;
  for (int32_t part = 0; part < cut.Parts(); ++part) {
    rows.own.push_back(own(cut.BlocksOfPart(part)));
    rows.seen.push_back(seen(cut.BlocksOfPart(part)));
  }
  return rows;
}

// Rows go to those that look at them: the plane, whose own rows are there, gets those that are seen of others. Ranges
// are of its rows, one of each for every peer.
void ExchangeRows(Peers& peers, matrix& plane, const RowsOfPeers& rows);

// blocks: `size` bytes for each block of the cut, in their order. The first one gets those that others have filled.
void GatherBlocks(Peers& peers, std::span<std::byte> blocks, size_t size, const RowRuns& cut);
// The first one's value, on all of them.
float FromFirst(Peers& peers, float value);

// A plane of `height` rows, of which these are there, from row `first` on; the others are undefined and take no memory.
matrix Spread(matrix rows, int32_t first, int32_t height);
// Some rows of a plane.
matrix RowsAlone(matrix plane, Range rows);

}  // namespace norv
