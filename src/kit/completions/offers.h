// What can stand at a place of a command line, as shells offer it: derived from the rows of the commands alone.
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "kit/commands/command.h"

namespace norv {

// What there is for one value.
struct Offer {
  enum class Kind {
    nothing,  // numbers, and names of one's own
    files,
    folders,
    words,
    asked,  // words that "norvkit completions WHAT" lists at the prompt: they change
  };
  Kind kind = Kind::nothing;
  std::vector<std::string> words;  // of kind asked one: WHAT
};
Offer OfferFor(const Option& row);

// "norvkit completions WHAT" with what lists there are at a prompt: networks and presets.
std::vector<std::string> AskedLists();
std::vector<std::string> AskedList(const std::string& what);

// Parts of a script one after another; words with something between.
std::string Script(std::initializer_list<std::string_view> parts);
std::string InLine(const std::vector<std::string>& words, std::string_view between = " ");

// One character in front of each of these in the text.
std::string Escaped(const std::string& text, const char* characters);

// The commands that people type, each with its rows.
std::vector<Command> OfferedCommands();

// Their names.
std::vector<std::string> OfferedNames();
std::vector<std::string> OptionNames(const Command& command);

// A script for each shell that completes the command lines of norvkit.
std::string BashCompletions();
std::string ZshCompletions();
std::string FishCompletions();

}  // namespace norv
