#include "platform/threads/standing_team.h"

#include <atomic>
#include <exception>
#include <mutex>
#include <system_error>
#include <thread>
#include <vector>

#include "platform/threads/relax.h"

namespace norv {
namespace {

// Values that several threads write stand in cache lines of their own.
constexpr size_t kLine = 64;

// Some tens of microseconds: longer than the time between two sweeps over the rows of a plane, shorter than anybody
// would miss.
constexpr int kLooks = 1000;

// Returns when the value is another one, after some looks at it without a processor's time.
template <typename T>
void AwaitChange(const std::atomic<T>& value, T from, int looks) {
  for (int i = 0; i < looks; ++i) {
    if (value.load() != from) return;
    RelaxProcessor();
  }
  value.wait(from);
}

}  // namespace

// A loop is open while its caller works on it. Members come in when they see that the count of loops has changed, and
// only those that came in are waited for: on a machine that has other things to do, late ones hold up nobody.
struct StandingTeam::Yard {
  struct alignas(kLine) Share {
    std::atomic<int64_t> next{0};
    int64_t end = 0;
  };

  explicit Yard(int32_t threads)
      : shares(static_cast<size_t>(threads)), looks(threads <= ProcessorCount() ? kLooks : 0) {}

  void Do(size_t member) {
    for (size_t k = 0; k < shares.size(); ++k) {
      Share& share = shares[(member + k) % shares.size()];
      for (int64_t i; (i = share.next.fetch_add(1, std::memory_order_relaxed)) < share.end;) Call(i);
    }
  }

  void Call(int64_t i) {
    try {
      call(work, i);
    } catch (...) {
      const std::lock_guard lock(mutex);
      if (!failure) failure = std::current_exception();
    }
  }

  void Stand(size_t member) {
    for (uint32_t seen = 0;;) {
      AwaitChange(loops, seen, looks);
      seen = loops.load();
      if (closed) return;
      inside.fetch_add(1);
      if (open.load()) Do(member);
      if (inside.fetch_sub(1) == 1) inside.notify_all();
    }
  }

  void Announce() {
    loops.fetch_add(1);
    loops.notify_all();
  }

  std::vector<Share> shares;
  const int looks;
  StandingTeam::Call call = nullptr;
  const void* work = nullptr;
  std::exception_ptr failure;  // guarded by the mutex
  std::mutex mutex;
  std::atomic<bool> closed{false};
  alignas(kLine) std::atomic<uint32_t> loops{0};
  alignas(kLine) std::atomic<bool> open{false};
  alignas(kLine) std::atomic<int32_t> inside{0};
  std::vector<std::thread> members;
};

StandingTeam::StandingTeam(int32_t threads) : threads_(threads > 0 ? threads : ProcessorCount()) {
  if (threads_ == 1) return;
  yard_ = std::make_unique<Yard>(threads_);
  try {
    for (int32_t i = 1; i < threads_; ++i)
      yard_->members.emplace_back([yard = yard_.get(), i] { yard->Stand(static_cast<size_t>(i)); });
  } catch (const std::system_error&) {
    // Those that there are do the whole work.
  }
}

StandingTeam::~StandingTeam() {
  if (!yard_) return;
  yard_->closed = true;
  yard_->Announce();
  for (std::thread& member : yard_->members) member.join();
}

StandingTeam& StandingTeam::Alone() {
  static StandingTeam alone(1);
  return alone;
}

void StandingTeam::Share(int64_t count, Call call, const void* work) {
  Yard& yard = *yard_;
  yard.call = call;
  yard.work = work;
  yard.failure = nullptr;
  for (int32_t i = 0; i < threads_; ++i) {
    const Range part = StaticPart(count, i, threads_);
    yard.shares[static_cast<size_t>(i)].end = part.end;
    yard.shares[static_cast<size_t>(i)].next.store(part.begin, std::memory_order_relaxed);
  }
  yard.open = true;
  yard.Announce();
  yard.Do(0);
  yard.open = false;
  // A member that comes in from here on sees that the loop is not open; the others are waited for.
  for (int32_t inside; (inside = yard.inside.load()) != 0;) AwaitChange(yard.inside, inside, yard.looks);
  if (yard.failure) std::rethrow_exception(yard.failure);
}

}  // namespace norv
