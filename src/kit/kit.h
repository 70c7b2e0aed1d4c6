// The whole companion as a function.
#pragma once

#include <string>
#include <vector>

namespace norv {

// arguments[0] is the program's name, then the command and its arguments. Returns the exit code: 0 good, 1 failed with
// the reason on standard error, 2 for a wrong command line.
int RunKit(const std::vector<std::string>& arguments);

}  // namespace norv
