// The restoration of one plane: iteratively reweighted least squares with an edge-preserving regulariser.
#pragma once

#include <cstdint>

#include "image/bit_mask.h"
#include "linear/matrix2.h"
#include "platform/progress.h"
#include "platform/threads/standing_team.h"
#include "raster/filters.h"
#include "restore/blocks/peers.h"
#include "restore/parameters.h"

namespace norv {

// Makes the working plane (f*w x f*h, an enlargement of the observed one, w x h) sharper while it stays consistent
// with the observed plane under the reduction of the kernel code. mask: the image's grown edge mask, empty when nothing
// was marked. An empty working plane is sized and cleared by the first update step. progress: may be null; advanced by
// PlaneWork() unless the plane becomes NaN. team: does the work; no bit of the plane depends on its size, nor on peers:
// each of these has its own rows of the working plane (RowRuns), before and behind, the rows of the observed one that
// ObservedRows() says, and the mask around its own. Throws as UpdateFilter, where an update step is taken.
void restore(matrix& working, const BitMask& mask, const matrix& observed, const RestoreParameters& parameters,
             Progress* progress, StandingTeam& team = StandingTeam::Alone(), Peers& peers = Peers::None());

// Rows above and below its own that a part of an enlarged plane is marked in, for edges to grow into it.
int32_t MarkingReach(const RestoreParameters& parameters);

// The rows of an observed plane that some blocks of the cut are made of. Throws as UpdateFilter.
Range ObservedRows(const RestoreParameters& parameters, const RowRuns& cut, Range blocks);

// The reduction that the update steps undo. Throws a message (const char*) for a kernel code without a filter.
FilterChoice UpdateFilter(const RestoreParameters& parameters);

// Units of progress that one plane takes: the inner steps and one more for every outer iteration.
int64_t PlaneWork(const RestoreParameters& parameters);

// Every pixel of a small pixel's f x f block moves away from it: x += (x - y) * amount. With a mask of the working
// plane's size, only the pixels set in it. Of some rows.
void EmphasiseDeviations(matrix& working, const matrix& observed, const BitMask& mask, int32_t f, float amount,
                         StandingTeam& team, Range rows = kAllRows);

}  // namespace norv
