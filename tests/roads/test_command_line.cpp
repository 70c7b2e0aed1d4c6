// The tool as a process: its messages, its exit codes, what it makes of odd command lines.
#ifndef _WIN32

#include <doctest/doctest.h>

#include "platform/team.h"
#include "support/messages.h"
#include "support/process.h"
#include "support/scratch.h"

using namespace norv::test;

namespace {

std::vector<std::string> RestoreWords(const std::string& mode) {
  std::vector<std::string> words{mode};
  for (int position = 2; position <= 22; ++position) words.push_back("1");
  return words;
}

bool HasOnly(const ScratchFolder& folder, size_t entries) {
  return static_cast<size_t>(std::distance(std::filesystem::directory_iterator(folder.Path()), {})) == entries;
}

}  // namespace

TEST_CASE("a mode that does not exist runs nothing but the end report") {
  const auto check = [](const std::vector<std::string>& words, const std::string& mode) {
    const Outcome outcome = Run({.arguments = words});
    CHECK(outcome.exitCode == 0);
    CHECK(outcome.errors == "");
    CHECK(IsReported(outcome.output, "\nMode = " + mode));
  };
  check({"16"}, "16");
  check({" +99x"}, "99");
  check({"99999999999"}, "2147483647");
  check(RestoreWords("-1"), "-1");
}

TEST_CASE("too few arguments: usage on standard error, exit code 2, no file touched") {
  const ScratchFolder folder;
  const std::vector<std::vector<std::string>> tooFew = {
      {},
      {"10", "0", "1"},
      {"-1"},
      {"word"},
      {"9", "1", "2", "3", "4", "5", "6", "7", "8"},
      {"6", "1", "2", "3", "4", "5", "6", "7", "x.fdib"},
      {"7", "1", "2", "3", "4", "5", "6", "7", "8", "9", "x.fdib"},
      {"11", "0", "1", "8", "4"},
      {"5",  "1",  "2",  "3",  "4",  "5",  "6",  "7",  "8",  "9", "10",
       "11", "12", "13", "14", "15", "16", "17", "18", "19", "20"}};
  for (const auto& words : tooFew) {
    const Outcome outcome = Run({.arguments = words, .environment = {"NORV_DIR=" + folder.Path()}});
    CHECK(outcome.exitCode == 2);
    CHECK(outcome.output == kBanner);
    CHECK(outcome.errors.find("usage: norv ") != std::string::npos);
    CHECK(HasOnly(folder, 0));
  }
}

TEST_CASE("a vector level that is unknown is refused before anything is done") {
  const ScratchFolder folder;
  const Outcome outcome = Run({.arguments = {"15"}, .environment = {"NORV_DIR=" + folder.Path(), "NORV_SIMD=mmx"}});
  CHECK(outcome.exitCode == 2);
  CHECK(outcome.output == kBanner);
  CHECK(outcome.errors.find("mmx") != std::string::npos);
}

TEST_CASE("modes 14 and 15 say that a series has ended; the end of the input counts as three keys") {
  for (const std::string input : {"", "k", "keys"}) {
    const Outcome series = Run({.arguments = {"14"}, .input = input}), single = Run({.arguments = {"15", "more"}});
    CHECK(series.exitCode == 0);
    CHECK(series.output == kBanner + "\nMode = 14\n\n\nDone!\nPress any key 3 times to exit.");
    CHECK(single.output == kBanner + "\nMode = 15\nDone!\nPress any key 3 times to exit.");
    CHECK(series.errors + single.errors == "");
  }
}

TEST_CASE("modes say what they were asked for before they do it") {
  const ScratchFolder folder;
  const auto said = [&](std::vector<std::string> words) {
    const std::string number = words[0];
    const std::string output = Run({.arguments = words, .environment = {"NORV_DIR=" + folder.Path()}}).output;
    const std::string start = kBanner + "\nMode = " + number;
    REQUIRE(output.rfind(start, 0) == 0);
    return output.substr(start.size());
  };
  std::vector<std::string> bands = RestoreWords("1");
  bands.back() = "4096";
  const std::string processors = std::to_string(norv::ProcessorCount());
  CHECK(said(bands).rfind(
            "\nNumber of threads changed from 4096 to " + processors + " because it is the maximum for your CPU.", 0) ==
        0);
  bands.back() = "0";
  CHECK(said(bands).find("changed") == std::string::npos);
  CHECK(said({"9", "10", "0.5", "1e-3", "2", "-1", "nan", "x", "3", "7"})
            .rfind("\niters = 10, nu0 = 0.500000, nuf = 0.001000, CostSelection = 2, Alternate = -1,\n"
                   "Clip = nan, Momentum = 0.000000, Number of Threads = 3\nSoundNotification = 7\n",
                   0) == 0);
  CHECK(said({"11", "2", "7", "8", "4", "-3"}).rfind("\n3 of 7\nShrinkOrder = -3", 0) == 0);
  CHECK(said({"12"}).rfind("\nShuffling Data", 0) == 0);
}

#endif
