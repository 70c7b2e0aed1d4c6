#include "platform/console.h"

#include <cmath>
#include <cstdio>

namespace norv {
namespace {

const char* programName = "norv";

void PrintLine(const char* prefix, const char* format, va_list arguments) {
  std::fflush(stdout);
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
  std::fflush(stdout);
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
