// Who of several pictures works when: side by side or alone on all cores, within a bound of memory.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <mutex>

#include "kit/work/picture_work.h"

namespace norv {

// "2G", "1.5 GB", "500M", "800K" or a number of bytes, K being 1024. 0 where the text is none of these.
uint64_t BytesOf(const std::string& text);
// "1.5 GB".
std::string BytesInWords(uint64_t bytes);

// The most threads of at most so many with which the plan stays within the bound. Throws a Failure, which says what is
// needed, where one thread does not.
int32_t ThreadsWithin(const WorkPlan& plan, int32_t threads, uint64_t bound);

// Whether a picture works alone on all cores, instead of beside others on one.
bool WorksAlone(const WorkPlan& plan, int32_t threads);

// Pictures enter in the order of their turns, each when there is a core and memory for it, so that none waits for ever.
// Which of them work side by side changes nothing of what they become.
class Lanes {
 public:
  // bound: bytes for all together; `chosen`: a picture that exceeds it alone is refused instead of being tried.
  Lanes(int32_t threads, uint64_t bound, bool chosen) : threads_(threads), bound_(bound), chosen_(chosen) {}

  // A picture's place; it is left when this goes. Throws a Failure for a picture that does not fit alone.
  class Place {
   public:
    Place(Lanes& lanes, int64_t turn, const WorkPlan& plan);
    ~Place();
    Place(const Place&) = delete;
    Place& operator=(const Place&) = delete;

    int32_t Threads() const { return threads_; }
    // Nobody worked when it was entered.
    bool IsFirst() const { return isFirst_; }

   private:
    Lanes& lanes_;
    int32_t threads_ = 1;
    bool isFirst_ = false;
    uint64_t memory_ = 0;
  };

  // A turn that needs no place.
  void Pass(int64_t turn);

 private:
  void AwaitTurn(std::unique_lock<std::mutex>& lock, int64_t turn);
  void EndTurn();

  const int32_t threads_;
  const uint64_t bound_;
  const bool chosen_;
  std::mutex mutex_;
  std::condition_variable changed_;
  int64_t turn_ = 0;  // whose it is
  int32_t working_ = 0;
  bool alone_ = false;  // one works on all cores
  uint64_t taken_ = 0;  // bytes
};

}  // namespace norv
