// A training run as a drawing.
#pragma once

#include <string>

#include "kit/training/training_log.h"

namespace norv {

// An SVG: above, the quality on the held-out pictures beside cubic convolution and Lanczos-3, the best epoch marked;
// below, the cost. Values that are not finite leave gaps. An empty log gives empty axes.
std::string DrawLearningCurve(const TrainingLog& log);

}  // namespace norv
