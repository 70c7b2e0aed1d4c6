#include "restore/blocks/peers.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace norv {
namespace {

Range Common(Range a, Range b) {
  const int64_t begin = std::max(a.begin, b.begin);
  return {begin, std::max(begin, std::min(a.end, b.end))};
}

size_t BytesOf(const matrix& plane, Range rows) {
  return sizeof(float) * static_cast<size_t>(plane.m) * static_cast<size_t>(rows.end - rows.begin);
}

// body(other) for all but the one itself.
template <typename Body>
void ForOthers(const Peers& peers, const Body& body) {
  for (int32_t other = 0; other < peers.Count(); ++other)
    if (other != peers.Number()) body(other);
}

}  // namespace

Peers& Peers::None() {
  static Peers none;
  return none;
}

void ExchangeRows(Peers& peers, matrix& plane, const RowsOfPeers& rows) {
  const size_t self = static_cast<size_t>(peers.Number());
  ForOthers(peers, [&](int32_t other) {
    const Range wanted = Common(rows.own[self], rows.seen[static_cast<size_t>(other)]);
    if (wanted.begin < wanted.end)
      peers.Send(other, std::string(reinterpret_cast<const char*>(plane.z[wanted.begin]), BytesOf(plane, wanted)));
  });
  ForOthers(peers, [&](int32_t other) {
    const Range wanted = Common(rows.own[static_cast<size_t>(other)], rows.seen[self]);
    if (wanted.begin < wanted.end)
      std::memcpy(plane.z[wanted.begin], peers.Receive(other).data(), BytesOf(plane, wanted));
  });
  peers.Settle();
}

void GatherBlocks(Peers& peers, std::span<std::byte> blocks, size_t size, const RowRuns& cut) {
  const auto part = [&](int32_t number) {
    const Range which = cut.BlocksOfPart(number);
    return blocks.subspan(size * static_cast<size_t>(which.begin), size * static_cast<size_t>(which.end - which.begin));
  };
  if (peers.Number() != 0) {
    const std::span<std::byte> own = part(peers.Number());
    return peers.Send(0, std::string(reinterpret_cast<const char*>(own.data()), own.size()));
  }
  ForOthers(peers, [&](int32_t other) {
    const std::span<std::byte> place = part(other);
    std::memcpy(place.data(), peers.Receive(other).data(), place.size());
  });
}

float FromFirst(Peers& peers, float value) {
  if (peers.Number() != 0) {
    std::memcpy(&value, peers.Receive(0).data(), sizeof value);
    return value;
  }
  ForOthers(peers, [&](int32_t other) {
    peers.Send(other, std::string(reinterpret_cast<const char*>(&value), sizeof value));
  });
  return value;
}

matrix Spread(matrix rows, int32_t first, int32_t height) {
  if (rows.n == height) return rows;
  matrix plane(rows.m, height);
  std::copy_n(rows.x, rows.mn, plane.z[first]);
  return plane;
}

matrix RowsAlone(matrix plane, Range rows) {
  const int32_t count = static_cast<int32_t>(rows.end - rows.begin);
  if (count == plane.n) return plane;
  matrix alone(plane.m, count);
  if (count > 0) std::copy_n(plane.z[rows.begin], alone.mn, alone.x);
  return alone;
}

}  // namespace norv
