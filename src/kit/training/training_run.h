// A training from a folder of pictures to a network, with everything that it leaves in its own folder:
//   test.dat   the shuffled pairs                    last.net   the network after the last epoch
//   log.csv    a line an epoch                       best.net   that of the best epoch on the held-out pictures
//   curve.svg  the log drawn
#pragma once

#include <memory>
#include <string>

#include "kit/training/start_net.h"
#include "kit/training/training_log.h"
#include "kit/training/training_pictures.h"
#include "train/train.h"

namespace norv {

struct TrainingPlan {
  PicturePlan pictures;
  std::string folder;  // of the results
  NetPlan net;         // to start from
  std::string from;    // the .net file whose units it has from the start; empty: all are random
  TrainingOptions options{.iters = 10};
  int32_t threads = 1;        // that make pairs and measure; those that train are the options'
  int32_t patience = 0;       // stop after so many epochs without a better PSNR of the held-out pictures; 0: never
  std::string searched = "";  // the folder of the search that this is one seed of (seed_search.h), with the pairs
  bool resume = false;        // go on with what the folder holds; pairs and epochs that are there are not made again
};

// Whether such a log needs no further epochs.
bool IsTrained(const TrainingPlan& plan, const TrainingLog& log);

// Makes test.dat in that folder, shuffled and complete, unless it is there.
void MakePairs(const TrainingPlan& plan, const TrainingPictures& pictures, const std::string& folder);

class TrainingRun {
 public:
  // The pictures are the plan's. Makes ready all but the epochs. Throws a Failure when the folder's contents and the
  // plan do not go together: a training without resume, another network or other held-out pictures.
  TrainingRun(const TrainingPlan& plan, std::shared_ptr<const TrainingPictures> pictures);

  // The epochs that the log lacks, as far as the plan's patience goes, each reported on standard output and complete on
  // the disk before the next begins. Throws Interrupted when it was stopped, what was learned so far being in last.net.
  void Run();

 private:
  std::string Path(const char* name) const;
  void PrepareFolder();
  void LoadOrStart();
  void RequireSamePictures(const EpochRecord& logged) const;
  void LoadPairs();
  void SayStopped() const;
  void RunEpoch(int32_t epoch);
  void Keep(EpochRecord record);

  TrainingPlan plan_;
  std::shared_ptr<const TrainingPictures> pictures_;
  NeuralNet net_;
  TrainingSet set_;
  TrainingLog log_;
};

}  // namespace norv
