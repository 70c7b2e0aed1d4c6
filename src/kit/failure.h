// How the companion's commands give up.
#pragma once

#include <stdexcept>
#include <string>

namespace norv {

// Ends the command with exit code 1 and this reason on standard error.
class Failure : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Throws a Failure whose text is put together as by printf.
[[noreturn]] [[gnu::format(gnu_printf, 1, 2)]] void Fail(const char* format, ...);

// Ends the command with exit code 2, this reason and where help is to be had on standard error.
class WrongUsage : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Ends the command with exit code 1 where the reason is on standard error already.
struct SaidFailure {};

// Ends the command with exit code 130 after it was stopped; what it has is kept and said already.
struct Interrupted {};

}  // namespace norv
