// Many pictures, one after another or side by side, whatever becomes of some of them.
#pragma once

#include <vector>

#include "kit/batch/job_list.h"
#include "kit/work/made.h"

namespace norv {

// Makes the pictures that are to be made, `threads` cores at work and at most `bound` bytes held (by the plans'
// estimates), and the other ranks where there are any; says their rows with --json. Returns one record a picture tried,
// in the order of the list.
std::vector<Made> RunJobs(const WorkOrder& order, const JobList& list, const Journal& journal, int32_t threads,
                          uint64_t bound);

// Another rank's part of the same, once the first one has begun.
void HelpWithJobs(const WorkOrder& order, int32_t threads, uint64_t bound);

// "5 done, 1 failed: in/b.jpg: JPEG: Premature end of input file; 1 not a picture".
std::string SummaryOf(const JobList& list, const std::vector<Made>& tried);

// What would be done, how long it would take and how much memory, on standard output. Nothing is made or changed.
void SayWhatWouldBeDone(const WorkOrder& order, const JobList& list, int32_t threads, uint64_t bound);

}  // namespace norv
