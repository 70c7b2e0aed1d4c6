#include "kit/work/run_work.h"

#include <algorithm>
#include <filesystem>

#include "kit/batch/batch.h"
#include "kit/batch/lanes.h"
#include "kit/failure.h"
#include "kit/formats/streams.h"
#include "kit/guidance/json.h"
#include "kit/guidance/manner.h"
#include "kit/ranks/ranks.h"
#include "kit/work/make_picture.h"
#include "kit/work/result_name.h"
#include "platform/console.h"
#include "platform/memory.h"
#include "platform/paths.h"
#include "platform/threads/crew.h"

namespace norv {
namespace {

namespace fs = std::filesystem;

// photo_2x.png beside photo.jpg.
std::string NameBeside(const WorkChoice& choice, const std::string& picture, const WorkPlan& plan) {
  const fs::path path = ToNative(picture);
  return FromNative(path.parent_path() /
                    ToNative(ResultName(choice.ownName + "{ext}", FromNative(path.stem()), ".png", plan)));
}

int32_t ThreadsOf(const WorkChoice& choice) { return choice.threads > 0 ? choice.threads : UsualThreads(); }

// What --memory says, or this process's share of what there is.
uint64_t BoundOf(const WorkChoice& choice) {
  if (choice.memory.empty()) return AvailableMemory() / static_cast<uint64_t>(World().OnThisMachine());
  const uint64_t bound = BytesOf(choice.memory);
  if (bound == 0) throw WrongUsage("--memory takes a size such as 2G, 500M or 800K, not " + choice.memory);
  return bound;
}

Made MakeOne(const WorkOrder& order, const std::string& input, std::string& output) {
  RefuseRowsBesidePicture(output);
  OpenedPicture picture = OpenForWork(order, input);
  picture.alone = true;
  const bool named = !output.empty();
  if (!named) output = NameBeside(order.choice, input, picture.plan);
  int32_t threads = ThreadsOf(order.choice);
  if (!order.choice.memory.empty()) threads = ThreadsWithin(picture.plan, threads, BoundOf(order.choice));
  Made made = MakePicture(order, std::move(picture), output, threads);
  if (!named) Tell("%s", output.c_str());
  return made;
}

void RunOne(const WorkOrder& order, const std::string& input, std::string output) {
  try {
    const Made made = MakeOne(order, input, output);
    if (RunManner().json) SayRow(RowOf(made));
  } catch (...) {
    if (RunManner().json) SayRow(RowOf(Made{.input = input, .output = output, .error = FailureInWords()}), true);
    throw;
  }
}

// The one picture of an order without a folder, as a batch's only job.
JobList OnlyJob(const WorkOrder& order) {
  const std::vector<std::string>& places = order.choice.places;
  Job job{.input = places[0], .output = places.size() > 1 ? places[1] : ""};
  try {
    if (job.output.empty()) job.output = NameBeside(order.choice, job.input, OpenForWork(order, job.input).plan);
    std::error_code error;
    if (!IsStandard(job.output) && fs::exists(ToNative(job.output), error) && !order.choice.write.overwrite)
      Fail("%s is there already", job.output.c_str());
  } catch (const Failure& failure) {
    job.state = Job::State::failed;
    job.error = failure.what();
  }
  return {{job}, 0};
}

void RunMany(const WorkOrder& order) {
  const WorkChoice& choice = order.choice;
  const uint64_t bound = BoundOf(choice);
  if (!World().IsFirst()) return HelpWithJobs(order, ThreadsOf(choice), bound);
  if (const std::string reason = WhyNoPattern(choice.name); !reason.empty()) throw WrongUsage(reason);
  std::error_code error;
  if (fs::exists(ToNative(choice.folder), error) && !fs::is_directory(ToNative(choice.folder), error))
    Fail("%s is no folder", choice.folder.c_str());
  const Journal journal(choice.folder);
  const JobList list = ListJobs(order, journal);
  if (choice.dryRun) return SayWhatWouldBeDone(order, list, ThreadsOf(choice), bound);
  fs::create_directories(ToNative(choice.folder), error);
  if (error) Fail("cannot make the folder %s: %s", choice.folder.c_str(), error.message().c_str());
  const std::vector<Made> tried = RunJobs(order, list, journal, ThreadsOf(choice), bound);
  const bool failed = std::ranges::any_of(tried, &Made::Failed);
  const std::string summary = SummaryOf(list, tried);
  if (failed || !RunManner().quiet) PrintLine(summary);
  if (failed) throw SomeFailed();
}

// Places that only a batch can have.
void RequireOne(const WorkOrder& order) {
  const WorkChoice& choice = order.choice;
  const std::string command = "norvkit " + order.settings[0];
  const bool several = choice.places.size() > 2;
  std::error_code error;
  for (const std::string& place : choice.places)
    if ((several || &place == &choice.places[0]) && fs::is_directory(ToNative(place), error))
      throw WrongUsage(place + " is a folder; type: " + command + " " + place + " --out DIR");
  if (several)
    throw WrongUsage("several pictures need a folder for their results; type: " + command + " " +
                     LineOfWords(choice.places) + " --out DIR");
  if (choice.recursive || !choice.name.empty())
    throw WrongUsage(std::string(choice.recursive ? "--recursive" : "--name") + " goes with --out DIR");
  if (choice.places.size() < 2 && !choice.mayLeaveOut) throw WrongUsage("OUT is missing: " + command + " PICTURE OUT");
}

}  // namespace

void RunWork(const WorkOrder& order) {
  const WorkChoice& choice = order.choice;
  if (!choice.folder.empty()) return RunMany(order);
  if (!World().IsFirst()) return HelpWithPicture(order, choice.places[0], ThreadsOf(choice));
  RequireOne(order);
  if (choice.dryRun) return SayWhatWouldBeDone(order, OnlyJob(order), ThreadsOf(choice), BoundOf(choice));
  RunOne(order, choice.places[0], choice.places.size() > 1 ? choice.places[1] : "");
}

}  // namespace norv
