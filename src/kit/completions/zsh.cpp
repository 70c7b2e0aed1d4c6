#include <algorithm>

#include "kit/completions/offers.h"
#include "kit/guidance/text.h"

namespace norv {
namespace {

// As a word of the script.
std::string Quoted(const std::string& text) { return Script({"'", InLine(SplitAt('\'', text), "'\\''"), "'"}); }

std::string ActionFor(const Offer& offer) {
  const std::string words = InLine(offer.words);
  switch (offer.kind) {
    case Offer::Kind::nothing:
      return " ";
    case Offer::Kind::files:
      return "_files";
    case Offer::Kind::folders:
      return "_files -/";
    case Offer::Kind::words:
      return Script({"(", words, ")"});
    case Offer::Kind::asked:
      return Script({"_norvkit_names ", words});
  }
  return "";
}

// The row's own name and those of options that it cannot stand beside: of its list, and those that have it on theirs.
std::vector<std::string> ExcludedBy(const Command& command, const Option& row) {
  std::vector<std::string> names = SplitAt(',', row.excludes);
  names.push_back(row.name);
  for (const Option& other : command.options)
    if (std::ranges::count(SplitAt(',', other.excludes), row.name) > 0) names.push_back(other.name);
  return names;
}

// A line of _arguments.
std::string SpecOf(const Command& command, const Option& row) {
  const std::string action = ActionFor(OfferFor(row));
  const std::string value = Script({":", Escaped(row.HasPlace() ? row.name : row.unit, ":"), ":", action});
  if (row.HasPlace()) return Quoted(Script({row.TakesSeveral() ? "*" : row.mayBeLeftOut ? ":" : "", value}));
  const bool repeats = row.TakesSeveral() || std::holds_alternative<Times*>(row.target);
  const std::string before = repeats ? "*" : Script({"(", InLine(ExcludedBy(command, row)), ")"});
  return Quoted(Script({before, row.name, row.TakesValue() ? "=" : "", "[", Escaped(row.help, "[]\\"), "]",
                        row.TakesValue() ? value : ""}));
}

std::string CaseOf(const Command& command) {
  std::string lines = Script({"    (", command.name, ")\n      _arguments '(- *)--help[this help]'"});
  for (const Option& row : command.options)
    if (!row.lastOfSeveral) lines += Script({" \\\n        ", SpecOf(command, row)});
  return lines + " ;;\n";
}

constexpr char kStart[] = R"zsh(#compdef norvkit
# Completes command lines of norvkit in zsh; made by "norvkit completions zsh".
_norvkit_names() {
  local -a names
  names=(${(f)"$(_call_program names norvkit completions ${@[-1]} 2>/dev/null)"})
  compadd "${@[1,-2]}" -a names
}
_norvkit() {
  local command=enlarge
  local -a commands
  commands=(
)zsh";

constexpr char kFirst[] = R"(  )
  if ((CURRENT == 2)); then
    _describe -t commands command commands
    [[ $words[2] == -* ]] && compadd -- --help --version
    _files
    return
  fi
)";

}  // namespace

std::string ZshCompletions() {
  std::string commands, cases;
  for (const Command& command : OfferedCommands()) {
    commands += Script({"    ", Quoted(Script({command.name, ":", Escaped(command.purpose, ":")})), "\n"});
    cases += CaseOf(command);
  }
  return Script({kStart, commands, kFirst, "  if [[ $words[2] == (", InLine(OfferedNames(), "|"),
                 ") ]]; then\n    command=$words[2]\n    shift words\n    ((CURRENT--))\n  fi\n  case $command in\n",
                 cases, "  esac\n}\n_norvkit \"$@\"\n"});
}

}  // namespace norv
