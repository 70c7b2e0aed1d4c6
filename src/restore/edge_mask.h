// The mask of pixels on edges, one for all colour planes of an image.
#pragma once

#include <cstdint>

#include "image/bit_mask.h"
#include "linear/matrix2.h"
#include "platform/threads/standing_team.h"
#include "restore/blocks/row_runs.h"

namespace norv {

// Sets the bits of inner pixels whose 3 x 3 gradient, along the axes or along the diagonals, is at least `threshold`
// grey levels; clears none. An empty mask is made at the plane's size first.
// rows: of the plane, whose pixels are looked at.
void MarkEdges(BitMask& mask, const matrix& plane, float threshold, StandingTeam& team = StandingTeam::Alone(),
               Range rows = kAllRows);

// `passes` times: the eight neighbours of every set inner pixel are set too. Border pixels never spread.
void GrowMask(BitMask& mask, int32_t passes, StandingTeam& team = StandingTeam::Alone());

// A mask of the same size with bit (r, c) set when it or one of its neighbours below, to the right and below to the
// right is set; never in the last row and column.
BitMask DilateMask(const BitMask& mask, StandingTeam& team = StandingTeam::Alone());

}  // namespace norv
