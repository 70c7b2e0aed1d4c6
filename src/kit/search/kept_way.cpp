#include "kit/search/kept_way.h"

#include "kit/models/catalogue.h"

namespace norv {

EnlargeWay WayOfKept(const KeptWay& kept, const PictureSize& size, double scale, int32_t threads) {
  EnlargeWay way;
  way.size = size;
  way.how = {.average = !kept.quick, .shortcut = true, .threads = threads};
  way.preset = kept.preset;
  if (!kept.model.empty()) way.plan = PlanNetwork(FindModel(kept.model), scale);
  if (kept.method == "nearest") way.filter = ResizeFilter::nearest;
  if (kept.method == "cubic") way.filter = ResizeFilter::cubic;
  return way;
}

}  // namespace norv
