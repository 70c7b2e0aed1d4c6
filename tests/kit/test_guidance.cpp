// Command lines that cannot be meant, the words that say what to type, and the help.
#include <algorithm>
#include <doctest/doctest.h>
#include <sstream>

#include "kit/commands/command.h"
#include "kit/guidance/text.h"
#include "kit/guidance/usage.h"
#include "kit/pictures/image_file.h"
#include "kit/pictures/picture.h"
#include "kit/pictures/test_card.h"
#include "support/kit.h"

using namespace norv;
using test::Contains;
using test::Kit;
using test::KitIn;

TEST_CASE("what cannot be meant is refused in words that say what to type") {
  test::ScratchFolder folder;
  SaveImage(folder / "a.png", AllRows(DrawTestCard(60, 50)), {});
  struct Line {
    const char *words, *reason, *help;
  };
  for (const Line& line :
       {Line{"", "norvkit enlarge PICTURE OUT", "norvkit --help"},
        Line{"upscale a.png b.png", "type: norvkit enlarge PICTURE OUT", "norvkit enlarge --help"},
        Line{"resize", "type: norvkit enlarge PICTURE OUT", "norvkit enlarge --help"},
        Line{"enlrage a.png b.png", "type: norvkit enlarge PICTURE OUT", "norvkit enlarge --help"},
        Line{"save a.png b.png", "type: norvkit convert PICTURE OUT", "norvkit convert --help"},
        Line{"sharpen", "type: norvkit restore PICTURE OUT", "norvkit restore --help"},
        Line{"infos a.png", "type: norvkit info FILE...", "norvkit info --help"},
        Line{"no-such-thing", "nor a picture of that name", "norvkit --help"},
        Line{". --quick", ". is a folder", "norvkit enlarge --help"},
        Line{"help no-such-thing", "there is no command no-such-thing", "norvkit --help"},
        Line{"--by 3 a.png", "norvkit enlarge PICTURE OUT --by", "norvkit --help"},
        Line{"a.png b.png", "norvkit enlarge a.png b.png", "norvkit enlarge --help"},
        Line{"a.png --facter 2", "did you mean --factor?", "norvkit enlarge --help"},
        Line{"enlarge a.png b.png --quikc", "did you mean --quick?", "norvkit enlarge --help"},
        Line{"enlarge a.png", "OUT is missing: norvkit enlarge PICTURE OUT", "norvkit enlarge --help"},
        Line{"compare a.png", "B is missing: norvkit compare A B", "norvkit compare --help"},
        Line{"enlarge a.png b.png c.png", "enlarge a.png b.png c.png --out DIR", "norvkit enlarge --help"},
        Line{"enlarge a.png b.png --by", "--by needs a value: --by X", "norvkit enlarge --help"},
        Line{"enlarge a.png b.png --quick=2", "--quick takes no value", "norvkit enlarge --help"},
        Line{"enlarge a.png b.png --method bicubic", "nearest, cubic, lanczos, net, both or restore, not bicubic",
             "enlarge --help"},
        Line{"enlarge a.png b.png --average --quick", "exclude each other", "norvkit enlarge --help"},
        Line{"enlarge a.png b.png --method lanczos --quick", "does nothing with --method lanczos", "enlarge --help"},
        Line{"enlarge a.png b.png --method cubic --net n.net", "does nothing with --method cubic", "enlarge --help"},
        Line{"enlarge a.png b.png --method net --preset drawn", "does nothing with --method net", "enlarge --help"},
        Line{"enlarge a.png b.png --quick --lambda-cross 1 --method net", "--lambda-cross does nothing",
             "enlarge --help"},
        Line{"enlarge a.png b.png --by 2 --width 90", "--by and --width", "enlarge --help"},
        Line{"shrink a.png b.png --by 2.5 --order -1", "--filter goes with whole factors", "norvkit shrink --help"}}) {
    const test::Outcome outcome = KitIn(folder, line.words);
    CAPTURE(outcome.errors);
    CHECK(outcome.exitCode == 2);
    CHECK(outcome.errors.starts_with("norvkit: "));
    CHECK(Contains(outcome.errors, line.reason));
    CHECK(Contains(outcome.errors, line.help));
    CHECK(outcome.output == "");
    CHECK_FALSE(std::filesystem::exists(folder / "b.png"));
  }
}

TEST_CASE("every number option of every command takes finite numbers of its range and kind only") {
  for (const CommandRow& row : CommandTable()) {
    const Command command = row.make();
    for (const Option& option : command.options) {
      CAPTURE(std::string(command.name) + " " + option.name);
      const bool words = std::holds_alternative<std::string*>(option.target) || option.TakesSeveral();
      if (!option.TakesValue() || (words && !std::holds_alternative<OneOf>(option.check))) continue;
      for (const char* absurd : {"nan", "-nan", "inf", "-inf", "1e308", "-1e308", "99999999999999999999999", "x", "1x"})
        CHECK(Contains(WhyNotValue(option, absurd), absurd));
      if (std::holds_alternative<Anything>(option.check)) continue;
      const std::string* text = std::get_if<OneOf>(&option.check) ? &std::get<OneOf>(option.check).words : nullptr;
      CHECK(WhyNotValue(option, text ? SplitAt(',', *text)[0]
                                     : std::to_string(int(std::get<Between>(option.check).low) + 1)) == "");
    }
  }
  double by = 0;
  int32_t count = 0;
  const Option real{.name = "--by", .target = &by, .check = Between{1.01, 64}, .help = ""};
  const Option whole{.name = "--threads", .target = &count, .check = Between{1, 1024}, .help = ""};
  for (const char* good : {"1.01", "64", "2e0"}) CHECK(WhyNotValue(real, good) == "");
  for (const char* bad : {"1.009", "64.1", "", "0x10", "2 "}) CHECK(WhyNotValue(real, bad) != "");
  for (const char* bad : {"0", "1025", "1.5", "2.0"}) CHECK(WhyNotValue(whole, bad) != "");
  CHECK(WhyNotValue(whole, "1024") == "");
  CHECK(WhyNotValue(real, "70") == "--by takes a number from 1.01 to 64, not 70");
}

TEST_CASE("help is there in every way to ask for it, within its columns, in people's words") {
  CHECK(Kit({"help"}).output == Kit({"--help"}).output);
  CHECK(Contains(Kit({"--help"}).output, "130 interrupted"));
  std::vector<std::string> texts = {Kit({"help"}).output};
  for (const CommandRow& row : CommandTable()) {
    const std::string name = row.make().name;
    const test::Outcome help = Kit({"help", name});
    CHECK((help.exitCode == 0 && help.errors == ""));
    CHECK(help.output == Kit({name, "--help"}).output);
    texts.push_back(help.output);
  }
  for (const std::string& text : texts) {
    std::stringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
      CAPTURE(line);
      CHECK(line.size() <= kHelpColumns);
    }
    for (const char* raw : {" INT", " TEXT", " FLOAT", " UINT", "REQUIRED", "OPTIONS"})
      CHECK_FALSE(Contains(text, raw));
  }
}

TEST_CASE("a picture alone is enlarged beside itself, never over anything") {
  test::ScratchFolder folder;
  std::filesystem::create_directory(folder / "my pictures");
  SaveImage(folder / "my pictures/a b.jpg", AllRows(DrawTestCard(60, 50)), {});
  const auto kit = [&](std::vector<std::string> more) {
    more.insert(more.begin(), folder / "my pictures/a b.jpg");
    return Kit(more);
  };
  const test::Outcome first = kit({});
  CHECK((first.exitCode == 0 && Contains(first.errors, "x2, network x2-48-best, ")));
  const std::string made = test::ReadBytes(folder / "my pictures/a b_2x.png");
  CHECK(OpenImage(folder / "my pictures/a b_2x.png").shape.width == 120);
  test::WriteBytes(folder / "my pictures/a b_2x.png", "somebody's own");
  const test::Outcome again = kit({"--threads", "1"});
  CHECK((again.exitCode == 1 && Contains(again.errors, "a b_2x.png is there already")));
  CHECK(test::ReadBytes(folder / "my pictures/a b_2x.png") == "somebody's own");
  CHECK(kit({"--overwrite", "--threads", "3"}).exitCode == 0);
  CHECK((test::ReadBytes(folder / "my pictures/a b_2x.png") == made));
  CHECK(kit({"--by", "1.5", "--quick"}).exitCode == 0);
  CHECK(OpenImage(folder / "my pictures/a b_1.5x.png").shape.width == 90);
  CHECK(kit({"--longest", "100", "--method", "nearest"}).exitCode == 0);
  CHECK(OpenImage(folder / "my pictures/a b_100x83.png").shape.height == 83);
  CHECK(Kit({folder / "missing.jpg"}).exitCode == 1);
}

TEST_CASE("behind -- every word is a name, even one that begins as options do") {
  test::ScratchFolder folder;
  REQUIRE(KitIn(folder, "testcard --size 60x50 -- -a.png").exitCode == 0);
  CHECK(KitIn(folder, "shrink --by 2 -- -a.png --by.png").exitCode == 0);
  CHECK(OpenImage(folder / "--by.png").shape.width == 30);
  CHECK(KitIn(folder, "-- -a.png").exitCode == 0);
  CHECK(OpenImage(folder / "-a_2x.png").shape.width == 120);
  CHECK(KitIn(folder, "shrink -a.png b.png --by 2").exitCode == 2);
}

TEST_CASE("words are known again although they are misspelt") {
  const std::vector<std::string> words = {"enlarge", "restore", "info"};
  CHECK(NearestWord("enlrage", words) == "enlarge");
  CHECK(NearestWord("enlarg", words) == "enlarge");
  CHECK(NearestWord("ifno", words) == "info");
  CHECK(NearestWord("restroe", words) == "restore");
  CHECK(NearestWord("potato", words) == "");
  CHECK(Kit({std::string(100000, 'x')}).exitCode == 2);
  CHECK(Wrapped("one two", 4, 95) == "one\n    two");
  CHECK(Wrapped("one\ntwo", 2, 0) == "one\n  two");
}
