// The blur of a picture, found in the picture alone.
#pragma once

namespace norv {

struct SeenLuminance;

struct BlurEstimate {
  double sigma = 0;      // of the Gaussian that was laid over the picture, in its pixels, 0 to 2; 0: none was found
  double deviation = 0;  // of sigma, as far as the picture says

  bool Found() const { return sigma > 0; }
};

// The Gaussian that explains best how the luminance's spectrum departs from those of pictures as they are
// (power_law.h). Photographs are a little soft by themselves, which is left in them: what is below about 0.5 pixels
// counts as none. Throws as PowerInCells().
BlurEstimate EstimateBlur(const SeenLuminance& picture);

// As much of it as a restoration takes back, in pixels, and a line for people that says what was found; 0: none.
double BlurToTakeBack(const SeenLuminance& picture);

}  // namespace norv
