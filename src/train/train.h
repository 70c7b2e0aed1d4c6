// Training a network on a set: epochs, the order of the samples, the learning rate, the report of the cost.
#pragma once

#include <cstdint>
#include <functional>
#include <limits>

#include "net/neural_net.h"
#include "train/training_set.h"

namespace norv {

struct TrainingOptions {
  int32_t iters = 1;          // epochs
  float nu0 = 0, nuf = 0;     // learning rate of the first and the last epoch
  int32_t costSelection = 0;  // see CostOfError; 0 alone is reported as a root mean
  int32_t alternate = 0;      // 0 forward; 1 forward and backward in turn; 2 backward; 3 shuffled anew each epoch
  float clip = 0;             // bound on nu times delta; 0: none
  float momentum = 0;         // 0: plain steps
  int32_t threads = 1;        // 1, 4, 8 or 16, all with the same result; with others only costs are computed
  // Only the epochs from the first up to, not including, the last are run. A training in several such parts gives the
  // same network as one run, but for the orders of alternate 3, which then belong to the process.
  int32_t firstEpoch = 0, endEpoch = std::numeric_limits<int32_t>::max();
};

// Null when training with these options evaluates no unit that has no activation; otherwise the reason why not. Without
// epochs no unit is evaluated, with thread counts that train nothing only the output layer's costs are.
const char* WhyNotTrainable(const NeuralNet& net, const TrainingOptions& options);

// What is trained: the rows are the fast form, the record the plain one. Their results are the same bits.
enum class TrainedForm { rows, record };

enum class TrainingEnd { completed, incompatible, interrupted };

// One line of the printed protocol.
struct EpochReport {
  int32_t epoch;  // from 0
  int32_t iters;
  float nu, cost;
  float change;  // of the cost, previous minus this
};

// Prints the line on standard output.
void SayEpoch(const EpochReport& report);

// Trains by per-sample gradient descent and reports each epoch. The set ends in the order of the last epoch when each
// one shuffles it (through temp.dat in the executable's directory, removed again on every way out). A network that does
// not fit the set is reported on standard output, waits for a key and is left alone. One that is WhyNotTrainable() must
// have been refused before.
//
// The first interrupt ends it after the current sample, as a completed training ends; Cost is then that of the last
// whole epoch. Throws the message texts of the set's file functions when temp.dat fails.
TrainingEnd TrainNet(NeuralNet& net, TrainingSet& set, const TrainingOptions& options,
                     TrainedForm form = TrainedForm::rows,
                     const std::function<void(const EpochReport&)>& report = SayEpoch);

}  // namespace norv
