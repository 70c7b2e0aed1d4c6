// Names of results that are put together from their pictures' names.
#pragma once

#include <string>

namespace norv {

struct WorkPlan;

// The pattern with its fields filled in: {stem} and {ext} (with its point) of the name, {factor}, {width}, {height} and
// {method} of the result.
std::string ResultName(const std::string& pattern, const std::string& stem, const std::string& ext,
                       const WorkPlan& plan);

// Why the pattern is none: a field that is unknown, a brace that does not end, a folder in it; empty when it is one.
std::string WhyNoPattern(const std::string& pattern);

// Whether a field is in it whose value only the picture says; knowsFactor: that one is known.
bool NeedsPlan(const std::string& pattern, bool knowsFactor);

}  // namespace norv
