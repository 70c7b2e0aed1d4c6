#include "platform/threads/crew.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <map>
#include <mutex>
#include <system_error>
#include <thread>
#include <vector>

#include "platform/team.h"
#include "platform/threads/stages.h"

namespace norv {
namespace {

std::atomic<int32_t> usualThreads{0};

}  // namespace

int32_t UsualThreads() {
  const int32_t threads = usualThreads;
  return threads > 0 ? threads : ProcessorCount();
}

void SetUsualThreads(int32_t threads) { usualThreads = threads; }

struct Crew::Task {
  std::function<void()> work;
  bool done = false;  // guarded by the yard's mutex
  std::exception_ptr failure;
};

// Where tasks wait for hands.
struct Crew::Yard {
  std::mutex mutex;
  std::condition_variable begun, done;
  std::deque<std::shared_ptr<Task>> waiting;
  bool closed = false;
  std::vector<std::thread> hands;

  // Takes the oldest task and does it; the lock is open meanwhile. There is one.
  void DoOne(std::unique_lock<std::mutex>& lock) {
    std::shared_ptr<Task> task = std::move(waiting.front());
    waiting.pop_front();
    const bool wanted = task.use_count() > 1;
    lock.unlock();
    if (wanted) Do(*task);
    task->work = nullptr;  // and with it what it owns
    lock.lock();
    task->done = true;
    done.notify_all();
  }

  static void Do(Task& task) {
    const InStage working(Stage::working);  // whatever the thread waits for meanwhile
    try {
      task.work();
    } catch (...) {
      task.failure = std::current_exception();
    }
  }

  void Work() {
    std::unique_lock lock(mutex);
    for (;;) {
      begun.wait(lock, [&] { return closed || !waiting.empty(); });
      if (closed) return;
      DoOne(lock);
    }
  }
};

Crew::Crew(int32_t threads) : threads_(1), yard_(std::make_unique<Yard>()) {
  try {
    for (; threads_ < threads; ++threads_) yard_->hands.emplace_back([yard = yard_.get()] { yard->Work(); });
  } catch (const std::system_error&) {
    // Those that there are do the whole work.
  }
}

Crew::~Crew() {
  {
    const std::lock_guard lock(yard_->mutex);
    yard_->closed = true;
  }
  yard_->begun.notify_all();
  for (std::thread& hand : yard_->hands) hand.join();
}

std::shared_ptr<Crew> Crew::Of(int32_t threads) {
  static std::mutex mutex;
  static std::map<int32_t, std::weak_ptr<Crew>> crews;
  if (threads <= 0) threads = UsualThreads();
  const std::lock_guard lock(mutex);
  std::weak_ptr<Crew>& known = crews[threads];
  std::shared_ptr<Crew> crew = known.lock();
  if (!crew) known = crew = std::shared_ptr<Crew>(new Crew(threads));
  return crew;
}

std::shared_ptr<Crew::Task> Crew::Begin(std::function<void()> work) {
  auto task = std::make_shared<Task>();
  task->work = std::move(work);
  {
    const std::lock_guard lock(yard_->mutex);
    yard_->waiting.push_back(task);
  }
  yard_->begun.notify_one();
  return task;
}

void Crew::Finish(const std::shared_ptr<Task>& task) {
  std::unique_lock lock(yard_->mutex);
  while (!task->done) {
    if (yard_->waiting.empty())
      yard_->done.wait(lock);
    else
      yard_->DoOne(lock);
  }
  lock.unlock();
  if (task->failure) std::rethrow_exception(task->failure);
}

void SideBySide(int32_t threads, const std::function<void()>& body) {
  std::mutex mutex;
  std::exception_ptr failure;
  const auto guarded = [&] {
    try {
      body();
    } catch (...) {
      const std::lock_guard lock(mutex);
      if (!failure) failure = std::current_exception();
    }
  };
  std::vector<std::thread> others;
  try {
    for (int32_t i = 1; i < threads; ++i) others.emplace_back(guarded);
  } catch (const std::system_error&) {
    // Those that there are do the whole work.
  }
  guarded();
  for (std::thread& other : others) other.join();
  if (failure) std::rethrow_exception(failure);
}

}  // namespace norv
