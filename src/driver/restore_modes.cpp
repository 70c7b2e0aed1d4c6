// Modes 0 and 1: restoration of float images.
#include "driver/modes.h"
#include "driver/report.h"
#include "image/float_image.h"
#include "restore/restore_image.h"

namespace norv {
namespace {

// On purpose no failure: a missing picture is restored as an empty one, and the run ends as usual even when the result
// cannot be written. The reason is on standard error then.
FloatImage LoadPicture() {
  FloatImage image;
  static_cast<void>(image.Load("input.fdib", Folder::executable));
  return image;
}

void SavePicture(const FloatImage& image) { static_cast<void>(image.Save("output.fdib", Folder::executable)); }

void RestoreVisibly(FloatImage& image, const RestoreParameters& parameters) {
  Progress progress("Restoring", RestorationWork(parameters, image.format));
  RestoreImage(image, parameters, &progress);
}

}  // namespace

Ending RestoreWholeImage(const Request& request) {
  FloatImage image = LoadPicture();
  RestoreVisibly(image, request.restore);
  SavePicture(image);
  return Ending::report;
}

Ending RestoreOnThreads(const Request& request) {
  FloatImage image = LoadPicture();
  const int32_t threads = ClampThreads(request.threads, request.processors);
  RestoreImageThreaded(image, request.restore, threads);
  SavePicture(image);
  return Ending::report;
}

}  // namespace norv
