#include "kit/failure.h"

#include <cstdarg>
#include <cstdio>
#include <new>

#include "platform/console.h"

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

std::string FailureInWords() {
  try {
    throw;
  } catch (const SaidFailure&) {
    return LastComplaint();
  } catch (const Interrupted&) {
    return "interrupted";
  } catch (const char* message) {
    return message;
  } catch (const std::bad_alloc&) {
    return "out of memory";
  } catch (const std::exception& error) {
    return error.what();
  } catch (...) {
    return "something unknown went wrong";
  }
}

}  // namespace norv
