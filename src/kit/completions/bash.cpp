#include <map>

#include "kit/completions/offers.h"

namespace norv {
namespace {

// What to do about a value of this offer, in the function of the script.
std::string ActionFor(const Offer& offer) {
  const std::string words = InLine(offer.words);
  switch (offer.kind) {
    case Offer::Kind::nothing:
      return "compopt +o default; return";
    case Offer::Kind::files:
      return "return";
    case Offer::Kind::folders:
      return "compopt +o default -o dirnames; return";
    case Offer::Kind::words:
      return Script({"words='", words, "'"});
    case Offer::Kind::asked:
      return Script({"words=$(\"${COMP_WORDS[0]}\" completions ", words, " 2>/dev/null)"});
  }
  return "";
}

// Of options that take one.
std::string ValuesCase() {
  std::map<std::string, std::vector<std::string>> options;  // of each action
  for (const Command& command : OfferedCommands())
    for (const Option& row : command.options)
      if (!row.HasPlace() && row.TakesValue())
        options[ActionFor(OfferFor(row))].push_back(Script({"'", command.name, " ", row.name, "'"}));
  std::string lines;
  for (const auto& [action, names] : options)
    lines += Script({"    ", InLine(names, "|"), ")\n      ", action, " ;;\n"});
  return lines;
}

std::string OptionsCase() {
  std::string lines;
  for (const Command& command : OfferedCommands())
    lines += Script({"      ", command.name, ") words='", InLine(OptionNames(command)), "' ;;\n"});
  return lines;
}

// What stands at a command's places, where that is not files.
std::string PlacesCase() {
  std::string lines;
  for (const Command& command : OfferedCommands())
    for (const Option& row : command.options)
      if (row.HasPlace() && OfferFor(row).kind == Offer::Kind::folders) {
        lines += Script({"      ", command.name, ") ", ActionFor(OfferFor(row)), " ;;\n"});
        break;
      }
  return lines;
}

// A value behind = is a word of its own there.
constexpr char kStart[] = R"(# Completes command lines of norvkit in bash; made by "norvkit completions bash".
_norvkit() {
  local current=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]} command=enlarge words=
  if [[ $current == '=' ]]; then
    current=
  elif [[ $before == '=' ]]; then
    before=${COMP_WORDS[COMP_CWORD - 2]}
  fi
)";

// Names are never expanded as a shell would.
constexpr char kEnd[] = R"(  local - word IFS=$' \t\n'
  set -f
  for word in $words; do
    [[ $word == "$current"* ]] && COMPREPLY+=("$word")
  done
}
complete -o default -F _norvkit norvkit
)";

}  // namespace

std::string BashCompletions() {
  const std::vector<std::string> names = OfferedNames();
  return Script({kStart, "  case ${COMP_WORDS[1]} in\n    ", InLine(names, "|"),
                 ") command=${COMP_WORDS[1]} ;;\n  esac\n  case \"$command $before\" in\n", ValuesCase(),
                 "    *)\n      if ((COMP_CWORD == 1)); then\n        words='", InLine(names),
                 " --help --version'\n      elif [[ $current == -* ]]; then case $command in\n", OptionsCase(),
                 "      esac; else case $command in\n", PlacesCase(), "      *) return ;;\n      esac; fi ;;\n  esac\n",
                 kEnd});
}

}  // namespace norv
