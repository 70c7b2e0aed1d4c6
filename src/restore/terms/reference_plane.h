// The plane that the last iterations of the Lorentzian regulariser take their isotropic weights from.
#pragma once

#include <cstdint>

#include "linear/matrix2.h"
#include "platform/threads/standing_team.h"
#include "restore/blocks/row_runs.h"

namespace norv {

// The initial enlargement of the observed plane by f, computed in double precision, negated, then rounded.
// rows: of the result, that are made.
matrix ReferencePlane(const matrix& observed, int32_t f, StandingTeam& team, Range rows = kAllRows);

}  // namespace norv
