#include "kit/completions/offers.h"

namespace norv {
namespace {

std::string Quoted(const std::string& text) { return Script({"'", Escaped(text, "\\'"), "'"}); }

// Behind the option's name: -x takes a value that is no file, -r one that may be.
std::string ActionFor(const Offer& offer) {
  const std::string words = InLine(offer.words);
  switch (offer.kind) {
    case Offer::Kind::nothing:
      return " -x";
    case Offer::Kind::files:
      return " -r";
    case Offer::Kind::folders:
      return " -xa '(__fish_complete_directories (commandline -ct))'";
    case Offer::Kind::words:
      return Script({" -xa '", words, "'"});
    case Offer::Kind::asked:
      return Script({" -xa '(norvkit completions ", words, " 2>/dev/null)'"});
  }
  return "";
}

std::string LineOf(const Command& command, const Option& row) {
  const std::string start = Script({"complete -c norvkit -n '__norvkit_is ", command.name, "'"});
  const Offer offer = OfferFor(row);
  if (!row.HasPlace())
    return Script(
        {start, " -l ", row.name + 2, row.TakesValue() ? ActionFor(offer) : "", " -d ", Quoted(row.help), "\n"});
  return offer.kind == Offer::Kind::folders ? Script({start, ActionFor(offer), "\n"}) : "";
}

constexpr char kStart[] = R"(# Completes command lines of norvkit in fish; made by "norvkit completions fish".
function __norvkit_is
    set -l words (commandline -opc)
    test (count $words) -gt 1; or return 1
    set -l command enlarge
    contains -- $words[2] )";

constexpr char kMiddle[] = R"(; and set command $words[2]
    test $command = $argv[1]
end
function __norvkit_first
    test (count (commandline -opc)) -eq 1
end
complete -c norvkit -n __norvkit_first -l version -d 'the version of norvkit'
complete -c norvkit -l help -d 'this help'
)";

}  // namespace

std::string FishCompletions() {
  std::string lines;
  for (const Command& command : OfferedCommands()) {
    lines +=
        Script({"complete -c norvkit -n __norvkit_first -a ", command.name, " -d ", Quoted(command.purpose), "\n"});
    for (const Option& row : command.options)
      if (!row.lastOfSeveral) lines += LineOf(command, row);
  }
  return Script({kStart, InLine(OfferedNames()), kMiddle, lines});
}

}  // namespace norv
