#include "kit/search/filter_names.h"

#include <cstdio>

#include "kit/failure.h"
#include "raster/filters.h"

namespace norv {

std::string FilterInWords(int32_t shrinkOrder) {
  const std::optional<FilterChoice> choice = FilterOfShrinkOrder(shrinkOrder);
  if (!choice) Fail("there is no filter of order %d", shrinkOrder);
  char text[64];
  switch (choice->filter) {
    case Filter::box:
      return "box";
    case Filter::tent:
      return "tent";
    case Filter::lanczos:
      std::snprintf(text, sizeof text, "Lanczos-%g", choice->parameter);
      break;
    case Filter::cubic:
      std::snprintf(text, sizeof text, "cubic of %g", choice->parameter);
      break;
    case Filter::gaussian:
      std::snprintf(text, sizeof text, "Gaussian of %.3g pixels", choice->parameter);
      break;
  }
  return text;
}

std::vector<int32_t> ShrinkOrders() {
  constexpr int32_t kLowest = -22, kHighest = 64;
  std::vector<int32_t> orders;
  for (int32_t order = kLowest; order <= kHighest; ++order)
    if (FilterOfShrinkOrder(order)) orders.push_back(order);
  return orders;
}

}  // namespace norv
