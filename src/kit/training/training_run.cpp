#include "kit/training/training_run.h"

#include <cmath>
#include <filesystem>

#include "kit/failure.h"
#include "kit/formats/bytes.h"
#include "kit/guidance/json.h"
#include "kit/guidance/manner.h"
#include "kit/training/learning_curve.h"
#include "kit/training/picture_folder.h"
#include "net/net_file.h"
#include "platform/clock.h"
#include "platform/console.h"
#include "platform/interrupt.h"
#include "platform/paths.h"
#include "train/training_pairs.h"

namespace norv {
namespace {

constexpr char kPairs[] = "test.dat", kUnfinishedPairs[] = "test.dat.unfinished";
constexpr char kLast[] = "last.net", kBest[] = "best.net", kLog[] = "log.csv", kCurve[] = "curve.svg";

// A file that goes when this does, or when the run ends before, unless it has another name by then.
struct Unfinished {
  std::string path;
  ScratchGuard guard;

  explicit Unfinished(const std::string& name) : path(name), guard(name) { RemoveFile(path); }
  ~Unfinished() { RemoveFile(path); }
};

// Layers, units and kinds.
bool IsSameShape(const NeuralNet& a, const NeuralNet& b) {
  if (a.N0 != b.N0 || a.N != b.N) return false;
  for (size_t k = 0; k < a.layers.size(); ++k)
    for (size_t i = 0; i < a.layers[k].units.size(); ++i)
      if (a.layers[k].units[i].ActivationKind != b.layers[k].units[i].ActivationKind) return false;
  return true;
}

// The beginnings of what is said of one seed of several.
JsonObject RowOf(const TrainingPlan& plan) {
  JsonObject row;
  if (!plan.searched.empty()) row.Whole("seed", static_cast<int64_t>(plan.net.seed));
  return row;
}
std::string LineOf(const TrainingPlan& plan) {
  return plan.searched.empty() ? "" : "seed " + std::to_string(plan.net.seed) + ": ";
}

void SayEpochRecord(const EpochRecord& r, const TrainingPlan& plan) {
  const int32_t epochs = plan.options.iters;
  if (RunManner().json)
    return SayRow(RowOf(plan)
                      .Whole("epoch", r.epoch)
                      .Whole("epochs", epochs)
                      .Number("rate", r.rate)
                      .Number("cost", r.cost)
                      .Number("samples_per_second", r.samplesPerSecond)
                      .Number("seconds", r.seconds)
                      .Number("psnr", r.psnr)
                      .Number("cubic", r.cubic)
                      .Number("lanczos", r.lanczos));
  Say("%sepoch %d of %d  rate %g  cost %.6g  %.0f samples/s  PSNR %.3f dB (cubic %.3f, Lanczos %.3f)\n",
      LineOf(plan).c_str(), r.epoch, epochs, r.rate, r.cost, r.samplesPerSecond, r.psnr, r.cubic, r.lanczos);
}

template <double HeldOut::*field>
double MeanOf(const std::vector<HeldOut>& pictures) {
  double sum = 0;
  for (const HeldOut& picture : pictures) sum += picture.*field;
  return sum / static_cast<double>(pictures.size());
}

bool NothingIsGained(const TrainingPlan& plan, const TrainingLog& log) {
  return plan.patience > 0 && static_cast<int32_t>(log.size()) - BestEpoch(log) >= plan.patience;
}

}  // namespace

bool IsTrained(const TrainingPlan& plan, const TrainingLog& log) {
  return static_cast<int32_t>(log.size()) >= plan.options.iters || NothingIsGained(plan, log);
}

TrainingRun::TrainingRun(const TrainingPlan& plan, std::shared_ptr<const TrainingPictures> pictures)
    : plan_(plan), pictures_(std::move(pictures)) {
  PrepareFolder();
  LoadOrStart();
  LoadPairs();
}

void TrainingRun::Run() {
  for (int32_t epoch = static_cast<int32_t>(log_.size()); epoch < plan_.options.iters; ++epoch) {
    if (NothingIsGained(plan_, log_)) return SayStopped();
    RunEpoch(epoch);
  }
}

void TrainingRun::SayStopped() const {
  const int32_t best = BestEpoch(log_);
  if (RunManner().json) return SayRow(RowOf(plan_).Flag("stopped", true).Whole("best_epoch", best));
  Say("%sstopped: no epoch of the last %d was better than epoch %d, which %s holds\n", LineOf(plan_).c_str(),
      plan_.patience, best, Path(kBest).c_str());
}

std::string TrainingRun::Path(const char* name) const { return PathInFolder(plan_.folder, name); }

void TrainingRun::PrepareFolder() {
  std::error_code error;
  std::filesystem::create_directories(ToNative(plan_.folder), error);
  if (error) Fail("cannot make the folder %s: %s", plan_.folder.c_str(), error.message().c_str());
  if (plan_.resume) return;
  for (const char* name : {kPairs, kLast, kBest, kLog})
    if (std::filesystem::exists(ToNative(Path(name))))
      Fail("%s is there already: go on with --resume, or choose another folder", Path(name).c_str());
}

void TrainingRun::LoadOrStart() {
  net_ = RandomNet(plan_.net);
  if (!plan_.from.empty()) {
    NeuralNet trained;
    LoadNet(trained, plan_.from, Folder::asGiven);
    net_ = Widened(trained, plan_.net);
  }
  if (!std::filesystem::exists(ToNative(Path(kLast)))) return;
  NeuralNet last;
  LoadNet(last, Path(kLast), Folder::asGiven);
  if (!IsSameShape(last, net_)) Fail("%s has other layers than asked for", Path(kLast).c_str());
  net_ = std::move(last);
  if (std::filesystem::exists(ToNative(Path(kLog)))) log_ = ReadTrainingLog(Path(kLog));
  if (!log_.empty()) RequireSamePictures(log_.back());
}

// What interpolation makes of the held-out pictures tells whether they are those of the log: epochs measured on others
// could not be compared, nor the best one found.
void TrainingRun::RequireSamePictures(const EpochRecord& logged) const {
  constexpr double kDigitsOfLog = 1e-3;
  const double cubic = MeanOf<&HeldOut::cubic>(pictures_->Validation());
  const double lanczos = MeanOf<&HeldOut::lanczos>(pictures_->Validation());
  if (std::abs(logged.cubic - cubic) < kDigitsOfLog && std::abs(logged.lanczos - lanczos) < kDigitsOfLog) return;
  Fail(
      "%s was measured on other pictures (cubic %.3f dB, now %.3f dB): --resume needs the same --shrink, --order, "
      "--jpeg "
      "and --valid",
      Path(kLog).c_str(), logged.cubic, cubic);
}

// Under another name until all of them are there and shuffled: what is called test.dat is complete.
void MakePairs(const TrainingPlan& plan, const TrainingPictures& pictures, const std::string& folder) {
  if (std::filesystem::exists(ToNative(PathInFolder(folder, kPairs)))) return;
  const std::string path = PathInFolder(folder, kUnfinishedPairs);
  const Unfinished unfinished(path);
  bool first = true;
  pictures.ForTraining([&](matrix& picture, const Degradation& degrade) {
    if (first)
      WriteTrainingPairs(path, picture, plan.net.inputs, plan.net.factor * plan.net.factor, plan.pictures.shrinkOrder,
                         degrade, plan.threads);
    else
      AppendTrainingPairs(path, picture, plan.pictures.shrinkOrder, degrade, plan.threads);
    first = false;
  });
  ShuffleTrainingFile(path);
  std::error_code error;
  std::filesystem::rename(ToNative(path), ToNative(PathInFolder(folder, kPairs)), error);
  if (error) Fail("cannot rename %s: %s", path.c_str(), error.message().c_str());
}

void TrainingRun::LoadPairs() {
  if (IsTrained(plan_, log_)) return;
  const std::string folder = plan_.searched.empty() ? plan_.folder : plan_.searched;
  const std::string path = PathInFolder(folder, kPairs);
  MakePairs(plan_, *pictures_, folder);
  LoadTrainingSet(set_, path, Folder::asGiven);
  if (set_.Nin != net_.N0 || set_.Ny != net_.LastNi() || set_.N == 0)
    Fail("%s holds %d pairs of %d inputs and %d outputs, which do not fit the network", path.c_str(), set_.N, set_.Nin,
         set_.Ny);
  const size_t heldOut = pictures_->Validation().size();
  if (RunManner().json)
    SayRow(RowOf(plan_).Whole("pairs", set_.N).Whole("held_out", static_cast<int64_t>(heldOut)));
  else
    Say("%spairs: %d, pictures held out: %zu\n", LineOf(plan_).c_str(), set_.N, heldOut);
}

void TrainingRun::RunEpoch(int32_t epoch) {
  TrainingOptions options = plan_.options;
  // The rate of a training of one epoch would be no number; with two it begins at the first rate.
  options.iters = std::max(options.iters, 2);
  options.firstEpoch = epoch;
  options.endEpoch = epoch + 1;
  EpochRecord record;
  const double start = Seconds();
  const TrainingEnd end = TrainNet(net_, set_, options, TrainedForm::rows, [&](const EpochReport& report) {
    record.epoch = report.epoch + 1;
    record.rate = report.nu;
    record.cost = report.cost;
  });
  record.seconds = Seconds() - start;
  const bool wished = InterruptWatch::Requested();
  const InterruptWatch watch;  // an epoch that is trained is also kept and measured
  if (end == TrainingEnd::completed && !std::isfinite(record.cost))
    Fail("the cost of epoch %d is no number any more: choose a lower --rate; the networks of earlier epochs are kept",
         record.epoch);
  SaveNet(net_, Path(kLast), Folder::asGiven);
  if (end == TrainingEnd::completed) Keep(record);
  if (!wished && !InterruptWatch::Requested()) return;
  Complain("training was stopped; what was learned so far is in %s, and --resume goes on", Path(kLast).c_str());
  throw Interrupted();
}

void TrainingRun::Keep(EpochRecord record) {
  const std::vector<HeldOut>& validation = pictures_->Validation();
  record.samplesPerSecond = set_.N / std::max(record.seconds, 1e-9);
  record.psnr = ValidationPsnr(net_, validation, plan_.threads);
  record.cubic = MeanOf<&HeldOut::cubic>(validation);
  record.lanczos = MeanOf<&HeldOut::lanczos>(validation);
  log_.push_back(record);
  if (BestEpoch(log_) == record.epoch) SaveNet(net_, Path(kBest), Folder::asGiven);
  WriteTrainingLog(Path(kLog), log_);
  const std::string drawing = DrawLearningCurve(log_);
  WriteBytes(Path(kCurve), {drawing.begin(), drawing.end()});
  SayEpochRecord(record, plan_);
}

}  // namespace norv
