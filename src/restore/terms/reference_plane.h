// The plane that the last iterations of the Lorentzian regulariser take their isotropic weights from.
#pragma once

#include <cstdint>

#include "linear/matrix2.h"
#include "platform/threads/standing_team.h"

namespace norv {

// The initial enlargement of the observed plane by f, computed in double precision, negated, then rounded.
matrix ReferencePlane(const matrix& observed, int32_t f, StandingTeam& team);

}  // namespace norv
