#include "platform/assert.h"

#include <cstdlib>
#include <string_view>

#include "platform/console.h"

namespace norv {

void AssertionFailed(const char* condition, const char* file, int line) {
  const std::string_view path = file;
  const size_t separator = path.find_last_of("/\\");
  const char* name = separator == std::string_view::npos ? file : file + separator + 1;
  Complain("assertion failed: %s, file %s, line %d", condition, name, line);
  std::abort();
}

}  // namespace norv
