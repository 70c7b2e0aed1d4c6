#include "kit/training/seed_search.h"

#include <algorithm>
#include <charconv>
#include <deque>
#include <filesystem>
#include <map>
#include <mutex>
#include <optional>

#include "kit/failure.h"
#include "kit/formats/bytes.h"
#include "kit/guidance/json.h"
#include "kit/guidance/manner.h"
#include "kit/guidance/text.h"
#include "kit/ranks/ranks.h"
#include "kit/ranks/service.h"
#include "kit/ranks/wire.h"
#include "kit/training/picture_folder.h"
#include "platform/console.h"
#include "platform/paths.h"

namespace norv {
namespace {

namespace fs = std::filesystem;

constexpr char kBest[] = "best.net", kTable[] = "seeds.csv", kSettings[] = "search.txt";
constexpr uint64_t kMostSeeds = 100000;

// What has become of a seed.
struct Trained {
  uint64_t seed = 0;
  EpochRecord best = {};
  int32_t epochs = 0;
  std::string error = {};
};

template <typename Wire>
void Transfer(Wire& wire, Trained& trained) {
  wire(trained.seed);
  wire(trained.best);
  wire(trained.epochs);
  wire(trained.error);
}

Trained ResultOf(uint64_t seed, const TrainingLog& log) {
  const int32_t best = BestEpoch(log);
  return {seed, best > 0 ? log[static_cast<size_t>(best) - 1] : EpochRecord(), static_cast<int32_t>(log.size())};
}

// In the first rank's process: which seeds are left, and what the trained ones are worth.
class SeedList {
 public:
  SeedList(const TrainingPlan& plan, const std::vector<uint64_t>& seeds) : folder_(plan.folder) {
    for (const uint64_t seed : seeds) {
      const TrainingLog log = LogOf(PlanOfSeed(plan, seed));
      if (IsTrained(PlanOfSeed(plan, seed), log))
        trained_[seed] = ResultOf(seed, log);
      else
        left_.push_back(seed);
    }
  }

  size_t Left() const { return left_.size(); }

  // From any thread.
  std::optional<uint64_t> Take() {
    const std::lock_guard hold(mutex_);
    if (left_.empty()) return {};
    const uint64_t seed = left_.front();
    left_.pop_front();
    return seed;
  }
  void Finish(const Trained& trained) {
    const std::lock_guard hold(mutex_);
    trained_[trained.seed] = trained;
    if (!trained.error.empty()) return Complain("seed %s: %s", Name(trained).c_str(), trained.error.c_str());
    Keep();
  }

  // Says which one is best. Throws SomeFailed where a seed has.
  void Conclude() {
    Keep();
    const Trained* best = Best();
    if (best && RunManner().json)
      SayRow(JsonObject()
                 .Whole("best_seed", static_cast<int64_t>(best->seed))
                 .Number("psnr", best->best.psnr)
                 .Whole("best_epoch", best->best.epoch));
    else if (best)
      Say("best: seed %s, PSNR %.3f dB after epoch %d, in %s\n", Name(*best).c_str(), best->best.psnr, best->best.epoch,
          PathInFolder(folder_, kBest).c_str());
    if (std::ranges::any_of(trained_, [](const auto& row) { return !row.second.error.empty(); })) throw SomeFailed();
  }

  static TrainingPlan PlanOfSeed(TrainingPlan plan, uint64_t seed) {
    plan.net.seed = seed;
    plan.searched = plan.folder;
    plan.folder = PathInFolder(plan.folder, "seed-" + std::to_string(seed));
    plan.resume = true;
    return plan;
  }

  static TrainingLog LogOf(const TrainingPlan& plan) {
    const std::string path = PathInFolder(plan.folder, "log.csv");
    return fs::exists(ToNative(path)) ? ReadTrainingLog(path) : TrainingLog();
  }

 private:
  static std::string Name(const Trained& trained) { return std::to_string(trained.seed); }

  // The better one, the lower seed of equals; null: none is trained.
  const Trained* Best() const {
    const Trained* best = nullptr;
    for (const auto& [seed, trained] : trained_)
      if (trained.error.empty() && trained.epochs > 0 && (!best || trained.best.psnr > best->best.psnr))
        best = &trained;
    return best;
  }

  void Keep() const {
    const Trained* best = Best();
    if (!best) return;
    std::string table = "seed,epochs,best epoch,psnr\n";
    for (const auto& [seed, trained] : trained_)
      if (trained.error.empty())
        table +=
            Printed("%s,%d,%d,%.6f\n", Name(trained).c_str(), trained.epochs, trained.best.epoch, trained.best.psnr);
    WriteBytes(PathInFolder(folder_, kTable), {table.begin(), table.end()});
    WriteBytes(PathInFolder(folder_, kBest), ReadBytes(PathInFolder(folder_, "seed-" + Name(*best) + "/" + kBest)));
  }

  const std::string folder_;
  std::mutex mutex_;
  std::deque<uint64_t> left_;
  std::map<uint64_t, Trained> trained_;
};

// One after another until `take` has no more. Pictures are loaded when there is something to train.
template <typename Take, typename Finish>
void TrainSeeds(const TrainingPlan& plan, std::shared_ptr<const TrainingPictures> pictures, const Take& take,
                const Finish& finish) {
  while (const std::optional<uint64_t> seed = take()) {
    Trained trained{*seed};
    try {
      if (!pictures) pictures = std::make_shared<const TrainingPictures>(plan.pictures);
      const TrainingPlan own = SeedList::PlanOfSeed(plan, *seed);
      TrainingRun(own, pictures).Run();
      trained = ResultOf(*seed, SeedList::LogOf(own));  // with the digits that later runs read
    } catch (const Interrupted&) {
      throw;
    } catch (...) {
      trained.error = FailureInWords();
    }
    finish(trained);
  }
}

// Questions of other ranks: nothing, for a seed, or a seed that is trained; the last one says so.
constexpr char kNext = 'n', kFinished = 'f', kEnd = 'e', kNone = '-';

std::string AnswerOf(SeedList& list, const std::string& question) {
  if (question[0] == kEnd) return "";
  if (question[0] == kFinished) {
    list.Finish(Unpacked<Trained>(std::string_view(question).substr(1)));
    return {kNone};
  }
  const std::optional<uint64_t> seed = list.Take();
  return seed ? std::to_string(*seed) : std::string(1, kNone);
}

void HelpWithSeeds(const TrainingPlan& plan) {
  if (!World().AwaitCall()) return;
  struct End {
    ~End() { EndWithFirstRank({kEnd}); }
  } const end;
  const auto take = []() -> std::optional<uint64_t> {
    const std::string answer = AskFirstRank({kNext});
    if (answer[0] == kNone) return {};
    return std::stoull(answer);
  };
  TrainSeeds(plan, nullptr, take, [](const Trained& trained) { AskFirstRank(kFinished + Packed(trained)); });
}

// Of an earlier search whose settings the folder holds.
void RequireSameSettings(const std::string& folder, const std::string& settings) {
  const std::string path = PathInFolder(folder, kSettings);
  if (!fs::exists(ToNative(path))) {
    for (const char* name : {"last.net", "test.dat"})
      if (fs::exists(ToNative(PathInFolder(folder, name))))
        Fail("%s holds another training: choose another folder", folder.c_str());
    const std::string line = settings + "\n";
    return WriteBytes(path, {line.begin(), line.end()});
  }
  const std::vector<uint8_t> bytes = ReadBytes(path);
  const std::string held(bytes.begin(), bytes.end());
  if (held != settings + "\n")
    Fail("%s holds a search with other settings (%s): choose another folder", folder.c_str(),
         held.substr(0, held.find('\n')).c_str());
}

bool ParseNumber(std::string_view text, uint64_t& number) {
  const auto read = std::from_chars(text.data(), text.data() + text.size(), number);
  return read.ec == std::errc() && read.ptr == text.data() + text.size();
}

}  // namespace

std::vector<uint64_t> ReadSeeds(const std::string& text) {
  std::vector<uint64_t> seeds;
  for (std::string_view rest = text; !rest.empty();) {
    const std::string_view part = rest.substr(0, rest.find(','));
    rest.remove_prefix(std::min(part.size() + 1, rest.size()));
    const size_t dash = part.find('-');
    uint64_t first = 0, last = 0;
    const bool good = ParseNumber(part.substr(0, dash), first) &&
                      ParseNumber(dash == std::string_view::npos ? part : part.substr(dash + 1), last) &&
                      first <= last && last - first < kMostSeeds && seeds.size() + (last - first) < kMostSeeds;
    if (!good) throw WrongUsage("--seeds takes seeds such as 1-16 or 3,5,9, not " + text);
    for (uint64_t seed = first; seed <= last; ++seed) seeds.push_back(seed);
  }
  std::ranges::sort(seeds);
  seeds.erase(std::unique(seeds.begin(), seeds.end()), seeds.end());
  return seeds;
}

void SearchSeeds(const TrainingPlan& plan, const std::vector<uint64_t>& seeds, const std::string& settings) {
  if (!World().IsFirst()) return HelpWithSeeds(plan);
  std::error_code error;
  fs::create_directories(ToNative(plan.folder), error);
  if (error) Fail("cannot make the folder %s: %s", plan.folder.c_str(), error.message().c_str());
  RequireSameSettings(plan.folder, settings);
  SeedList list(plan, seeds);
  if (list.Left() < seeds.size() && !RunManner().json)
    Say("trained already: %zu of %zu seeds\n", seeds.size() - list.Left(), seeds.size());
  if (list.Left() > 0) {
    const auto pictures = std::make_shared<const TrainingPictures>(plan.pictures);
    MakePairs(plan, *pictures, plan.folder);
    const RankService service([&](const std::string& question) { return AnswerOf(list, question); });
    TrainSeeds(
        plan, pictures, [&] { return list.Take(); }, [&](const Trained& trained) { list.Finish(trained); });
  }
  list.Conclude();
}

}  // namespace norv
