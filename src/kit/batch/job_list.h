// Which pictures a batch is to make, of which, under which names and in which order: nothing here runs anything.
#pragma once

#include <string>
#include <vector>

#include "kit/batch/journal.h"
#include "kit/work/picture_work.h"

namespace norv {

struct Job {
  enum class State { toDo, skipped, failed };

  std::string input = {}, output = {};  // paths
  std::string name = {};                // of the output in the folder of the batch
  int64_t bytes = 0;                    // of the input
  bool replace = false;                 // the output stands there from an earlier run and nobody has changed it since
  State state = State::toDo;            // skipped: made already, of this input and by these settings
  std::string error = {};               // why it has failed before any work
};

struct JobList {
  std::vector<Job> jobs = {};  // in the order of their inputs: as given, within folders by name
  int64_t notPictures = 0;     // files among the inputs that are none
};

// Of the files and folders that the order's places name, for the folder whose journal this is. Throws a WrongUsage for
// places that no batch can have.
JobList ListJobs(const WorkOrder& order, const Journal& journal);

// What the journal says of a job once its output stands.
JournalEntry EntryOf(const WorkOrder& order, const Job& job);

}  // namespace norv
