// The messages that frame every run.
#pragma once

#include <string>

#include "support/process.h"

namespace norv::test {

inline const std::string kBanner = "\nBegin 64 bit Command Line Processing\nVersion 5.6";

// Whether the output is the banner, exactly this text, and the end report with any times.
bool IsReported(const std::string& output, const std::string& text);

// Checks how a run ended, and that it complained with these words among others: of nothing where there are none.
void CheckEnded(const Outcome& outcome, int exitCode, const std::string& complaint = "");

// Checks that a run ended well with such an output and without a warning.
void CheckReported(const Outcome& outcome, const std::string& text);

}  // namespace norv::test
