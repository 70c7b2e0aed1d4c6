// Which way of enlarging is the best for a person's own pictures.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "kit/search/stored_presets.h"

namespace norv {

struct RankChoice {
  int32_t factor = 2;    // 2 to 4
  int32_t pictures = 6;  // of the folder, evenly spread over their names
  int32_t side = 320;    // pixels of the middle that is taken of each, at most
};

struct RankedWay {
  KeptWay way;
  double decibels = 0;    // PSNR of the luminance, the mean over the pictures
  double similarity = 0;  // SSIM of the luminance, likewise
  double seconds = 0;     // of one processor, a megapixel of the small pictures
};

struct Ranking {
  std::vector<std::string> pictures;  // names that were measured
  std::vector<RankedWay> ways;        // by decibels, the best first
};

// The middles of pictures, shrunk by the cubic filter of norvkit shrink and rounded to bytes, then enlarged in every
// way there is: by each filter, each network of the catalogue averaged and plain, by restoration with each preset, and
// by each network with restoration behind it. What cannot be read or is too small is left out with a warning. Throws a
// Failure when no picture is left.
Ranking RankWays(const std::string& folder, const RankChoice& choice);

}  // namespace norv
