// What programs get from a run: rows of figures, settings as words, settings from files.
#include <cmath>
#include <cstdlib>
#include <doctest/doctest.h>

#include "kit/guidance/json.h"
#include "kit/pictures/image_file.h"
#include "kit/pictures/picture.h"
#include "kit/pictures/test_card.h"
#include "kit/work/settings_text.h"
#include "support/kit.h"

using namespace norv;
using test::Contains;
using test::KitIn;

namespace {

// Whether somebody else's reader takes every line as an object of JSON with these keys, and the text as UTF-8.
bool AreRows(const std::string& output, const std::string& keys) {
  const test::ScratchFolder folder;
  test::WriteBytes(folder / "rows", output);
  const std::string python =
      "import json, sys\n"
      "rows = [json.loads(line, parse_constant=lambda word: sys.exit(1)) for line in open(sys.argv[1], "
      "encoding='utf-8')]\n"
      "sys.exit(not rows or any(not set(sys.argv[2].split()) <= set(row) for row in rows))\n";
  test::WriteBytes(folder / "read.py", python);
  return std::system(("python3 '" + (folder / "read.py") + "' '" + (folder / "rows") + "' '" + keys + "'").c_str()) ==
         0;
}

struct Place {
  const test::ScratchFolder folder;
  Place() {
    SaveImage(folder / "a.png", AllRows(DrawTestCard(60, 50)), {});
    test::WriteBytes(folder / "none.png", "no picture");
  }
  test::Outcome operator()(const std::string& line) const { return KitIn(folder, line); }
};

constexpr char kKeys[] = "input output width height method seconds memory certificate";

}  // namespace

TEST_CASE("text and numbers of any kind become JSON that others read") {
  JsonObject row;
  row.Text("quotes \" \\ \n", "\x01\x7F</script>")
      .Text("not UTF-8", "\xFF\xC0\xAF\xED\xA0\x80\xF4\x90\x80\x80\xE2\x82");
  row.Text("UTF-8", "\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80").Number("none", NAN).Number("infinite", -INFINITY);
  row.Number("third", 1.0 / 3).Whole("least", INT64_MIN).Flag("flag", true).Null("null");
  row.Object("object", JsonObject().Numbers("numbers", {1, 0.5, NAN})).List("list", {JsonObject(), row});
  row.Texts("texts", {"a", "b\t"});
  CHECK(AreRows(row.Line() + "\n" + row.Line() + "\n", "third least flag null object list texts"));
  CHECK(Contains(row.Line(), "\"third\": 0.3333333333333333"));
  CHECK(Contains(row.Line(), "\"none\": null"));
  CHECK_FALSE(Contains(row.Line(), "<"));
  CHECK(JsonText("\xE2\x82") == "\"\xEF\xBF\xBD\xEF\xBF\xBD\"");
  CHECK(JsonText("\xC3\xA4") == "\"\xC3\xA4\"");
}

TEST_CASE("with --json standard output is rows alone, of what was made and of what was not") {
  const Place kit;
  for (const char* line : {"enlarge a.png b.png --quick", "restore a.png c.tif --by 1", "denoise a.png d.png",
                           "shrink a.png e.jpg", "convert a.png f.webp --verbose"}) {
    const test::Outcome made = kit(std::string(line) + " --json");
    CAPTURE(line);
    CHECK(made.exitCode == 0);
    CHECK(AreRows(made.output, kKeys));
    CHECK_FALSE(Contains(made.output, "\"error\""));
    CHECK(Contains(made.output, "\"certificate\": null"));
  }
  CHECK(Contains(kit("enlarge a.png g.png --quick --json").output, "\"width\": 120, \"height\": 100"));
  for (const char* line : {"enlarge none.png x.png", "enlarge a.png b.png", "denoise missing.png x.png",
                           "convert a.png x.jpg --bits 16"}) {
    const test::Outcome failed = kit(std::string(line) + " --json");
    CAPTURE(line);
    CHECK(failed.exitCode == 1);
    CHECK(failed.errors.starts_with("norvkit: "));
    CHECK(AreRows(failed.output, std::string(kKeys) + " error"));
  }
  CHECK(Contains(kit("enlarge a.png - --to png --json").output, "\"error\""));
  const test::Outcome unknown = kit("enlarge a.png x.png --json --unknown");
  CHECK((unknown.exitCode == 2 && AreRows(unknown.output, "error")));
}

TEST_CASE("every other command gives rows too, and no word beside them") {
  const Place kit;
  for (const auto& [line, keys] : {std::pair{"testcard card.png --size 50x48", "output width height"},
                                   {"noise a.png noisy.png", "input output width height"},
                                   {"import a.png a.fdib", "input output width height"},
                                   {"export a.fdib b.tif", "input output width height"},
                                   {"new-net a.net --inputs 8 --hidden 2", "output"}}) {
    const test::Outcome made = kit(std::string(line) + " --json");
    const std::string said = line;
    CAPTURE(said);
    CHECK(made.exitCode == 0);
    CHECK(AreRows(made.output, keys));
  }
  CHECK(kit("noise a.png - --to png --json").exitCode == 2);
  test::WriteBytes(kit.folder / "log.csv",
                   "epoch,rate,cost,samples_per_second,seconds,psnr,cubic,lanczos\n1,1,1,1,1,30,29,28\n");
  CHECK(AreRows(kit("curve log.csv curve.svg --json").output, "input output"));
}

TEST_CASE("quiet says nothing but errors, verbose where the time went") {
  const Place kit;
  CHECK(kit("enlarge a.png b.png --quiet").errors == "");
  CHECK(kit("enlarge a.png c.png").errors != "");
  CHECK(Contains(kit("enlarge a.png d.png --verbose").errors, "encoding"));
  CHECK(Contains(kit("enlarge a.png b.png --quiet").errors, "b.png is there already"));
  CHECK(kit("enlarge a.png e.png --quiet --verbose").exitCode == 2);
}

TEST_CASE("settings come from a file, under the command line, and only those that there are") {
  const Place kit;
  const auto with = [&](const std::string& config, const std::string& more) {
    test::WriteBytes(kit.folder / "kit.toml", config);
    return kit("enlarge a.png b.png --overwrite --json --config kit.toml " + more);
  };
  CHECK(Contains(with("by = 3\n[shrink]\nlongest = 9\n", "").output, "\"width\": 180"));
  CHECK(
      Contains(with("# ours\n[enlarge]\nmethod = \"nearest\"\nfactor = 1.5\n", "").output, "\"method\": \"nearest\""));
  CHECK(Contains(with("[enlarge]\nby = 3\n", "--by 4").output, "\"width\": 240"));
  CHECK(Contains(with("by = 3\nquick = true\n", "--width 90 --average --net missing.net").errors, "missing.net"));
  CHECK(Contains(with("quick = false", "").output, "averaged"));
  for (const char* wrong :
       {"bz = 3\n", "by = 100\n", "[shrunk]\nby = 3\n", "[shrink]\nquick = true\n", "quick = 3\n", "quality\n",
        "OUT = \"x\"\n", "config = \"kit.toml\"\n", "quick = true\naverage = true\n", "method = \"\"\n"}) {
    const test::Outcome refused = with(wrong, "");
    CAPTURE(std::string(wrong));
    CHECK(refused.exitCode == 2);
    CHECK(Contains(refused.errors, "kit.toml: "));
  }
  CHECK(kit("enlarge a.png c.png --config missing.toml").exitCode == 2);
}

TEST_CASE("settings are one text whatever was typed, and the words of a line come back") {
  bool quick = false;
  double by = 2;
  std::optional<double> knob;
  std::string name = "clean";
  Times times;
  int32_t threads = 1;
  const auto rows = [&] {
    return Options{{.name = "PICTURE", .target = &name, .help = ""},
                   {.name = "--quick", .target = &quick, .help = ""},
                   {.name = "--by", .target = &by, .help = ""},
                   {.name = "--knob", .target = &knob, .help = ""},
                   {.name = "--preset", .target = &name, .help = ""},
                   {.name = "--sharper", .target = &times, .help = ""},
                   {.name = "--threads", .target = &threads, .help = "", .aside = true}};
  };
  bool noQuick = false;
  double two = 2;
  std::optional<double> none;
  std::string clean = "clean";
  Times never;
  int32_t one = 1;
  const Options untouched = {{.name = "PICTURE", .target = &clean, .help = ""},
                             {.name = "--quick", .target = &noQuick, .help = ""},
                             {.name = "--by", .target = &two, .help = ""},
                             {.name = "--knob", .target = &none, .help = ""},
                             {.name = "--preset", .target = &clean, .help = ""},
                             {.name = "--sharper", .target = &never, .help = ""},
                             {.name = "--threads", .target = &one, .help = "", .aside = true}};
  CHECK(SettingsWords(rows(), untouched).empty());
  quick = true;
  by = 1.1;
  knob = -0.5;
  name = "it's my own";
  times.count = 2;
  threads = 7;
  const std::vector<std::string> words = SettingsWords(rows(), untouched);
  CHECK(LineOfWords(words) == "--quick --by 1.1 --knob=-0.5 --preset 'it'\\''s my own' --sharper --sharper");
  CHECK(WordsOfLine(LineOfWords(words)) == words);
  CHECK(WordsOfLine("  a ''  b\\ c'd e'") == std::vector<std::string>{"a", "", "b cd e"});
}
