// Command lines looked at before they are read: what cannot be meant is refused in words that say what to type.
#pragma once

#include <string>
#include <vector>

#include "kit/commands/command.h"

namespace norv {

// Throws a WrongUsage where the words behind a command are none that its rows accept: unknown options, values that are
// missing or not of the kind, too few or too many words with a place. Returns the rows that were said.
std::vector<const Option*> RequireUsable(const Command& command, const std::vector<std::string>& words);

// The row of that name, or of one that it also goes by. Throws a WrongUsage where there is none.
const Option& RowNamed(const Command& command, const std::string& name);

// Whether a row says that it cannot stand beside the other one.
bool Excludes(const Option& row, const Option& other);

// Why a row does not accept this value: "--by takes a number from 1.01 to 64, not 70"; empty when it does.
std::string WhyNotValue(const Option& row, const std::string& text);

// For a first word that is no command: "there is no command enlrage; type: norvkit enlarge PICTURE OUT". Its `about` is
// the command that was meant.
[[noreturn]] void RefuseCommand(const std::string& word);

}  // namespace norv
