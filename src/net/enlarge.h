// Images enlarged by a network, twice (4 outputs) or four times (16 outputs) on each axis.
#pragma once

#include <memory>

#include "image/image_rows.h"
#include "net/neural_net.h"
#include "raster/separable.h"

namespace norv {

class PlaneEnlarger;
struct Strip;

// In place. shortcut: only the luminance (and a fourth plane of model 0x2000) goes through the network, the chrominance
// is resampled. average: the mean over the eight orientations.
// threads: 1 works on the image as it is (0 too). 4, 8 and 16 cut it into that many bands with margins, each a small
// image of its own; an image with fewer rows than threads squared and any other count enlarge a cleared image of the
// enlarged size once more. Kept on purpose: the graphical program expects the size factor^2 back.
// A network without a layout leaves the planes as they are; one with a layout must be evaluable unless the image is
// empty. The mask always stays as it is, of the source's size.
// Throws matrix's out-of-memory message; the image is then unusable.
void NetEnlargeImage(FloatImage& image, const NeuralNet& net, bool shortcut, bool average, int32_t threads);

// Whether a request with so many threads cuts an image of so many rows into bands.
bool IsCutIntoBands(int32_t rows, int32_t threads);

// A picture that passes by, in strips of stripRows rows (0: as many as stay in the cache): `take` gets the very bits of
// NetEnlargeImage, strip by strip in order, on the calling thread. threads: 1, or as many as cut the picture into
// bands. The network has a layout, the format is known. Stops where no more is wanted. Throws what `source` and `take`
// throw, and matrix's out-of-memory message.
void NetEnlargeRows(const ImageSource& source, const TakeRows& take, const NeuralNet& net, bool shortcut, bool average,
                    int32_t threads, int32_t stripRows = 0);

// The same a strip at a time, for those who share a picture's strips among threads: read-only afterwards.
class StripEnlarger {
 public:
  // As NetEnlargeRows(), for pictures of this width.
  StripEnlarger(const NeuralNet& net, int32_t width, bool shortcut, bool average);
  ~StripEnlarger();

  int32_t Factor() const;
  // The strip of `rows` rows from `first` on of an image of this height, with the margin that it looks at.
  static Strip PlanOf(int32_t height, int32_t first, int32_t rows);
  // The strip's window becomes the enlarged strip.
  void Enlarge(FloatImage& window, const Strip& strip) const;

 private:
  std::unique_ptr<const PlaneEnlarger> enlarger_;
  bool shortcut_;
  ResampleTable across_;  // of the chrominance's rows
};

// A whole image or one band, in place, on the calling thread.
void NetEnlargeAllChannels(FloatImage& image, const NeuralNet& net, bool average);
void NetEnlargeShortcut(FloatImage& image, const NeuralNet& net, bool average);

// One plane; without a layout for the network, out is not touched. out is another matrix than plane.
void NetEnlargeChannel(const NeuralNet& net, const matrix& plane, matrix& out);
void NetEnlargeChannelAveraged(const NeuralNet& net, const matrix& plane, matrix& out);

}  // namespace norv
