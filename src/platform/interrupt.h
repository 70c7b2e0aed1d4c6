// Stopping a long run by Ctrl-C or a request to terminate: the first one is a wish, the second one an order.
#pragma once

#include <string>

namespace norv {

// While it lives, the first interrupt (SIGINT or SIGTERM; on Windows Ctrl-C and the like) is only noted. The second one
// ends the process at once as it would have without this. One at a time.
class InterruptWatch {
 public:
  InterruptWatch();
  ~InterruptWatch();
  InterruptWatch(const InterruptWatch&) = delete;
  InterruptWatch& operator=(const InterruptWatch&) = delete;

  static bool Requested();
};

// Names the one scratch file that an order to end at once still removes; empty: none.
void RemoveWhenKilled(const std::string& path);

}  // namespace norv
