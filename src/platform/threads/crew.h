// Work done ahead by a crew of threads that wait without using a processor.
#pragma once

#include <cstdint>
#include <deque>
#include <exception>
#include <functional>
#include <memory>
#include <utility>

namespace norv {

// How many threads work where nobody says another number: as many as the process may use processors, unless the run was
// told otherwise (0: those again).
int32_t UsualThreads();
void SetUsualThreads(int32_t threads);

// Threads that take tasks in the order in which they were begun. What holds a crew is one of its threads: it works
// while it waits, so that a crew of one needs no other. Tasks must not wait for tasks.
class Crew {
 public:
  struct Task;

  // The crew of that many threads; 0: the usual number. All who hold the crew of a number share it, and it ends with
  // the last of them. Where the system refuses threads it is a smaller one.
  static std::shared_ptr<Crew> Of(int32_t threads);
  ~Crew();
  Crew(const Crew&) = delete;
  Crew& operator=(const Crew&) = delete;

  int32_t Threads() const { return threads_; }

  // `work` owns what it works on: a task whose pointer nobody holds any more is dropped, but one that runs already
  // goes on.
  std::shared_ptr<Task> Begin(std::function<void()> work);
  // Returns once the task is done; throws what it threw.
  void Finish(const std::shared_ptr<Task>& task);

 private:
  struct Yard;
  explicit Crew(int32_t threads);

  int32_t threads_;
  std::unique_ptr<Yard> yard_;
};

// The body on so many threads at once, this one among them; fewer where the system refuses them. Returns when all have
// ended; the first exception that one threw is thrown again then. For bodies that wait for each other or for crews.
void SideBySide(int32_t threads, const std::function<void()>& body);

// Results that are made ahead, as many at a time as keep a crew busy, and taken in order.
template <typename Result>
class Ahead {
 public:
  explicit Ahead(int32_t threads) : crew_(Crew::Of(threads)) {}

  bool Empty() const { return underWay_.empty(); }
  // A crew of one has nobody to work ahead.
  bool Full() const {
    const size_t threads = static_cast<size_t>(crew_->Threads());
    return underWay_.size() >= (threads == 1 ? 1 : threads + threads / 2 + 1);
  }
  // `make` runs on any thread and owns what it works on.
  void Begin(std::function<Result()> make) {
    const auto result = std::make_shared<Result>();
    underWay_.push_back({crew_->Begin([result, make = std::move(make)] { *result = make(); }), result});
  }
  // The oldest one; throws what its making threw.
  Result Next() {
    const Pending oldest = std::move(underWay_.front());
    underWay_.pop_front();
    crew_->Finish(oldest.task);
    return std::move(*oldest.result);
  }

 private:
  struct Pending {
    std::shared_ptr<Crew::Task> task;
    std::shared_ptr<Result> result;
  };
  std::shared_ptr<Crew> crew_;
  std::deque<Pending> underWay_;
};

}  // namespace norv
