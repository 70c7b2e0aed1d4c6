// Settings from a file as words of the command line.
#pragma once

#include <string>
#include <vector>

#include "kit/commands/command.h"

namespace norv {

// KEY = VALUE, or KEY = [VALUE, VALUE], below [SECTION] or above all sections.
struct ConfigItem {
  std::string section, key;
  std::vector<std::string> values;
};

// What the items say to the command beyond the rows that the command line has said itself, which win, as do those that
// exclude it. Items above all sections are for every command, others for the one that their section names. Throws a
// WrongUsage for a section that is no command and a key that is no option of it.
std::vector<std::string> ConfigWords(const Command& command, const std::vector<ConfigItem>& items,
                                     const std::vector<const Option*>& said);

}  // namespace norv
