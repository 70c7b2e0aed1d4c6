#include "train/train.h"

#include <algorithm>
#include <cmath>
#include <memory>

#include "net/team_size.h"
#include "platform/console.h"
#include "platform/interrupt.h"
#include "platform/paths.h"
#include "platform/sound.h"
#include "train/row_net.h"
#include "train/trainer.h"
#include "train/training_file.h"
#include "train/training_watch.h"

namespace norv {
namespace {

// So many samples pass between two looks at the clock.
constexpr int64_t kSamplesPerLook = 4096;

// The set's copy on disk from which every epoch takes its new order.
class ScratchFile {
 public:
  ScratchFile() : path_(PathOf("temp.dat", Folder::executable)), guard_(path_) {}
  ~ScratchFile() { RemoveFile(path_); }
  ScratchFile(const ScratchFile&) = delete;
  ScratchFile& operator=(const ScratchFile&) = delete;

  void Save(const TrainingSet& set) const { SaveTrainingSet(set, path_, Folder::asGiven, Durability::scratch); }

  // A new order in the set and in the file.
  void Reshuffle(TrainingSet& set) const {
    if (set.file) {  // more than memory holds
      ClearTrainingSet(set);
      ShuffleTrainingFile(path_, Durability::scratch);
      LoadTrainingSet(set, path_, Folder::asGiven, 0);
    } else {
      LoadTrainingSetShuffled(set, path_, Folder::asGiven);
      Save(set);
    }
  }

 private:
  std::string path_;
  ScratchGuard guard_;
};

bool IsBackward(int32_t alternate, int32_t epoch) { return alternate == 2 || (alternate == 1 && epoch % 2 == 1); }

bool FitsOrSay(const NeuralNet& net, const TrainingSet& set) {
  if (net.N0 == set.Nin && net.LastNi() == set.Ny) return true;
  Say("\nNeural net and data are incompatible\nNin = %d vs. %d\nNy = %d vs. %d", set.Nin, net.N0, set.Ny, net.LastNi());
  WaitForKeys(1);
  return false;
}

// Every sample once. False when an interrupt ended it before the last one.
bool RunEpoch(Trainer& trainer, const TrainingSet& set, bool backward, TrainingWatch& watch) {
  for (int64_t first = 0; first < set.N; first += kSamplesPerLook) {
    const int64_t count = std::min<int64_t>(kSamplesPerLook, set.N - first);
    for (int64_t i = first; i < first + count; ++i) {
      if (watch.StopRequested()) return false;
      const int64_t sample = backward ? set.N - 1 - i : i;
      trainer.Learn(set.Input(sample), set.Target(sample));
    }
    watch.Advance(count);
  }
  return true;
}

bool HasEpochs(const TrainingOptions& o) { return std::min(o.iters, o.endEpoch) > o.firstEpoch; }

std::unique_ptr<Trainer> MakeTrainer(NeuralNet& net, const TrainingOptions& o, TrainedForm form) {
  // Where nothing is trained, that is left to the plain functions.
  const bool trains = HasEpochs(o) && IsTeamSize(o.threads) && !net.layers.empty();
  if (form == TrainedForm::record || !trains) return MakeRecordTrainer(net, o.costSelection, o.momentum, o.threads);
  return std::make_unique<RowNet>(net, o.costSelection, o.momentum, o.threads);
}

class Training {
 public:
  Training(NeuralNet& net, TrainingSet& set, const TrainingOptions& options, TrainedForm form)
      : net_(net),
        set_(set),
        options_(options),
        end_(std::min(options.iters, options.endEpoch)),
        watch_(end_ - options.firstEpoch, set.N),
        trainer_(MakeTrainer(net, options, form)) {
    if (options.alternate == 3) {
      scratch_ = std::make_unique<ScratchFile>();
      scratch_->Save(set);
    }
    if (options.momentum != 0) trainer_->ForgetVelocities();
  }

  TrainingEnd Run(const std::function<void(const EpochReport&)>& report) {
    float previous = 0;
    for (int32_t e = options_.firstEpoch; e < end_; ++e) {
      const float nu = Rate(e), before = net_.Cost;
      const bool whole = Epoch(e, nu);
      if (!whole) net_.Cost = before;
      if (watch_.StopRequested()) {
        trainer_->Finish();
        return TrainingEnd::interrupted;
      }
      watch_.EpochDone(net_.Cost);
      report({e, options_.iters, nu, net_.Cost, previous - net_.Cost});
      previous = net_.Cost;
      KeepAwake();
    }
    trainer_->Finish();
    return TrainingEnd::completed;
  }

 private:
  // With a single epoch this is not a number, and so is everything that is trained: by the contract with the graphical
  // program.
  float Rate(int32_t epoch) const {
    const float part = 1 / static_cast<float>(options_.iters - 1);
    return part * static_cast<float>(epoch) * (options_.nuf - options_.nu0) + options_.nu0;
  }

  // Leaves the reported cost in the network. False when interrupted.
  bool Epoch(int32_t epoch, float nu) {
    if (scratch_) scratch_->Reshuffle(set_);
    net_.Cost = 0;
    trainer_->SetRate(nu, options_.clip == 0 ? 0 : options_.clip / nu);
    const bool whole = RunEpoch(*trainer_, set_, IsBackward(options_.alternate, epoch), watch_);
    trainer_->Settle();
    // 8 whatever the number of outputs, by the contract with the graphical program, which shows the costs.
    net_.Cost *= 1 / static_cast<float>(8 * static_cast<int64_t>(set_.N));
    if (options_.costSelection == 0) net_.Cost = std::sqrt(net_.Cost);
    if (options_.momentum != 0) trainer_->ForgetVelocities();
    return whole;
  }

  NeuralNet& net_;
  TrainingSet& set_;
  const TrainingOptions& options_;
  const int32_t end_;
  TrainingWatch watch_;
  std::unique_ptr<ScratchFile> scratch_;
  std::unique_ptr<Trainer> trainer_;
};

}  // namespace

const char* WhyNotTrainable(const NeuralNet& net, const TrainingOptions& options) {
  if (!HasEpochs(options) || net.layers.empty()) return nullptr;
  return IsTeamSize(options.threads) ? WhyNotEvaluable(net) : WhyLayerNotEvaluable(net.layers.back());
}

void SayEpoch(const EpochReport& r) {
  const double nu = Printable(r.nu), cost = Printable(r.cost);
  if (r.epoch == 0)
    Say("\n%d of %d  (nu = %f)  Cost = %e", 1, r.iters, nu, cost);
  else
    Say("\n%d of %d  (nu = %f)  Cost = %e,     Change = %e", r.epoch + 1, r.iters, nu, cost, Printable(r.change));
}

TrainingEnd TrainNet(NeuralNet& net, TrainingSet& set, const TrainingOptions& options, TrainedForm form,
                     const std::function<void(const EpochReport&)>& report) {
  if (!FitsOrSay(net, set)) return TrainingEnd::incompatible;
  return Training(net, set, options, form).Run(report);
}

}  // namespace norv
