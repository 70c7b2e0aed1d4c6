#include "platform/console.h"

#include <atomic>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>

#include "platform/native/text.h"

namespace norv {
namespace {

const char* programName = "norv";

std::atomic<int> outputError{0};  // the first one of standard output

std::atomic<bool> keptQuiet{false};

std::atomic<WordsTaker> wordsTaker{nullptr};

thread_local std::string lastComplaint;

std::string Formatted(const char* format, va_list arguments) {
  va_list again;
  va_copy(again, arguments);
  std::string text(static_cast<size_t>(std::vsnprintf(nullptr, 0, format, again)), 0);
  va_end(again);
  std::vsnprintf(text.data(), text.size() + 1, format, arguments);
  return text;
}

// As it stands, or in the console's own code.
bool Put(const std::string& text, FILE* stream) {
  return ShowInConsole(text, stream) || std::fwrite(text.data(), 1, text.size(), stream) == text.size();
}

void FlushOutput() {
  if (std::fflush(stdout) != 0 && outputError == 0) outputError = errno;
}

}  // namespace

void NameProgram(const char* name) { programName = name; }

// In one call, so that lines of several threads stay whole.
void PrintLine(const std::string& line) {
  if (const WordsTaker taker = wordsTaker) return taker(false, line);
  FlushOutput();
  Put(line + "\n", stderr);
  std::fflush(stderr);
}

void HandWordsTo(WordsTaker taker) { wordsTaker = taker; }

void Say(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  if (const WordsTaker taker = wordsTaker)
    taker(true, Formatted(format, arguments));
  else if (!Put(Formatted(format, arguments), stdout) && outputError == 0)
    outputError = errno;
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

void KeepQuiet(bool quiet) { keptQuiet = quiet; }

void Tell(const char* format, ...) {
  if (keptQuiet) return;
  va_list arguments;
  va_start(arguments, format);
  PrintLine(Formatted(format, arguments));
  va_end(arguments);
}

void Warn(const char* format, ...) {
  if (keptQuiet) return;
  va_list arguments;
  va_start(arguments, format);
  PrintLine(std::string(programName) + ": warning: " + Formatted(format, arguments));
  va_end(arguments);
}

void Complain(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  lastComplaint = Formatted(format, arguments);
  va_end(arguments);
  PrintLine(std::string(programName) + ": " + lastComplaint);
}

std::string LastComplaint() { return lastComplaint; }

bool IsQuiet() { return keptQuiet; }

double Printable(double value) { return std::isnan(value) ? std::abs(value) : value; }

}  // namespace norv
