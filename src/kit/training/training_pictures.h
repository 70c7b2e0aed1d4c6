// The pictures of a training: a folder of them, which ones are held out, and what a network makes of those.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "kit/training/compression.h"
#include "net/neural_net.h"
#include "train/training_pairs.h"

namespace norv {

struct PicturePlan {
  std::string folder;
  std::string valid;   // how many pictures are held out, or their names with commas between; empty: a tenth
  int32_t factor = 2;  // of the enlargement to be learned
  int32_t reduce = 1;  // how many times smaller the pictures are made first
  int32_t shrinkOrder = -1;
  QualityRange jpeg = {};  // of the shrunk pictures
};

// A held-out picture at one quality, and what interpolation makes of it. PSNR in decibels of the luminance 0..255, a
// border of twice the factor left out.
struct HeldOut {
  matrix original;  // a multiple of the factor wide and high
  matrix low;       // shrunk by the factor, whole grey levels, compressed where the plan says so
  double cubic = 0, lanczos = 0;
};

class TrainingPictures {
 public:
  // Finds the pictures and loads the held-out ones: those named, or the first so many by a hash of their names, so
  // that pictures added later hardly change the choice. A picture that cannot be read or is too small is passed over
  // with a warning. Throws a Failure when none is left.
  explicit TrainingPictures(const PicturePlan& plan);

  const std::vector<HeldOut>& Validation() const { return heldOut_; }
  // Calls use(luminance, what happens to it once it is shrunk) for every other picture, in the order of their names,
  // one in memory at a time.
  void ForTraining(const std::function<void(matrix&, const Degradation&)>& use) const;

 private:
  matrix LoadOrWarn(const std::string& name) const;
  void HoldOutNamed();
  void HoldOutByHash(size_t count);
  bool HoldOut(const std::string& name);

  PicturePlan plan_;
  std::vector<std::string> names_;  // for training, sorted
  std::vector<HeldOut> heldOut_;
};

// Mean PSNR of the network's enlargements of the held-out pictures; by several threads, with the same result.
double ValidationPsnr(const NeuralNet& net, const std::vector<HeldOut>& pictures, int32_t threads);

}  // namespace norv
