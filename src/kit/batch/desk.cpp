#include "kit/batch/desk.h"

#include <algorithm>

#include "kit/guidance/json.h"
#include "kit/guidance/manner.h"

namespace norv {
namespace {

int64_t BytesToDo(const std::vector<Job>& jobs) {
  int64_t bytes = 0;
  for (const Job& job : jobs)
    if (job.state == Job::State::toDo) bytes += job.bytes;
  return bytes;
}

}  // namespace

OwnDesk::OwnDesk(const WorkOrder& order, const JobList& list, const Journal& journal, bool largestFirst)
    : jobs_(list.jobs),
      journal_(journal),
      tried_(list.jobs.size()),
      progress_(order.work.doing ? order.work.doing : "Working", BytesToDo(list.jobs)) {
  for (size_t i = 0; i < jobs_.size(); ++i)
    if (jobs_[i].state != Job::State::skipped) left_.push_back(i);
  if (largestFirst) std::ranges::stable_sort(left_, std::greater(), [&](size_t i) { return jobs_[i].bytes; });
}

std::optional<HandedOut> OwnDesk::Take() {
  const std::lock_guard hold(mutex_);
  if (left_.empty()) return {};
  const size_t number = left_.front();
  left_.pop_front();
  return HandedOut{static_cast<int64_t>(number), jobs_[number]};
}

void OwnDesk::Finish(const HandedOut& handed, const Made& made) {
  const std::lock_guard hold(mutex_);
  tried_[static_cast<size_t>(handed.number)] = made;
  if (RunManner().json) SayRow(RowOf(made), made.Failed());
}

std::vector<Made> OwnDesk::Tried() {
  std::erase_if(tried_, [](const Made& made) { return made.input.empty(); });
  return std::move(tried_);
}

}  // namespace norv
