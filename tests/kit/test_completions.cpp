// What shells offer while a command line is typed: all that the rows say, and nothing else.
#include <algorithm>
#include <doctest/doctest.h>

#include "kit/completions/offers.h"
#include "support/kit.h"

using namespace norv;
using test::Contains;
using test::Kit;

TEST_CASE("every script knows every option of every command, and help of none that is hidden") {
  const std::string bash = BashCompletions(), zsh = ZshCompletions(), fish = FishCompletions();
  for (const Command& command : OfferedCommands())
    for (const Option& row : command.options) {
      CAPTURE(std::string(command.name) + " " + row.name);
      if (row.HasPlace()) continue;
      const std::string value = row.TakesValue() ? "=" : "";
      CHECK(Contains(bash, std::string(" ") + row.name));
      CHECK(Contains(zsh, std::string(row.name) + value + "["));
      CHECK(Contains(fish, std::string("__norvkit_is ") + command.name + "' -l " + (row.name + 2) + " "));
    }
  CHECK_FALSE(std::ranges::count(OfferedNames(), "completions"));
  CHECK_FALSE(Contains(Kit({"--help"}).output, "completions"));
}

TEST_CASE("values are offered by what their row takes") {
  using Kind = Offer::Kind;
  struct Case {
    const char *command, *option;
    Kind kind;
    std::vector<std::string> words;
  };
  for (const Case& row :
       {Case{"enlarge", "--model", Kind::asked, {"networks"}}, Case{"restore", "--preset", Kind::asked, {"presets"}},
        Case{"restore", "--deblur", Kind::words, {"auto"}},
        Case{"new-net", "--start", Kind::words, {"random", "cubic", "lanczos"}},
        Case{"enlarge", "--out", Kind::folders, {}}, Case{"verify", "--net", Kind::files, {}},
        Case{"train", "FOLDER", Kind::folders, {}}, Case{"compare", "A", Kind::files, {}},
        Case{"rank", "--keep", Kind::nothing, {}}, Case{"shrink", "--by", Kind::nothing, {}}})
    for (const Command& command : OfferedCommands())
      for (const Option& option : command.options)
        if (command.name == std::string(row.command) && option.name == std::string(row.option)) {
          CAPTURE(row.option);
          CHECK(OfferFor(option).kind == row.kind);
          CHECK(OfferFor(option).words == row.words);
        }
  CHECK(Contains(Kit({"completions", "presets"}).output, "compressed\n"));
  CHECK(Kit({"completions", "tcsh"}).exitCode == 2);
}
