#include <cmath>

#include "kit/commands/command.h"
#include "kit/commands/shared_rows.h"
#include "kit/failure.h"
#include "kit/scale/resize.h"
#include "kit/work/run_work.h"

namespace norv {
namespace {

struct Settings {
  WantedSize size;
  std::optional<double> order;
  WorkChoice choice;
};

Options Rows(Settings& settings) {
  return Joined({PlaceRows(settings.choice.places, "the smaller one"),
                 SizeRows(settings.size, "smaller", "2"),
                 {{.name = "--filter",
                   .target = &settings.order,
                   .unit = "K",
                   .check = Between{-22, 64, true},
                   .help = std::string("of whole factors: ") + kShrinkOrders,
                   .byDefault = "-1",
                   .aliases = "--order"}},
                 WorkRows(settings.choice)});
}

// The factor by which pairs for training are made, cropped to a multiple of it; 0: another size.
int32_t WholeFactor(const WantedSize& size) {
  if (!size.Said()) return 2;
  return size.by == std::floor(size.by) ? static_cast<int32_t>(size.by) : 0;
}

WorkPlan PlanOfWhole(const PictureShape& shape, int32_t factor, int32_t order) {
  WorkPlan plan{shape, "shrunk by " + std::to_string(factor), static_cast<double>(factor), nullptr};
  plan.result.width /= factor;
  plan.result.height /= factor;
  plan.make = [factor, order](PictureSource picture, int32_t threads) {
    return Shrunk(std::move(picture), factor, order, threads);
  };
  plan.cost = CostOfResampling(shape, plan.result);
  return plan;
}

WorkPlan PlanOf(const Settings& settings, const PictureShape& shape) {
  if (const int32_t factor = WholeFactor(settings.size))
    return PlanOfWhole(shape, factor, static_cast<int32_t>(settings.order.value_or(-1)));
  const PictureSize size = SizeOf(shape, settings.size, Direction::smaller);
  WorkPlan plan{shape, "shrunk by Lanczos-3", FactorBetween(shape, size), nullptr};
  plan.result.width = size.width;
  plan.result.height = size.height;
  plan.cost = CostOfResampling(shape, plan.result);
  plan.make = [size](PictureSource picture, int32_t threads) {
    return Resized(std::move(picture), size, ResizeFilter::lanczos, threads);
  };
  return plan;
}

PictureWork WorkOf(Settings& settings) {
  if (settings.order && !WholeFactor(settings.size))
    throw WrongUsage("--filter goes with whole factors: leave it out, or --by 2");
  settings.choice.factor = settings.size.by > 0 ? settings.size.by : settings.size.Said() ? 0 : 2;
  return {[settings](const PictureShape& shape) { return PlanOf(settings, shape); }};
}

}  // namespace

Command ShrinkCommand() {
  return MakeWorkCommand<Settings>(
      {.name = "shrink",
       .purpose = "Make a picture smaller, without aliasing",
       .examples = "norvkit shrink photo.jpg small.jpg --longest 1600\n"
                   "norvkit shrink original.png small.png --by 2 --filter 0",
       .notes = "By a whole factor the picture is made smaller as training pictures are, cropped at the right and\n"
                "below to a multiple of it; to any other size by a stretched Lanczos-3."},
      Rows, WorkOf);
}

}  // namespace norv
