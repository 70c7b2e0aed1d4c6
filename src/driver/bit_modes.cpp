// Modes 2 to 5, which end in an image of three bytes a pixel.
#include "driver/images.h"
#include "driver/modes.h"
#include "driver/report.h"
#include "image/bit_image.h"
#include "restore/bit_process.h"
#include "restore/restore_image.h"

namespace norv {
namespace {

void SaveAsBytes(const FloatImage& image) {
  BitImage bits(image.width, image.height);
  PasteToBitImage(bits, 0, 0, image, nullptr, 0, 0, 0, 0);
  bits.Save("output.bit", Folder::executable);
}

// A clamped count stands, and is said as one that does.
Ending ProcessInBands(int32_t threads, int32_t processors, const RestoreParameters& parameters) {
  BitImage image;
  image.Load("input.bit", Folder::executable);
  ProcessBitImage(image, parameters, kDefaultFormat, ClampBitThreads(threads, processors));
  image.Save("output.bit", Folder::executable);
  return Ending::report;
}

}  // namespace

Ending RestoreToBitImage(const Request& request) {
  FloatImage image = LoadInputImage();
  {
    Progress progress("Restoring", RestorationWork(request.restore, image.format));
    RestoreImage(image, request.restore, &progress);
  }
  SaveAsBytes(image);
  return Ending::report;
}

// Everything of mode 4 follows on purpose, so that what is written first is written over: the graphical program knows
// this mode so, as it knows that this one reads its picture from the current directory.
Ending RestoreInBandsThenProcessBits(const Request& request) {
  int32_t threads;
  {
    FloatImage image = LoadInputImage(Folder::asGiven);
    threads = ClampThreads(request.threads, request.processors);
    RestoreImageThreaded(image, request.restore, threads);
    SaveAsBytes(image);
  }
  return ProcessInBands(threads, request.processors, request.restore);
}

Ending ProcessBitsInBands(const Request& request) {
  return ProcessInBands(request.threads, request.processors, request.restore);
}

Ending ProcessWholeBits(const Request& request) {
  BitImage image;
  image.Load("input.bit", Folder::executable);
  ProcessBitImage(image, request.restore, kDefaultFormat, 1);
  image.Save("output.bit", Folder::executable);
  return Ending::report;
}

}  // namespace norv
