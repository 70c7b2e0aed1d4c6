// What a restoration is asked for: plain numbers as they come from the command line, unchecked.
#pragma once

#include <cstdint>

namespace norv {

// The regulariser type that marks edges.
inline constexpr int32_t kMarkingType = 3;

struct RestoreParameters {
  int32_t factor;          // enlargement of both sides
  int32_t kernel;          // code of the kernel pair
  float lambdaCross;       // strength of the cross weights; 0 or less: types 1 and 5 go without them
  float lambda;            // strength of the isotropic and dot weights
  float deltaCross;        // threshold of the cross weights
  float delta;             // threshold of the isotropic and dot weights
  float gateCross;         // carried along, read by nobody
  float gate;              // handed on without effect
  float spareCross;        // carried along, read by nobody
  float spare;             // carried along, read by nobody
  float shapeCross;        // shape of the shaped cross weights (type 6)
  float shapeDot;          // shape of the shaped dot weights (type 6)
  int32_t steps;           // inner steps of every update
  int32_t iterations;      // outer iterations of each pass
  float orientationScale;  // smoothing of the orientation field, times factor; 0 or less: none
  float emphasis;          // of deviations between the passes; 0 or less: neither emphasis nor second pass
  int32_t representation;  // colour representation to work in
  int32_t type;            // of the regulariser
  bool keepMask;           // leave the edge mask in the image
  float edgeThreshold;     // from which on a pixel is marked as edge (type 3)
};

}  // namespace norv
