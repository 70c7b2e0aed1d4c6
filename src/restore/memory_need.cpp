#include "restore/memory_need.h"

#include <algorithm>
#include <cmath>

#include "colour/models.h"
#include "linear/matrix2.h"
#include "platform/memory.h"
#include "raster/filters.h"
#include "restore/blocks/row_runs.h"
#include "restore/restore_image.h"
#include "restore/terms/recipes.h"

namespace norv {
namespace {

constexpr double kSlack = 1.05;      // for the gaps that allocations leave
constexpr double kStacks = 2 << 20;  // and whatever else a thread touches for the first time

class MemoryEstimate {
 public:
  MemoryEstimate(const RestoreParameters& parameters, int32_t width, int32_t height, int32_t threads)
      : parameters_(parameters),
        threads_(threads),
        runs_(RowRuns(height, parameters.factor, threads).Runs()),
        f_(parameters.factor),
        h_(height),
        small_(static_cast<double>(width) * height),
        large_(small_ * f_ * f_),
        row_(static_cast<double>(width) * f_),
        column_(static_cast<double>(height) * f_) {}

  // planes: enlarged ones; added: by the conversion at the end.
  double Bytes(int32_t planes, int32_t added) const {
    const Recipe& recipe = RecipeOf(parameters_.type);
    const double stages =
        parameters_.iterations > 0 ? std::max(StageFloats(recipe.first), StageFloats(recipe.tail)) : 0;
    const double converting = std::max(added, 0) * large_;
    const double floats = planes * large_ + std::max(stages, converting) + FilterFloats();
    const double masks = parameters_.type == kMarkingType ? 3 * large_ / 8 : 0;
    // Lines of all kinds, the resampling tables (15 numbers a line) and every plane's pointers to its rows.
    const double lines = 64 * (row_ + column_);
    return kSlack * (4 * (floats + lines) + masks) + kStacks;
  }

 private:
  double StageFloats(const Stage& stage) const {
    if (stage.terms.empty()) return 0;
    int32_t planes = 0, terms = 0;
    bool field = false;
    for (const TermRow* row : TermsOf(stage, parameters_)) {
      planes += row->planes;
      field |= row->field != FieldUse::none;
      ++terms;
    }
    // What one run keeps of each term is among the lines.
    constexpr double kLinesOfTerm = 10;
    // Direction and gradient, residual and reduced direction are the solver's.
    return 2 * (large_ + small_) + planes * large_ + (field ? 2 * large_ + SmoothingFloats() : 0) +
           (runs_ - 1) * kLinesOfTerm * terms * row_;
  }

  // Rows of the tensor's three planes that smoothing along columns keeps.
  double SmoothingFloats() const {
    const double scale = static_cast<double>(f_) * static_cast<double>(parameters_.orientationScale);
    const double reach = scale > 0 ? std::ceil(3 * std::min(scale, 100 * std::max(row_, column_))) : 0;
    const double parts = std::clamp(column_ / (4 * reach + 1), 1.0, threads_);
    return parts * (3 * row_ * std::min(column_, 2 * reach + 1) + 6 * std::min(reach, row_));
  }

  // Rows of the adjoint between its two passes, of every run, with its copies of its neighbours' rows, and the shares
  // of small rows in large ones.
  double FilterFloats() const {
    if (!HasUpdates(parameters_)) return 0;
    matrix taps;
    BuildTaps(taps, parameters_.factor, *FilterOfKernelCode(parameters_.kernelCode));
    const double length = taps.mn, rows = std::min<double>(h_, 2 * length / f_ + 2);
    const double run = rows * (row_ + length), copies = (2 * length + 8) * row_;
    return runs_ * run + (runs_ - 1) * copies + 2 * h_ * length + 2 * length;
  }

  const RestoreParameters& parameters_;
  double threads_, runs_;
  double f_, h_, small_, large_, row_, column_;
};

}  // namespace

int64_t RestorationMemory(const RestoreParameters& parameters, int32_t width, int32_t height, int32_t format,
                          int32_t threads) {
  const int32_t working = PlanesWhileWorking(parameters, format), aside = ModelOf(format) == kWithFourth;
  return static_cast<int64_t>(
      MemoryEstimate(parameters, width, height, threads).Bytes(working + aside, FindModel(format)->planes - working));
}

int64_t PlanesMemory(const RestoreParameters& parameters, int32_t width, int32_t height, int32_t planes,
                     int32_t threads) {
  return static_cast<int64_t>(MemoryEstimate(parameters, width, height, threads).Bytes(planes, 0));
}

int64_t BandsMemory(const RestoreParameters& parameters, int32_t width, int32_t height, int32_t format, int32_t side,
                    int32_t threads) {
  const int32_t rows = height + 2 * kRestoreMargin;
  return side * (int64_t{4} * FindModel(format)->planes * width * rows +
                 RestorationMemory(parameters, width, rows, format, threads));
}

void DemandMemory(int64_t bytes) {
  if (bytes > 0 && static_cast<uint64_t>(bytes) > AvailableMemory()) ThrowOutOfMemory(static_cast<double>(bytes) / 4);
}

}  // namespace norv
