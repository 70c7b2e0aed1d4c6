// Parallel loops: a team of exactly n threads over a static, contiguous split. The only file that knows OpenMP.
#pragma once

#include <cstdint>
#include <exception>
#include <omp.h>

namespace norv {

// The part of 0 .. count - 1 that member of a team of the given size takes: contiguous, in order, sizes differing by at
// most one with the longer parts first.
struct Range {
  int64_t begin;
  int64_t end;
};

constexpr Range StaticPart(int64_t count, int member, int members) {
  const int64_t part = count / members, longer = count % members;
  const int64_t begin = member * part + (member < longer ? member : longer);
  return {begin, begin + part + (member < longer ? 1 : 0)};
}

// How many processors of its machine are this process's where several share them; 0: all that it may run on.
inline int& ProcessorShare() {
  static int share = 0;
  return share;
}

// Processors that this process is to use.
inline int ProcessorCount() { return ProcessorShare() > 0 ? ProcessorShare() : omp_get_num_procs(); }

// Calls body(begin, end) once on each of exactly `threads` threads with its static part of 0 .. count - 1; empty parts
// are skipped. One thread, or a count below it: called directly. The first exception that a member throws is thrown
// again here.
template <typename Body>
void ParallelRanges(int threads, int64_t count, const Body& body) {
  if (threads <= 1) {
    if (count > 0) body(int64_t{0}, count);
    return;
  }
  std::exception_ptr failure;
  omp_set_dynamic(0);
#pragma omp parallel num_threads(threads)
  {
    // A smaller team than asked for (the system may refuse threads) still does the whole work.
    const int members = omp_get_num_threads();
    for (int member = omp_get_thread_num(); member < threads; member += members) {
      const Range range = StaticPart(count, member, threads);
      if (range.begin >= range.end) continue;
      try {
        body(range.begin, range.end);
      } catch (...) {
#pragma omp critical(norv_team_failure)
        if (!failure) failure = std::current_exception();
      }
    }
  }
  if (failure) std::rethrow_exception(failure);
}

// Calls body(i) for i = 0 .. count - 1, split statically over exactly `threads` threads.
template <typename Body>
void ParallelFor(int threads, int64_t count, const Body& body) {
  ParallelRanges(threads, count, [&](int64_t begin, int64_t end) {
    for (int64_t i = begin; i < end; ++i) body(i);
  });
}

}  // namespace norv
