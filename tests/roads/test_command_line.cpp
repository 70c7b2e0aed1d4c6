// The tool as a process: its messages, its exit codes, what it makes of odd command lines.
#include "platform/team.h"
#include "simd/levels.h"
#include "support/process.h"
#include "support/test.h"

// The words of a restoration but for the first and the last.
static const std::string kRestoration = " 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 ";

TEST_CASE("a mode that does not exist runs nothing but the end report") {
  for (const auto& [line, mode] : {std::pair{"16", "16"}, {"+99x", "99"}, {"99999999999", "2147483647"}})
    CheckReported(Run({.arguments = Words(line)}), std::string("\nMode = ") + mode);
  CheckReported(Run({.arguments = Words("-1" + kRestoration + "1")}), "\nMode = -1");
}

TEST_CASE("too few arguments or an unknown vector level: exit code 2, the reason on standard error, no file touched") {
  const ScratchFolder folder;
  for (const std::string& line :
       std::vector<std::string>{"", "10 0 1", "-1", "word", "9 1 2 3 4 5 6 7 8", "6 1 2 3 4 5 6 7 x.fdib",
                                "7 1 2 3 4 5 6 7 8 9 x.fdib", "11 0 1 8 4", "5" + kRestoration, "14", "15"}) {
    Command command = NorvIn(folder, line);
    // No level at all, and the floor of the other machines.
    const std::string floor = NameOf(kLevels[0]), other = floor == "neon" ? "sse2" : "neon";
    const std::string level = line == "14" ? other : line == "15" ? "mmx" : "";
    command.environment.push_back("NORV_SIMD=" + level);
    const Outcome outcome = Run(command);
    CheckEnded(outcome, 2, level.empty() ? "usage: norv " : level + ": not one of " + floor);
    CHECK(outcome.output == kBanner);
    CHECK(fs::is_empty(folder.Path()));
  }
}

TEST_CASE("modes 14 and 15 say that a series has ended; the end of the input counts as three keys") {
  for (const std::string input : {"", "k", "keys"}) {
    const Outcome series = Run({.arguments = {"14"}, .input = input}), single = Run({.arguments = {"15", "more"}});
    CheckEnded(series, 0);
    CHECK(series.output == kBanner + "\nMode = 14\n\n\nDone!\nPress any key 3 times to exit.");
    CHECK(single.output == kBanner + "\nMode = 15\nDone!\nPress any key 3 times to exit.");
    CheckEnded(single, 0);
  }
}
