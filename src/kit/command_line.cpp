// The only file that knows the command-line library, whose templates take long to compile: rows become its parsers.
#include "kit/command_line.h"

#include <CLI/CLI.hpp>
#include <filesystem>

#include "kit/failure.h"
#include "kit/formats/encoding.h"
#include "kit/guidance/config.h"
#include "kit/guidance/help.h"
#include "kit/guidance/manner.h"
#include "kit/guidance/usage.h"
#include "kit/pictures/image_file.h"
#include "platform/console.h"
#include "platform/paths.h"

namespace norv {
namespace {

template <typename Value>
CLI::Option& AddParser(CLI::App& parser, const Option& row, Value& target) {
  const std::string name = std::string(row.name) + (*row.aliases ? "," : "") + row.aliases;
  if constexpr (std::is_same_v<Value, bool>) {
    return *parser.add_flag(name, target);
  } else if constexpr (std::is_same_v<Value, Times>) {
    return *parser.add_flag(name, target.count);
  } else {
    CLI::Option& option = *parser.add_option(name, target);
    if constexpr (std::is_same_v<Value, std::vector<int32_t>>) option.delimiter(',');
    if (!row.TakesSeveral()) option.take_last();
    if (!row.HasPlace()) option.allow_extra_args(false);  // what is behind its value is no value of its own
    return option;
  }
}

// What --to says has to be a format; standard output, where the last place says so, has no name that would.
void RequireFormat(const Command& command) {
  const std::string *last = nullptr, *format = nullptr;
  for (const Option& row : command.options) {
    if (const auto several = std::get_if<std::vector<std::string>*>(&row.target); several && (*several)->size() > 1)
      last = &(*several)->back();
    if (!std::holds_alternative<std::string*>(row.target)) continue;
    if (row.HasPlace()) last = std::get<std::string*>(row.target);
    if (std::string_view(row.name) == "--to") format = std::get<std::string*>(row.target);
  }
  if (format && !format->empty())
    if (const std::string reason = WhyNoFormat(*format); !reason.empty()) throw std::runtime_error(reason);
  if (format && format->empty() && last && *last == "-")
    throw std::runtime_error("standard output has no name that says the format: add --to png, or another one");
}

// The file that the words name is read as the library reads TOML; what it says stands in words before theirs.
std::vector<std::string> WithConfig(const Command& command, const std::vector<std::string>& words,
                                    const std::vector<const Option*>& said) {
  std::string path;
  for (size_t i = 0; i < words.size(); ++i) {
    if (words[i] == "--config" && i + 1 < words.size()) path = words[i + 1];
    if (words[i].starts_with("--config=")) path = words[i].substr(words[i].find('=') + 1);
  }
  if (path.empty()) return words;
  try {
    std::vector<ConfigItem> items;
    for (const CLI::ConfigItem& item : CLI::ConfigTOML().from_file(path))
      if (item.name != "++" && item.name != "--")  // where a section begins and ends
        items.push_back({CLI::detail::join(item.parents, "."), item.name, item.inputs});
    std::vector<std::string> all = ConfigWords(command, items, said);
    all.insert(all.end(), words.begin(), words.end());
    RequireUsable(command, all);
    return all;
  } catch (const std::exception& error) {
    throw std::runtime_error(path + ": " + error.what());
  }
}

// Reads the words into the command's settings. They are looked at before (RequireUsable), so that no complaint of the
// library's own is ever to be seen.
void Read(const Command& command, const std::vector<std::string>& words) {
  CLI::App parser;
  for (const Option& row : command.options)
    if (!row.lastOfSeveral)
      std::visit([&](auto* target) { AddParser(parser, row, *target).required(row.HasPlace() && !row.mayBeLeftOut); },
                 row.target);
  try {
    const std::vector<std::string> all = WithConfig(command, words, RequireUsable(command, words));
    parser.parse(std::vector<std::string>(all.rbegin(), all.rend()));
    RequireFormat(command);
  } catch (const std::runtime_error& error) {
    throw WrongUsage(error.what(), command.name);
  }
}

std::optional<Command> FindCommand(const std::string& name) {
  for (const CommandRow& row : CommandTable())
    if (Command command = row.make(); command.name == name) return command;
  return {};
}

// A file, or what could only be the name of a picture.
bool IsPicture(const std::string& word) {
  std::error_code error;
  return std::filesystem::is_regular_file(ToNative(word), error) || HasPictureName(word) || HasImageName(word);
}

bool IsFolder(const std::string& word) {
  std::error_code error;
  return std::filesystem::is_directory(ToNative(word), error);
}

bool AsksForHelp(const std::string& word) { return word == "--help" || word == "-h"; }

std::optional<Command> Helped(const std::vector<std::string>& words) {
  if (words.empty()) {
    Say("%s", HelpOfAll().c_str());
    return {};
  }
  const std::optional<Command> command = FindCommand(words[0]);
  if (!command) RefuseCommand(words[0]);
  Say("%s", HelpOf(*command).c_str());
  return {};
}

// Behind a -- all words are names of files, which a ./ before them says, too.
std::vector<std::string> WithNamesApart(std::vector<std::string> words) {
  const auto dashes = std::ranges::find(words, "--");
  if (dashes == words.end()) return words;
  for (auto word = dashes + 1; word != words.end(); ++word)
    if (word->starts_with('-') && word->size() > 1) word->insert(0, "./");
  words.erase(dashes);
  return words;
}

}  // namespace

std::optional<Command> ReadCommandLine(const std::vector<std::string>& typed) {
  const std::vector<std::string> words = WithNamesApart(typed);
  RunManner() = Manner();
  RunManner().json = std::ranges::count(words, "--json") > 0;  // as far as it can be known of a line that fails
  if (words.empty()) throw WrongUsage("what is to be done? norvkit enlarge PICTURE OUT makes a picture larger");
  if (AsksForHelp(words[0]) || words[0] == "help") return Helped({words.begin() + 1, words.end()});
  if (words[0] == "--version") {
    Say("%s\n", NORV_VERSION);
    return {};
  }
  if (words[0].starts_with("-") && words[0].size() > 1)
    throw WrongUsage(words[0] + " stands behind a command or a picture: norvkit enlarge PICTURE OUT " + words[0]);
  std::optional<Command> command = FindCommand(words[0]);
  const bool alone = !command && IsPicture(words[0]);
  if (!command && IsFolder(words[0]))
    throw WrongUsage(words[0] + " is a folder; type: norvkit enlarge " + words[0] + " --out DIR", "enlarge");
  if (!command && !alone) RefuseCommand(words[0]);
  if (alone) command = PictureCommand();
  if (alone && words.size() > 1 && !words[1].starts_with("-"))
    throw WrongUsage("several pictures need a command: norvkit enlarge " + words[0] + " " + words[1], command->name);
  const std::vector<std::string> rest(words.begin() + !alone, words.end());
  if (std::ranges::any_of(rest, AsksForHelp)) return Helped({command->name});
  Read(*command, rest);
  return command;
}

}  // namespace norv
