// What every report has, whatever is shown: its style and its script.
#pragma once

namespace norv {

extern const char kPageStyle[];
// Moves the line between before and after, changes the size, chooses the part that is shown.
extern const char kPageScript[];

}  // namespace norv
