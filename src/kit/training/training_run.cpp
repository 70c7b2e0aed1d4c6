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

void SayEpochRecord(const EpochRecord& r, int32_t epochs) {
  if (RunManner().json)
    return SayRow(JsonObject()
                      .Whole("epoch", r.epoch)
                      .Whole("epochs", epochs)
                      .Number("rate", r.rate)
                      .Number("cost", r.cost)
                      .Number("samples_per_second", r.samplesPerSecond)
                      .Number("seconds", r.seconds)
                      .Number("psnr", r.psnr)
                      .Number("cubic", r.cubic)
                      .Number("lanczos", r.lanczos));
  Say("epoch %d of %d  rate %g  cost %.6g  %.0f samples/s  PSNR %.3f dB (cubic %.3f, Lanczos %.3f)\n", r.epoch, epochs,
      r.rate, r.cost, r.samplesPerSecond, r.psnr, r.cubic, r.lanczos);
}

template <double HeldOut::*field>
double MeanOf(const std::vector<HeldOut>& pictures) {
  double sum = 0;
  for (const HeldOut& picture : pictures) sum += picture.*field;
  return sum / static_cast<double>(pictures.size());
}

}  // namespace

TrainingRun::TrainingRun(const TrainingPlan& plan) : plan_(plan), pictures_(plan.pictures) {
  PrepareFolder();
  LoadOrStart();
  LoadPairs();
}

void TrainingRun::Run() {
  for (int32_t epoch = static_cast<int32_t>(log_.size()); epoch < plan_.options.iters; ++epoch) {
    if (NothingIsGained()) return SayStopped();
    RunEpoch(epoch);
  }
}

void TrainingRun::SayStopped() const {
  const int32_t best = BestEpoch(log_);
  if (RunManner().json) return SayRow(JsonObject().Flag("stopped", true).Whole("best_epoch", best));
  Say("stopped: no epoch of the last %d was better than epoch %d, which %s holds\n", plan_.patience, best,
      Path(kBest).c_str());
}

bool TrainingRun::NothingIsGained() const {
  return plan_.patience > 0 && static_cast<int32_t>(log_.size()) - BestEpoch(log_) >= plan_.patience;
}

std::string TrainingRun::Path(const char* name) const { return PathInFolder(plan_.folder, name); }

void TrainingRun::PrepareFolder() {
  std::error_code error;
  std::filesystem::create_directories(plan_.folder, error);
  if (error) Fail("cannot make the folder %s: %s", plan_.folder.c_str(), error.message().c_str());
  if (plan_.resume) return;
  for (const char* name : {kPairs, kLast, kBest, kLog})
    if (std::filesystem::exists(Path(name)))
      Fail("%s is there already: go on with --resume, or choose another folder", Path(name).c_str());
}

void TrainingRun::LoadOrStart() {
  net_ = RandomNet(plan_.net);
  if (!plan_.from.empty()) {
    NeuralNet trained;
    LoadNet(trained, plan_.from, Folder::asGiven);
    net_ = Widened(trained, plan_.net);
  }
  if (!std::filesystem::exists(Path(kLast))) return;
  NeuralNet last;
  LoadNet(last, Path(kLast), Folder::asGiven);
  if (!IsSameShape(last, net_)) Fail("%s has other layers than asked for", Path(kLast).c_str());
  net_ = std::move(last);
  if (std::filesystem::exists(Path(kLog))) log_ = ReadTrainingLog(Path(kLog));
  if (!log_.empty()) RequireSamePictures(log_.back());
}

// What interpolation makes of the held-out pictures tells whether they are those of the log: epochs measured on others
// could not be compared, nor the best one found.
void TrainingRun::RequireSamePictures(const EpochRecord& logged) const {
  constexpr double kDigitsOfLog = 1e-3;
  const double cubic = MeanOf<&HeldOut::cubic>(pictures_.Validation());
  const double lanczos = MeanOf<&HeldOut::lanczos>(pictures_.Validation());
  if (std::abs(logged.cubic - cubic) < kDigitsOfLog && std::abs(logged.lanczos - lanczos) < kDigitsOfLog) return;
  Fail(
      "%s was measured on other pictures (cubic %.3f dB, now %.3f dB): --resume needs the same --shrink, --order, "
      "--jpeg "
      "and --valid",
      Path(kLog).c_str(), logged.cubic, cubic);
}

// Under another name until all of them are there and shuffled: what is called test.dat is complete.
void TrainingRun::MakePairs() const {
  const std::string path = Path(kUnfinishedPairs);
  const Unfinished unfinished(path);
  bool first = true;
  pictures_.ForTraining([&](matrix& picture, const Degradation& degrade) {
    if (first)
      WriteTrainingPairs(path, picture, plan_.net.inputs, plan_.net.factor * plan_.net.factor,
                         plan_.pictures.shrinkOrder, degrade);
    else
      AppendTrainingPairs(path, picture, plan_.pictures.shrinkOrder, degrade);
    first = false;
  });
  ShuffleTrainingFile(path);
  std::error_code error;
  std::filesystem::rename(path, Path(kPairs), error);
  if (error) Fail("cannot rename %s: %s", path.c_str(), error.message().c_str());
}

void TrainingRun::LoadPairs() {
  if (static_cast<int32_t>(log_.size()) >= plan_.options.iters || NothingIsGained()) return;
  if (!std::filesystem::exists(Path(kPairs))) MakePairs();
  LoadTrainingSet(set_, Path(kPairs), Folder::asGiven);
  if (set_.Nin != net_.N0 || set_.Ny != net_.LastNi() || set_.N == 0)
    Fail("%s holds %d pairs of %d inputs and %d outputs, which do not fit the network", Path(kPairs).c_str(), set_.N,
         set_.Nin, set_.Ny);
  const size_t heldOut = pictures_.Validation().size();
  if (RunManner().json)
    SayRow(JsonObject().Whole("pairs", set_.N).Whole("held_out", static_cast<int64_t>(heldOut)));
  else
    Say("pairs: %d, pictures held out: %zu\n", set_.N, heldOut);
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
  const std::vector<HeldOut>& validation = pictures_.Validation();
  record.samplesPerSecond = set_.N / std::max(record.seconds, 1e-9);
  record.psnr = ValidationPsnr(net_, validation, std::max(1, plan_.options.threads));
  record.cubic = MeanOf<&HeldOut::cubic>(validation);
  record.lanczos = MeanOf<&HeldOut::lanczos>(validation);
  log_.push_back(record);
  if (BestEpoch(log_) == record.epoch) SaveNet(net_, Path(kBest), Folder::asGiven);
  WriteTrainingLog(Path(kLog), log_);
  const std::string drawing = DrawLearningCurve(log_);
  WriteBytes(Path(kCurve), {drawing.begin(), drawing.end()});
  SayEpochRecord(record, plan_.options.iters);
}

}  // namespace norv
