// A command of the companion as data: what it is called, its options as rows, and the work that it does once a command
// line has set them. One file a command; the table of all of them stands in commands.cpp.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <variant>
#include <vector>

namespace norv {

// What a row sets. A bool is a flag; a vector of numbers is one word with commas between, a vector of strings several
// words, Times how often a flag is given.
struct Times {
  int32_t count = 0;
};
using Target = std::variant<bool*, Times*, int32_t*, uint32_t*, uint64_t*, float*, double*, std::optional<double>*,
                            std::string*, std::vector<int32_t>*, std::vector<std::string>*>;

// What a row accepts beyond any text that its target can hold.
struct Between {
  double low, high;    // both included
  bool whole = false;  // of a target that could hold others
};
struct OneOf {
  std::string words;  // with commas between
};
struct BetweenOr {  // a number or a word, kept as text
  double low, high;
  std::string word;
};
struct Anything {};  // finite numbers only
using Check = std::variant<Anything, Between, OneOf, BetweenOr>;

// What a value is the name of, where its unit (FILE, DIR ...) does not say so; shells offer those that there are.
enum class Named { other, network, preset };

struct Option {
  const char* name;       // "--factor"; one that has to be given, by its place, is named in capitals: "PICTURE"
  Target target;          // its value beforehand is the default
  const char* unit = "";  // what stands for the value in the help: N, NAME, N,N ...; of flags empty
  Check check = Anything{};
  std::string help;
  const char* byDefault = "";  // in words, where a value left out means more than the target's default
  const char* aliases = "";    // older names, shown behind the help, with commas between
  const char* excludes = "";   // options that it cannot stand beside, with commas between
  const char* heading = "";    // that it stands under in the help, "Options" where empty
  bool aside = false;          // no setting of a result: where it goes, how the run goes about it, what is said
  bool mayBeLeftOut = false;   // of the last place
  bool lastOfSeveral = false;  // a place that the one before, which takes several, holds the word of
  Named named = Named::other;

  bool HasPlace() const { return name[0] != '-'; }
  bool TakesValue() const { return !std::holds_alternative<bool*>(target) && !std::holds_alternative<Times*>(target); }
  bool TakesSeveral() const { return std::holds_alternative<std::vector<std::string>*>(target); }
};

using Options = std::vector<Option>;

struct CommandText {
  const char* name;
  const char* purpose;
  const char* examples;    // a line each
  const char* notes = "";  // below the options
};

struct Command : CommandText {
  Options options;
  std::function<void()> run;
  bool shared = false;  // every rank runs it, and it shares the work out itself (ranks.h); else the first alone
};

// The rows and those that every command has.
Options WithMannerRows(Options rows);

// Settings is a plain struct of what the command line sets; rows point into it, run is called with it.
template <typename Settings>
Command MakeCommand(CommandText text, Options (*rows)(Settings&), void (*run)(const Settings&)) {
  const auto settings = std::make_shared<Settings>();
  return {text, WithMannerRows(rows(*settings)), [settings, run] { run(*settings); }};
}

// A command of the table, every time with settings of its own.
struct CommandRow {
  const char* heading;  // that it stands under in the help; empty: it is not for people to type
  Command (*make)();
};

std::span<const CommandRow> CommandTable();

bool IsCommand(const std::string& name);

// What a picture alone means, the command's name left out. No row of the table.
Command PictureCommand();

}  // namespace norv
