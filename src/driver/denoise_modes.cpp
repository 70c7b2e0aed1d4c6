// Modes 6 and 7: denoising.
#include "denoise/denoise.h"
#include "driver/modes.h"
#include "image/float_image.h"
#include "linear/matrix2.h"

namespace norv {
namespace {

// From input.fdib to the file whose name stands at a position of the command line. An input that cannot be read leaves
// the empty image; that and a failed save have said so already. The empty finish.mat tells whoever waits for it that
// the run has ended.
template <typename Wanted>
Ending Denoise(void (*denoise)(FloatImage&, const Wanted&), const Wanted& wanted, const Arguments& a, int position) {
  FloatImage image;
  (void)image.Load("input.fdib", Folder::executable);
  denoise(image, wanted);
  (void)image.Save(a.Text(position), Folder::executable);
  if (a.Flag(position + 1)) matrix().save("finish.mat", Folder::executable);
  return Ending::report;
}

}  // namespace

Ending RunComponentDenoiser(const Request& request) {
  const Arguments& a = request.arguments;
  ComponentRequest wanted;
  wanted.sigma = a.Float(2);
  wanted.side = a.Integer(3);
  wanted.kept = a.Integer(4);
  wanted.hard = a.Flag(5);
  wanted.luminance = a.Flag(6);
  wanted.threads = a.Integer(7);
  wanted.source = a.Integer(8) == 0 ? ComponentSource::learn : ComponentSource::files;
  return Denoise(DenoiseByComponents, wanted, a, 9);
}

Ending RunGroupDenoiser(const Request& request) {
  const Arguments& a = request.arguments;
  GroupRequest wanted;
  wanted.iterations = a.Integer(2);
  wanted.side = a.Integer(3);
  wanted.sigma = a.Float(4);
  wanted.strength = a.Float(5);
  wanted.feedback = a.Float(6);
  wanted.parallel = a.Flag(7);
  wanted.luminance = a.Flag(8);
  wanted.ranked = a.Flag(9);
  wanted.twoStep = a.Flag(10);
  return Denoise(DenoiseByGroups, wanted, a, 11);
}

}  // namespace norv
