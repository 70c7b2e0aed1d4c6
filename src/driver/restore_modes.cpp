// Modes 0 and 1: restoration of float images.
#include "driver/images.h"
#include "driver/modes.h"
#include "driver/report.h"
#include "restore/restore_image.h"

namespace norv {
namespace {

void RestoreVisibly(FloatImage& image, const RestoreParameters& parameters) {
  Progress progress("Restoring", RestorationWork(parameters, image.format));
  RestoreImage(image, parameters, &progress);
}

}  // namespace

Ending RestoreWholeImage(const Request& request) {
  FloatImage image = LoadInputImage();
  RestoreVisibly(image, request.restore);
  SaveResultImage(image, "output.fdib");
  return Ending::report;
}

Ending RestoreOnThreads(const Request& request) {
  FloatImage image = LoadInputImage();
  const int32_t threads = ClampThreads(request.threads, request.processors);
  RestoreImageThreaded(image, request.restore, threads);
  SaveResultImage(image, "output.fdib");
  return Ending::report;
}

}  // namespace norv
