#include "denoise/denoise.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "denoise/component_filter.h"
#include "denoise/components.h"
#include "denoise/group_filter.h"
#include "denoise/working_planes.h"
#include "platform/console.h"

namespace norv {
namespace {

constexpr float kStrength = 2.83f;  // 2 sqrt(2), as Gu et al. 2017

// The nearest value of the range; a NaN becomes its lower end.
template <typename T>
T Within(const char* name, T value, T low, T high) {
  const T moved = value >= low ? std::min(value, high) : low;
  if (!(moved == value))
    Warn("%s is outside its range: %g instead of %g", name, static_cast<double>(moved), Printable(value));
  return moved;
}

bool CanDenoise(const FloatImage& image, int32_t side) {
  if (image.planes == 0) {
    Warn("an image of an unknown format has no planes to denoise and stays as it is");
    return false;
  }
  if (std::min(image.width, image.height) >= side) return true;
  if (image.count > 0) Warn("the image is smaller than a patch of %d x %d pixels and stays as it is", side, side);
  return false;
}

// The components of the numbered file, or false with the reason on standard error.
bool ReadComponents(int32_t number, int32_t side, matrix& components) {
  const std::string name = "dr" + std::to_string(number) + ".mat";
  try {
    components.load(name, false, Folder::executable);
    if (AreComponents(components, side)) return true;
    Warn("%s does not hold components of patches of %d x %d; they are learned from the image", name.c_str(), side,
         side);
  } catch (const char*) {
    Warn("%s cannot be used; its components are learned from the image", name.c_str());
  }
  return false;
}

matrix ComponentsOf(const NoisyPlane& noisy, int32_t number, ComponentSource source,
                    const ComponentSettings& settings) {
  matrix components;
  if (source == ComponentSource::files && ReadComponents(number, settings.side, components)) return components;
  LearnComponents(*noisy.plane, settings.side, settings.threads, components);
  if (source == ComponentSource::learn) components.savenumbered("dr", number);
  return components;
}

}  // namespace

void DenoiseByComponents(FloatImage& image, const ComponentRequest& request) {
  if (request.side <= 0) return;
  ComponentSettings settings;
  settings.side = Within("patch side", request.side, 2, 16);
  settings.kept = Within("number of components", request.kept, 0, settings.side * settings.side);
  settings.hard = request.hard;
  settings.threads = request.threads;
  const float sigma = std::isnan(request.sigma) ? 0 : std::max(request.sigma, 0.0f);
  const double noise = Within("noise", sigma, 0.0f, 255.0f);
  if (!CanDenoise(image, settings.side)) return;
  WorkingPlanes working(image, request.luminance, settings.threads);
  const std::vector<NoisyPlane> planes = working.Planes(noise);
  for (size_t k = 0; k < planes.size(); ++k) {
    // What is learned serves a series: every plane's file belongs to this picture, even if the plane itself stays.
    const bool noisy = planes[k].sigma > 0;
    if (!noisy && request.source != ComponentSource::learn) continue;
    const matrix components = ComponentsOf(planes[k], static_cast<int32_t>(k), request.source, settings);
    if (noisy) FilterByComponents(*planes[k].plane, planes[k].sigma, components, settings);
  }
  working.Finish();
}

void DenoiseByGroups(FloatImage& image, const GroupRequest& request) {
  if (request.side <= 0 || request.iterations <= 0) return;
  GroupSettings settings;
  settings.iterations = Within("number of iterations", request.iterations, 1, 100);
  settings.side = Within("patch side", request.side, 2, 12);
  settings.strength = request.strength > 0 ? Within("strength", request.strength, 0.0f, 100.0f) : kStrength;
  settings.feedback = Within("feedback", request.feedback, 0.0f, 1.0f);
  settings.ranked = request.ranked;
  settings.twoStep = request.twoStep;
  settings.threads = request.threads;
  const float sigma = std::isnan(request.sigma) ? 0 : std::max(request.sigma, 0.0f);
  const double noise = Within("noise", sigma, 0.0f, 255.0f);
  if (!CanDenoise(image, settings.side)) return;
  WorkingPlanes working(image, request.luminance, settings.threads);
  FilterGroups(working.Planes(noise), settings);
  working.Finish();
}

}  // namespace norv
