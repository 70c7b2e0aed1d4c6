// The whole tool as a function.
#pragma once

#include <string>
#include <vector>

namespace norv {

// arguments[0] is the executable's name, [1] the mode, then the mode's parameters. Returns the exit code: 0 when a mode
// ran or aborted with its own message, 2 for a wrong command line or vector level, 1 for an exception that no mode
// handles (reason on standard error), 130 for a training that was interrupted and saved.
int RunTool(const std::vector<std::string>& arguments);

}  // namespace norv
