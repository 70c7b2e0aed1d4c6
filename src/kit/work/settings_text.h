// A command's settings as words, in one form whatever was typed and wherever it came from: journals compare them,
// receipts hold them, reports print them as the command that does it again.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "kit/commands/command.h"

namespace norv {

// Names and values of all options whose value differs from the one beforehand, in the order of the rows; `untouched`
// are the same rows over settings that no command line has changed. Places and what is no setting of a result (Option's
// aside) are left out.
std::vector<std::string> SettingsWords(const Options& set, const Options& untouched);

// A line that a shell splits into these words again.
std::string LineOfWords(std::span<const std::string> words);
// The words of such a line: quotes '...', \ before any other sign.
std::vector<std::string> WordsOfLine(const std::string& line);

}  // namespace norv
