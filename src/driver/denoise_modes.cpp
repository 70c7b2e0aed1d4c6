// Modes 6 and 7: denoising.
#include <algorithm>

#include "denoise/denoise.h"
#include "driver/images.h"
#include "driver/modes.h"
#include "linear/matrix2.h"
#include "platform/team.h"

namespace norv {
namespace {

// From input.fdib to the file that the position `file` of the command line names. Where the position `finish` asks for
// it, an empty finish.mat tells whoever waits for it that the run has ended.
template <typename Wanted>
Ending Denoise(void (*denoise)(FloatImage&, const Wanted&), const Wanted& wanted, const Arguments& a, int32_t file,
               int32_t finish) {
  FloatImage image = LoadInputImage();
  denoise(image, wanted);
  SaveResultImage(image, a.Text(file));
  if (a.Flag(finish)) matrix().save("finish.mat", Folder::executable);
  return Ending::report;
}

}  // namespace

Ending RunComponentDenoiser(const Request& request) {
  constexpr ParameterNames in = kComponentParameters;
  const Arguments& a = request.arguments;
  ComponentRequest wanted;
  wanted.sigma = a.Float(in["SIGMA"]);
  wanted.side = a.Integer(in["SIDE"]);
  wanted.kept = a.Integer(in["COMPONENTS"]);
  wanted.hard = a.Flag(in["HARD"]);
  wanted.luminance = a.Flag(in["LUMINANCE"]);
  wanted.threads = std::clamp(a.Integer(in["THREADS"]), 1, ProcessorCount());
  wanted.source = a.Integer(in["VARIANT"]) == 0 ? ComponentSource::learn : ComponentSource::files;
  return Denoise(DenoiseByComponents, wanted, a, in["FILE"], in["FINISH"]);
}

Ending RunGroupDenoiser(const Request& request) {
  constexpr ParameterNames in = kGroupParameters;
  const Arguments& a = request.arguments;
  GroupRequest wanted;
  wanted.iterations = a.Integer(in["ITERATIONS"]);
  wanted.side = a.Integer(in["SIDE"]);
  wanted.sigma = a.Float(in["SIGMA"]);
  wanted.strength = a.Float(in["STRENGTH"]);
  wanted.feedback = a.Float(in["FEEDBACK"]);
  wanted.threads = a.Flag(in["PARALLEL"]) ? ProcessorCount() : 1;
  wanted.luminance = a.Flag(in["LUMINANCE"]);
  wanted.ranked = a.Flag(in["RANKED"]);
  wanted.twoStep = a.Flag(in["TWO_STEP"]);
  return Denoise(DenoiseByGroups, wanted, a, in["FILE"], in["FINISH"]);
}

}  // namespace norv
