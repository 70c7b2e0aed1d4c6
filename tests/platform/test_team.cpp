// Parallel loops do the whole work once, on as many threads as asked for.
#include <mutex>
#include <set>

#include "platform/team.h"
#include "support/test.h"

TEST_CASE("static parts cover a range once, in order, nearly equal") {
  for (int members : {1, 2, 3, 4, 8, 16})
    for (int64_t count : {0, 1, 3, 7, 8, 100}) {
      int64_t next = 0;
      for (int member = 0; member < members; ++member) {
        const Range part = StaticPart(count, member, members);
        REQUIRE(part.begin == next);
        REQUIRE(part.end - part.begin >= count / members);
        REQUIRE(part.end - part.begin <= count / members + 1);
        next = part.end;
      }
      CHECK(next == count);
    }
}

TEST_CASE("a team has exactly the size asked for and visits every index once") {
  for (int threads : {1, 3, 8, 16}) {
    std::vector<int> visits(16, 0);
    std::set<std::thread::id> members;
    std::mutex guard;
    ParallelFor(threads, 16, [&](int64_t i) {
      ++visits[i];
      const std::lock_guard lock(guard);
      members.insert(std::this_thread::get_id());
    });
    CHECK(visits == std::vector<int>(16, 1));
    CHECK(members.size() == static_cast<size_t>(threads));
  }
}

TEST_CASE("what a member throws is thrown again outside") {
  CHECK_THROWS_AS(ParallelFor(4, 8,
                              [](int64_t i) {
                                if (i == 5) throw "the sixth";
                              }),
                  const char*);
}
