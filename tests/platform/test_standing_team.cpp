// A standing team does every piece of every loop once, whoever comes late.
#include <atomic>
#include <thread>

#include "platform/threads/standing_team.h"
#include "support/test.h"

TEST_CASE("a standing team does all pieces of one loop after the other, also with more members than processors") {
  for (const int32_t threads : {1, 2, 3, 40}) {
    StandingTeam team(threads);
    CHECK(team.Threads() == threads);
    for (int64_t count : {0, 1, 2, 7, 100})
      for (int32_t loop = 0; loop < 20; ++loop) {
        // Plain numbers: that everything is done and seen when the loop returns is the point.
        std::vector<int> visits(static_cast<size_t>(count), 0);
        team.ForEach(count, [&](int64_t i) { ++visits[static_cast<size_t>(i)]; });
        REQUIRE(visits == std::vector<int>(static_cast<size_t>(count), 1));
        std::vector<int> parts(static_cast<size_t>(count), 0);
        team.ForParts(count, 3, [&](int64_t begin, int64_t end) {
          CHECK((begin == 0 || end - begin >= 3));
          for (int64_t i = begin; i < end; ++i) ++parts[static_cast<size_t>(i)];
        });
        REQUIRE(parts == visits);
      }
  }
}

TEST_CASE("members of a standing team work at the same time, help each other, and pass on what they throw") {
  StandingTeam team(3);
  // The first piece ends only when another thread has done the last one of the same part.
  std::atomic<int> done{0};
  team.ForEach(9, [&](int64_t i) {
    if (i == 0)
      while (done < 8) std::this_thread::yield();
    ++done;
  });
  CHECK(done == 9);
  for (const int64_t thrower : {0, 5, 8})
    CHECK_THROWS_AS(team.ForEach(9,
                                 [&](int64_t i) {
                                   if (i == thrower) throw "this one";
                                 }),
                    const char*);
  int after = 0;
  team.ForEach(1, [&](int64_t) { ++after; });
  CHECK(after == 1);
}
