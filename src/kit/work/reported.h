// Pictures of a run in a page for people.
#pragma once

#include "kit/work/made.h"
#include "kit/work/picture_work.h"
#include "linear/matrix2.h"

namespace norv {

// RunWork() and, where one is wanted, the page behind it: also of what was made before something failed. Throws what
// RunWork() throws.
void RunReported(WorkOrder order);

// Throws where a page could not show this picture before and after.
void RequireShowable(const WorkOrder& order, const std::string& input, const std::string& output);

// A picture of the run that was made or has failed; map: Certifier::Map(). Where no page is wanted nothing.
void ReportPicture(const WorkOrder& order, const Made& made, const matrix& map);

}  // namespace norv
