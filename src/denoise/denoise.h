// The two image operations that remove noise and compression grain. Both work on the display scale 0..255 and keep the
// image's size and format; a side or a number of iterations of 0 or less asks for nothing and leaves the image as it
// is, as does an image smaller than a patch. Values outside their range move to its nearest end, with a word on
// standard error; so do pixels that are no numbers, to the mean of their neighbours. Results do not depend on the
// number of threads. An image of an unknown format has no planes and stays as it is, with a word on standard error.
#pragma once

#include <cstdint>

#include "image/float_image.h"

namespace norv {

enum class ComponentSource {
  learn,  // learned from each plane, noisy or not, and written as "dr0.mat", "dr1.mat" ... beside the executable
  own,    // learned from each plane, and kept by nobody
  files,  // those files; where one is missing or does not fit, said on standard error, the plane itself
};

struct ComponentRequest {
  float sigma = 0;        // of the noise, in grey levels, up to 255; 0 or less: estimated
  int32_t side = 8;       // of the patches, 2 .. 16
  int32_t kept = 0;       // components, up to side^2; 0: decided by the threshold alone
  bool hard = false;      // threshold only, without the second pass of Wiener shrinkage
  bool luminance = true;  // work in luminance and chrominance
  int32_t threads = 1;    // 1 and more
  ComponentSource source = ComponentSource::learn;
};

// Principal components of patches (component_filter.h).
void DenoiseByComponents(FloatImage& image, const ComponentRequest& request);

struct GroupRequest {
  int32_t iterations = 8;  // up to 100
  int32_t side = 6;        // of the patches, 2 .. 12
  float sigma = 0;         // of the noise, in grey levels, up to 255; 0 or less: estimated
  float strength = 0;      // of the singular-value weights, up to 100; 0 or less: 2.83
  float feedback = 0.1f;   // of the residual per iteration, 0 .. 1
  int32_t threads = 1;     // 1 and more, on all planes
  bool luminance = true;   // work in luminance and chrominance
  bool ranked = false;     // patches weigh the less, the higher their group's rank
  bool twoStep = true;     // fewer groups, found in a smaller window
};

// Low-rank approximation of groups of similar patches (group_filter.h).
void DenoiseByGroups(FloatImage& image, const GroupRequest& request);

}  // namespace norv
