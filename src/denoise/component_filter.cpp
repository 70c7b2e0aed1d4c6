#include "denoise/component_filter.h"

#include <algorithm>
#include <vector>

#include "denoise/patch_plane.h"
#include "platform/progress.h"
#include "platform/team.h"
#include "simd/patches/kernels.h"

namespace norv {
namespace {

constexpr int64_t kPatchRows = 16;  // rows of patches that one thread works on at a time

// In standard deviations of the noise; the value that Deledalle, Salmon and Dalalyan found best.
constexpr double kThreshold = 2.75;

constexpr int32_t Padded(int32_t count) { return (count + kPatchBlock - 1) / kPatchBlock * kPatchBlock; }

// The components in the two orders in which the kernels read them, padded.
struct Basis {
  int32_t side, kept, keptStride, lengthStride;
  std::vector<float> byTap;            // [tap][component]
  std::vector<float> byComponent;      // [component][tap]
  std::vector<float> mean;             // of the patches, [tap]
  std::vector<float> meanCoefficient;  // that patch in the components

  Basis(const matrix& components, const ComponentSettings& settings)
      : side(settings.side),
        kept(settings.kept > 0 ? std::min(settings.kept, side * side) : side * side),
        keptStride(Padded(kept)),
        lengthStride(Padded(side * side)),
        byTap(static_cast<size_t>(side * side * keptStride)),
        byComponent(static_cast<size_t>(kept * lengthStride)),
        mean(components.z[0], components.z[0] + side * side),
        meanCoefficient(static_cast<size_t>(keptStride)) {
    mean.resize(static_cast<size_t>(lengthStride));
    for (int32_t k = 0; k < kept; ++k) {
      for (int32_t i = 0; i < side * side; ++i) {
        const float value = components.z[k + 1][i];
        byTap[i * keptStride + k] = byComponent[k * lengthStride + i] = value;
        meanCoefficient[k] += value * mean[i];
      }
    }
  }
};

// One pass over all patches of a plane: by the threshold, or guided by a pilot (null: none).
class ComponentPass {
 public:
  ComponentPass(const Basis& basis, const PatchPlane& noisy, const PatchPlane* pilot, double sigma)
      : basis_(basis), noisy_(noisy), pilot_(pilot), sigma_(sigma) {}

  void Run(int threads, Progress& progress, PatchPlane& result) const {
    const int64_t rows = noisy_.height - basis_.side + 1;
    PatchSums total;
    total.Reset(noisy_, 0, noisy_.height);
    const auto filter = [&](int64_t i, PatchSums& sums) {
      FilterRows(i * kPatchRows, std::min((i + 1) * kPatchRows, rows), sums);
      progress.Advance();
    };
    SumStrips(threads, (rows + kPatchRows - 1) / kPatchRows, filter, [&](int64_t) -> PatchSums& { return total; });
    total.Finish(result, threads);
  }

 private:
  void FilterRows(int64_t firstRow, int64_t endRow, PatchSums& sums) const {
    sums.Reset(noisy_, firstRow, endRow + basis_.side - 1);
    std::vector<float> rows(static_cast<size_t>(basis_.keptStride * kPatchesPerTile)), guide(pilot_ ? rows.size() : 0);
    std::vector<int32_t> active(static_cast<size_t>(basis_.kept));
    const int32_t places = noisy_.width - basis_.side + 1;
    for (int64_t r = firstRow; r < endRow; ++r) {
      for (int32_t c = 0; c < places; c += kPatchesPerTile) {
        Analyse(noisy_, r, c, rows);
        if (pilot_) Analyse(*pilot_, r, c, guide);
        float weight[kPatchesPerTile];
        const int32_t count = Shrink(rows, guide, weight, active);
        std::fill(weight + std::min(kPatchesPerTile, places - c), weight + kPatchesPerTile, 0.0f);
        kernels_.synthesise(rows.data(), active.data(), count, basis_.byComponent.data(), basis_.mean.data(),
                            basis_.side, weight, sums.Values(r) + c, sums.Weights(r) + c, noisy_.stride);
      }
    }
  }

  void Analyse(const PatchPlane& plane, int64_t row, int64_t column, std::vector<float>& rows) const {
    kernels_.analyse(plane.Row(row) + column, plane.stride, basis_.side, basis_.byTap.data(),
                     basis_.meanCoefficient.data(), basis_.keptStride, rows.data());
  }

  int32_t Shrink(std::vector<float>& rows, const std::vector<float>& guide, float* weight,
                 std::vector<int32_t>& active) const {
    if (pilot_)
      return kernels_.shrink(rows.data(), basis_.kept, guide.data(), static_cast<float>(sigma_ * sigma_), weight,
                             active.data());
    return kernels_.threshold(rows.data(), basis_.kept, static_cast<float>(kThreshold * sigma_), weight, active.data());
  }

  const Basis& basis_;
  const PatchPlane& noisy_;
  const PatchPlane* pilot_;
  double sigma_;
  const PatchKernels& kernels_ = ActivePatchKernels();
};

}  // namespace

void FilterByComponents(matrix& plane, double sigma, const matrix& components, const ComponentSettings& settings) {
  const Basis basis(components, settings);
  const PatchPlane noisy(plane);
  PatchPlane result(plane.m, plane.n);
  const int64_t strips = (plane.n - settings.side + kPatchRows) / kPatchRows;
  Progress progress("Denoising", settings.hard ? strips : 2 * strips);
  ComponentPass(basis, noisy, nullptr, sigma).Run(settings.threads, progress, result);
  if (!settings.hard) {
    const PatchPlane pilot = result;
    ComponentPass(basis, noisy, &pilot, sigma).Run(settings.threads, progress, result);
  }
  result.CopyTo(plane);
}

}  // namespace norv
