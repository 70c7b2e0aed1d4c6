#include "kit/failure.h"

#include <cstdarg>
#include <cstdio>

namespace norv {

void Fail(const char* format, ...) {
  va_list arguments, again;
  va_start(arguments, format);
  va_copy(again, arguments);
  std::string text(std::vsnprintf(nullptr, 0, format, arguments), '\0');
  va_end(arguments);
  std::vsnprintf(text.data(), text.size() + 1, format, again);
  va_end(again);
  throw Failure(text);
}

}  // namespace norv
