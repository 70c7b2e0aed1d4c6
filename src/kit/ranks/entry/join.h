// How a process finds those that were started with it: norvkit is linked with alone.cpp, norvkit-mpi with mpi.cpp.
#pragma once

#include <string>
#include <vector>

namespace norv {

// The whole program: joins the others, runs the command line, leaves them. Returns the exit code.
int RunInWorld(const std::vector<std::string>& arguments);

}  // namespace norv
