#include "support/messages.h"

#include <doctest/doctest.h>
#include <regex>

namespace norv::test {

bool IsReported(const std::string& output, const std::string& text) {
  static const std::regex report(R"(\n\d+\.\d\d secs, \d+\.\d\d mins\., \d+\.\d\d hrs\., \d+\.\d\d days\nDone!)");
  const std::string start = kBanner + text;
  return output.rfind(start, 0) == 0 && std::regex_match(output.substr(start.size()), report);
}

void CheckEnded(const Outcome& outcome, int exitCode, const std::string& complaint) {
  INFO(outcome.output);
  CHECK(outcome.exitCode == exitCode);
  CHECK(complaint.empty() == outcome.errors.empty());
  CHECK(Contains(outcome.errors, complaint));
}

void CheckReported(const Outcome& outcome, const std::string& text) {
  CheckEnded(outcome, 0);
  CHECK(IsReported(outcome.output, text));
}

}  // namespace norv::test
