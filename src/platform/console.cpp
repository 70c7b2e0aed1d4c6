#include "platform/console.h"

#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>

namespace norv {
namespace {

const char* programName = "norv";

int outputError = 0;  // the first one of standard output

void FlushOutput() {
  if (std::fflush(stdout) != 0 && outputError == 0) outputError = errno;
}

void PrintLine(const char* prefix, const char* format, va_list arguments) {
  FlushOutput();
  std::fprintf(stderr, "%s: %s", programName, prefix);
  std::vfprintf(stderr, format, arguments);
  std::fputc('\n', stderr);
  std::fflush(stderr);
}

}  // namespace

void NameProgram(const char* name) { programName = name; }

void Say(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  std::vprintf(format, arguments);
  va_end(arguments);
  FlushOutput();
}

bool SendOutput(const void* bytes, size_t size) {
  const bool taken = std::fwrite(bytes, 1, size, stdout) == size;
  if (!taken && outputError == 0) outputError = errno;
  FlushOutput();
  return taken && outputError == 0;
}

std::string WhyOutputIsLost(bool& gone) {
  FlushOutput();
  gone = outputError == EPIPE;
  if (outputError != 0) return std::strerror(outputError);
  return std::ferror(stdout) ? "it cannot be written" : "";
}

void Warn(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  PrintLine("warning: ", format, arguments);
  va_end(arguments);
}

void Complain(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  PrintLine("", format, arguments);
  va_end(arguments);
}

double Printable(double value) { return std::isnan(value) ? std::abs(value) : value; }

}  // namespace norv
