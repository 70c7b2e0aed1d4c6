// Command lines read by the rows of the commands.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "kit/commands/command.h"

namespace norv {

// The command that the words behind the program's name ask for, its settings made; nothing when they asked for help or
// the version, which stands on standard output then. Throws WrongUsage.
std::optional<Command> ReadCommandLine(const std::vector<std::string>& words);

}  // namespace norv
