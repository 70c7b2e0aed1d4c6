#include "kit/batch/job_list.h"

#include <algorithm>
#include <filesystem>
#include <map>

#include "kit/batch/inputs.h"
#include "kit/failure.h"
#include "kit/formats/codec.h"
#include "kit/formats/streams.h"
#include "kit/pictures/image_file.h"
#include "kit/work/make_picture.h"
#include "kit/work/result_name.h"
#include "kit/work/settings_text.h"
#include "platform/paths.h"

namespace norv {
namespace {

namespace fs = std::filesystem;

// The ending that the result gets: what --to says, else the picture's own where that can be written.
std::string EndingOf(const std::string& input, const WriteChoice& choice) {
  const std::string word = FormatWord(input, choice);
  const Codec* codec = CodecOfWord(word);
  if (!choice.to.empty()) return "." + (codec ? codec->extensions[0] : word);
  const bool written = codec ? codec->create != nullptr : HasImageName(input);
  return written ? FromNative(ToNative(input).extension()) : ".png";
}

std::string NameOf(const WorkOrder& order, const std::string& input) {
  const WorkChoice& choice = order.choice;
  const std::string pattern = choice.name.empty() ? choice.ownName + "{ext}" : choice.name;
  WorkPlan plan;
  plan.factor = choice.factor;
  if (NeedsPlan(pattern, choice.factor > 0)) plan = OpenForWork(order, input).plan;
  return ResultName(pattern, FromNative(ToNative(input).stem()), EndingOf(input, choice.write), plan);
}

// Where a result stands already.
void LookAtOutput(const WorkOrder& order, const Journal& journal, Job& job) {
  std::error_code error;
  const fs::file_status status = fs::status(ToNative(job.output), error);
  if (!fs::exists(status)) return;
  const JournalEntry* entry = journal.Find(job.name, MarkOf(job.output));
  job.replace = entry != nullptr;
  if (entry && *entry == EntryOf(order, job)) {
    job.state = Job::State::skipped;
  } else if (!job.replace && !order.choice.write.overwrite) {
    job.state = Job::State::failed;
    job.error = job.output + " exists already" +
                (journal.Entries(job.name).empty() ? "" : ", changed since it was made") + ": --overwrite replaces it";
  }
}

Job JobOf(const WorkOrder& order, const Journal& journal, const Input& input) {
  Job job{.input = input.path};
  try {
    if (!input.error.empty()) Fail("%s: %s", input.path.c_str(), input.error.c_str());
    job.name = FromNative(ToNative(input.folder) / ToNative(NameOf(order, input.path)));
    if (ToNative(job.name).filename() == kJournalName) Fail("%s is the journal's name", kJournalName);
    job.output = FromNative(ToNative(order.choice.folder) / ToNative(job.name));
    job.bytes = std::max<int64_t>(MarkOf(input.path).size, 0);
    LookAtOutput(order, journal, job);
  } catch (...) {
    job.state = Job::State::failed;
    job.error = FailureInWords();
  }
  return job;
}

std::string InFull(const std::string& path) {
  std::error_code error;
  const fs::path full = fs::weakly_canonical(ToNative(path), error);
  return FromNative(error ? ToNative(path).lexically_normal() : full);
}

// Two of one name, and what would stand where another picture is read, fail before anything is written.
void RefuseClashes(std::vector<Job>& jobs) {
  std::map<std::string, const Job*> inputs;
  std::map<std::string, std::vector<Job*>> outputs;
  for (Job& job : jobs) {
    inputs[InFull(job.input)] = &job;
    if (!job.output.empty()) outputs[InFull(job.output)].push_back(&job);
  }
  for (const auto& [output, makers] : outputs) {
    const auto read = inputs.find(output);
    for (Job* job : makers) {
      const Job* other = makers.size() > 1 ? makers[job == makers[0]] : nullptr;
      const bool clashes = other || (read != inputs.end() && read->second != job);
      if (!clashes) continue;
      job->state = Job::State::failed;
      job->error = other ? "it would get the same name as " + other->input + ", " + job->output + ": --name tells apart"
                         : job->output + " is one of the pictures that are read";
    }
  }
}

}  // namespace

namespace {

// Of this command, whatever its settings were: what another one has made is a picture like others.
bool IsOwnResult(const WorkOrder& order, const std::vector<JournalEntry>& made) {
  return std::ranges::any_of(made, [&](const JournalEntry& entry) {
    const std::vector<std::string> words = WordsOfLine(entry.settings);
    return !words.empty() && words[0] == order.settings[0];
  });
}

}  // namespace

JournalEntry EntryOf(const WorkOrder& order, const Job& job) {
  return {FromNative(ToNative(job.input).filename()), MarkOf(job.input), MarkOf(job.output),
          LineOfWords(order.settings)};
}

JobList ListJobs(const WorkOrder& order, const Journal& journal) {
  const WorkChoice& choice = order.choice;
  for (const std::string& place : choice.places)
    if (IsStandard(place)) throw WrongUsage("- is one picture: with --out every place is a file or a folder");
  const Inputs inputs = FindInputs(choice.places, choice.recursive, choice.folder);
  JobList list{.notPictures = inputs.notPictures};
  for (const Input& input : inputs.pictures) {
    std::error_code error;
    const std::string inFolder = FromNative(fs::relative(ToNative(input.path), ToNative(choice.folder), error));
    if (!error && IsOwnResult(order, journal.Entries(inFolder))) continue;
    list.jobs.push_back(JobOf(order, journal, input));
  }
  RefuseClashes(list.jobs);
  return list;
}

}  // namespace norv
