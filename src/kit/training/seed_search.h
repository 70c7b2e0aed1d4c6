// The same training from several random starts, of which the best one is kept. In the search's folder:
//   seed-N     the folder of one training (training_run.h), its pairs left out
//   test.dat   the pairs, of all                    best.net   that of the best one on the held-out pictures
//   seeds.csv  a line a seed that is trained        search.txt the settings of the search
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "kit/training/training_run.h"

namespace norv {

// "1-16", "3,5,9" or both, in order, each once; throws a WrongUsage for anything else.
std::vector<uint64_t> ReadSeeds(const std::string& text);

// Runs it in plan.folder, on every rank: seeds are handed out as ranks become free. What is trained is not trained
// again, what was under way goes on. settings: what decides the networks; a Failure where the folder holds a search by
// others. A seed that fails stops no other one and ends in SomeFailed. Throws Interrupted when it was stopped.
void SearchSeeds(const TrainingPlan& plan, const std::vector<uint64_t>& seeds, const std::string& settings);

}  // namespace norv
