// How the companion's commands give up.
#pragma once

#include <stdexcept>
#include <string>
#include <utility>

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
  // about: the command whose help says more; empty: the one that runs.
  explicit WrongUsage(const std::string& reason, std::string about = "")
      : std::runtime_error(reason), about_(std::move(about)) {}
  const std::string& About() const { return about_; }

 private:
  std::string about_;
};

// Ends the command with exit code 1 where the reason is on standard error already.
struct SaidFailure {};

// The same where many were tried: what failed is said, for people and programs.
struct SomeFailed {};

// The reason of what is being caught, for a line on standard error; of a SaidFailure what was said last.
std::string FailureInWords();

// Ends the command with exit code 130 after it was stopped; what it has is kept and said already.
struct Interrupted {};

}  // namespace norv
