// A team for loops of a millisecond and less, one after the other: its threads stand ready for the next loop instead of
// being called up for it.
#pragma once

#include <algorithm>
#include <cstdint>
#include <memory>

#include "platform/team.h"

namespace norv {

// Pixels that a member takes at least: below some ten microseconds a part nothing is gained.
inline constexpr int64_t kPixelsWorthACut = 1 << 14;

// One thread at a time calls it, that which made it or another; loops are not nested. Which member does what depends on
// who is free, so that no result may depend on it.
class StandingTeam {
 public:
  // threads: with the one that calls; 0: as many as the process may use processors. Where the system refuses threads,
  // those that there are do the whole work.
  explicit StandingTeam(int32_t threads);
  ~StandingTeam();
  StandingTeam(const StandingTeam&) = delete;
  StandingTeam& operator=(const StandingTeam&) = delete;

  // A team of one, which any number of threads may use at once.
  static StandingTeam& Alone();

  int32_t Threads() const { return threads_; }

  // Calls body(i) for i = 0 .. count - 1, each once. Every member begins with a part of its own, in order, and helps
  // the others when that is done. What one throws first is thrown again once all have ended.
  template <typename Body>
  void ForEach(int64_t count, const Body& body) {
    if (threads_ == 1 || count <= 1) {
      for (int64_t i = 0; i < count; ++i) body(i);
      return;
    }
    Share(
        count, [](const void* work, int64_t i) { (*static_cast<const Body*>(work))(i); }, &body);
  }

  // Calls body(begin, end) on contiguous parts that cover 0 .. count - 1: one for a team of one, else a few for every
  // member, of at least `least` each where there are several.
  template <typename Body>
  void ForParts(int64_t count, int64_t least, const Body& body) {
    const int64_t parts = Parts(count, least);
    ForEach(parts, [&](int64_t i) {
      const Range part = StaticPart(count, static_cast<int>(i), static_cast<int>(parts));
      if (part.begin < part.end) body(part.begin, part.end);
    });
  }

  // In how many parts work of so many units is best cut: so many that members who were held up find help, none below
  // `least` units.
  int64_t Parts(int64_t count, int64_t least) const { return PartsFor(threads_, count, least); }
  static int64_t PartsFor(int32_t threads, int64_t count, int64_t least) {
    constexpr int64_t kPartsOfMember = 4;
    return threads == 1 ? 1 : std::clamp(count / std::max<int64_t>(least, 1), int64_t{1}, kPartsOfMember * threads);
  }

 private:
  using Call = void (*)(const void* work, int64_t i);
  struct Yard;
  void Share(int64_t count, Call call, const void* work);

  int32_t threads_;
  std::unique_ptr<Yard> yard_;  // null for a team of one
};

}  // namespace norv
