// The messages that frame every run.
#pragma once

#include <regex>
#include <string>

namespace norv::test {

inline const std::string kBanner = "\nBegin 64 bit Command Line Processing\nVersion 5.6";

// Whether the output is the banner, exactly this text, and the end report with any times.
inline bool IsReported(const std::string& output, const std::string& text) {
  static const std::regex report(R"(\n\d+\.\d\d secs, \d+\.\d\d mins\., \d+\.\d\d hrs\., \d+\.\d\d days\nDone!)");
  const std::string start = kBanner + text;
  return output.rfind(start, 0) == 0 && std::regex_match(output.substr(start.size()), report);
}

}  // namespace norv::test
