// Modes 6 and 7: denoising.
#include "denoise/denoise.h"
#include "driver/modes.h"
#include "numeric/float_image.h"
#include "numeric/matrix2.h"

namespace norv {
namespace {

// An input that cannot be read leaves the empty image; that and a failed save have said so already.
FloatImage LoadInput() {
  FloatImage image;
  (void)image.Load("input.fdib", Folder::executable);
  return image;
}

// The empty finish.mat tells whoever waits for it that the run has ended.
void Save(const FloatImage& image, const Arguments& arguments, int filePosition) {
  (void)image.Save(arguments.Text(filePosition), Folder::executable);
  if (arguments.Flag(filePosition + 1)) matrix().save("finish.mat", Folder::executable);
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
  FloatImage image = LoadInput();
  DenoiseByComponents(image, wanted);
  Save(image, a, 9);
  return Ending::report;
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
  FloatImage image = LoadInput();
  DenoiseByGroups(image, wanted);
  Save(image, a, 11);
  return Ending::report;
}

}  // namespace norv
