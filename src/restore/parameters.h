// What a restoration is asked for: plain numbers as they come from the command line, unchecked.
#pragma once

#include <cstdint>

namespace norv {

// The regulariser type that marks edges.
inline constexpr int32_t kMarkingType = 3;

// Ranges are those that mean something; every other value has a defined effect too, most often that of the nearest end.
// Grey levels are of the scale 0..255.
struct RestoreParameters {
  int32_t factor;      // enlargement of both sides, from 1 on
  int32_t kernelCode;  // reduction filter that made the picture small: see FilterOfKernelCode
  float lambdaCross;   // strength of the cross weights, 0 to about 2, no unit; 0 or less: types 1 and 5 without them
  float lambda;        // strength of the isotropic, axis and dot weights, 0 to about 2, no unit
  float deltaCross;    // threshold of the cross weights, grey levels above 0
  float delta;         // threshold of the isotropic, axis and dot weights, grey levels above 0
  float gateCross;     // carried along, read by nobody
  float gate;          // handed on without effect
  float spareCross;    // carried along, read by nobody
  float spare;         // carried along, read by nobody
  float shapeCross;    // power of the shaped cross weights (type 6), 0 to about 2; 1 is Huber's rule
  float shapeDot;      // power of the shaped dot weights (type 6), likewise
  int32_t steps;       // inner steps of every update, from 1 on; 0 or less: updates change nothing
  int32_t iterations;  // outer iterations of each pass, from 1 on; 0: nothing at all, less: emphasis alone
  float orientationScale;  // smoothing of the orientation field, pixels of the small plane; 0 or less: none
  float emphasis;  // of deviations between the passes, 0 to about 1; 0 or less: neither emphasis nor second pass
  int32_t representation;  // colour representation to work in, 0 to 5
  int32_t type;            // of the regulariser, -1 to 7; another acts as 0
  bool keepMask;           // leave the edge mask in the image
  float edgeThreshold;     // gradient from which on a pixel is marked as edge (type 3), grey levels a pixel, 0 to 255
};

}  // namespace norv
