// Which folder a bare file name means.
#pragma once

namespace norv {

enum class Folder {
  executable,  // beside the executable
  asGiven,     // the name is the path
};

}  // namespace norv
