// What is in a file of any kind: facts, and how its values are spread.
#pragma once

#include <optional>
#include <string>

#include "kit/formats/encoding.h"
#include "kit/look/facts.h"
#include "kit/look/net_health.h"
#include "kit/measure/summary.h"

namespace norv {

struct Look {
  Facts facts;
  std::optional<Histogram> histogram;
};

// Each throws a Failure for a file that cannot be read to its end; a picture goes by in rows.
Look LookAtPicture(const std::string& path, const ReadChoice& choice);
Look LookAtMatrix(const std::string& path);
Look LookAtFloatImage(const std::string& path);
Look LookAtBitImage(const std::string& path);
Look LookAtTrainingSet(const std::string& path);
// health: of that network; null where it cannot be evaluated.
Look LookAtNet(const NeuralNet& net, const NetHealth* health);

}  // namespace norv
