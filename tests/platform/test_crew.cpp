// What a crew makes ahead comes in order, whole, and with what went wrong.
#include <atomic>
#include <doctest/doctest.h>
#include <set>
#include <stdexcept>
#include <thread>

#include "platform/threads/crew.h"

using namespace norv;

TEST_CASE("results come in order whoever makes them, and a failure comes where its result would") {
  for (const int32_t threads : {1, 2, 3, 16}) {
    CAPTURE(threads);
    Ahead<int> ahead(threads);
    const auto keep = Crew::Of(threads);
    std::atomic<int> made{0};
    int begun = 0, taken = 0, failures = 0, most = 0;
    while (taken < 200) {
      for (; begun < 200 && !ahead.Full(); ++begun)
        ahead.Begin([&made, k = begun] {
          ++made;
          if (k % 50 == 7) throw std::runtime_error("seven");
          return 3 * k;
        });
      most = std::max(most, begun - taken);
      try {
        const int next = ahead.Next();
        CHECK(next == 3 * taken);
      } catch (const std::runtime_error&) {
        CHECK(taken % 50 == 7);
        ++failures;
      }
      ++taken;
    }
    CHECK(made == 200);
    CHECK(failures == 4);
    CHECK(ahead.Empty());
    CHECK((threads == 1 ? most == 1 : most > threads));
  }
}

TEST_CASE("every thread of a crew works, users of a number share one, and what nobody waits for is dropped") {
  const auto crew = Crew::Of(3);
  CHECK(crew == Crew::Of(3));
  CHECK(crew != Crew::Of(2));
  CHECK(Crew::Of(0)->Threads() >= 1);
  std::atomic<int> here{0};
  std::vector<std::shared_ptr<Crew::Task>> tasks;
  // Each waits until all three threads are in one.
  for (int i = 0; i < 3; ++i)
    tasks.push_back(crew->Begin([&here] {
      ++here;
      while (here < 3) std::this_thread::yield();
    }));
  for (const auto& task : tasks) crew->Finish(task);
  CHECK(here == 3);
  const auto alone = Crew::Of(1);
  alone->Begin([&here] { here = 100; });
  alone->Finish(alone->Begin([&here] { ++here; }));
  CHECK(here == 4);
}
