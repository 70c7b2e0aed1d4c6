// Where the jobs of a batch are handed out, and where it is told what became of them. Those who make the pictures see
// this alone, so that it is one to them whether they are threads of the process that holds the list or of another rank.
#pragma once

#include <deque>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "kit/batch/job_list.h"
#include "kit/batch/journal.h"
#include "kit/proof/report.h"
#include "kit/work/made.h"
#include "platform/progress.h"

namespace norv {

// A job on its way.
struct HandedOut {
  int64_t number = 0;  // in the list
  Job job = {};
};

class JobDesk {
 public:
  JobDesk() = default;
  virtual ~JobDesk() = default;
  JobDesk(const JobDesk&) = delete;
  JobDesk& operator=(const JobDesk&) = delete;

  // All from any thread. None: there are no more.
  virtual std::optional<HandedOut> Take() = 0;
  // Before a result gets its name. Throws a Failure where the journal cannot be written.
  virtual void Note(const std::string& name, const JournalEntry& entry) = 0;
  // Of a job that is being made, in bytes of its file.
  virtual void Advance(int64_t bytes) = 0;
  virtual void Finish(const HandedOut& handed, const Made& made) = 0;
};

// In the process that holds the list.
class OwnDesk : public JobDesk {
 public:
  // largestFirst: by the bytes of their files, so that the last to end are small; else in the order of the list.
  OwnDesk(const WorkOrder& order, const JobList& list, const Journal& journal, bool largestFirst);

  std::optional<HandedOut> Take() override;
  void Note(const std::string& name, const JournalEntry& entry) override { journal_.Add(name, entry); }
  void Advance(int64_t bytes) override { progress_.Advance(bytes); }
  // Says the picture's row with --json: in the order in which pictures are finished.
  void Finish(const HandedOut& handed, const Made& made) override;

  // Of those that were tried, in the order of the list.
  std::vector<Made> Tried();

 private:
  const std::vector<Job>& jobs_;
  const Journal& journal_;
  std::mutex mutex_;
  std::deque<size_t> left_;  // numbers of jobs
  std::vector<Made> tried_;
  Progress progress_;
  const ProgressCover cover_;  // of all that begins behind it
};

// What another rank that asks (FarDesk) is answered. page: gets what it has to show; may be null.
std::string AnswerOf(JobDesk& desk, Report* page, const std::string& question);

// The desk of the first rank's process, seen from another, which has no more to do with it once this goes.
class FarDesk : public JobDesk {
 public:
  // page: where this process collects what there is to show, which is sent along; may be null.
  explicit FarDesk(Report* page) : page_(page) {}
  ~FarDesk() override;

  std::optional<HandedOut> Take() override;
  void Note(const std::string& name, const JournalEntry& entry) override;
  void Advance(int64_t) override {}
  void Finish(const HandedOut& handed, const Made& made) override;

 private:
  Report* page_;
};

}  // namespace norv
