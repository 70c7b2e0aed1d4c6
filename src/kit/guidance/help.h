// What --help prints.
#pragma once

#include <string>

#include "kit/commands/command.h"

namespace norv {

// Of all commands, and of one. No line is longer than kHelpColumns.
std::string HelpOfAll();
std::string HelpOf(const Command& command);

// "norvkit enlarge PICTURE OUT".
std::string UsageOf(const Command& command);

}  // namespace norv
