// Pictures through standard input and output, and the format that is asked for by name.
#include <doctest/doctest.h>

#include "kit/formats/codec.h"
#include "support/kit.h"
#include "support/scratch.h"

using namespace norv;
using test::Contains;
using test::KitIn;
using test::Shell;

TEST_CASE("pipes carry the bytes that files have, in every format") {
  const test::ScratchFolder folder;
  REQUIRE(KitIn(folder, "testcard a.png --size 300x200").exitCode == 0);
  for (const Codec* codec : Codecs()) {
    if (!codec->create) continue;
    const std::string ending = codec->extensions[0], small = "b." + ending, large = "c." + ending;
    CAPTURE(ending);
    REQUIRE(KitIn(folder, "shrink a.png " + small).exitCode == 0);
    REQUIRE(KitIn(folder, "enlarge --no-receipt --method cubic " + small + " " + large).exitCode == 0);
    const test::Outcome piped =
        Shell(folder, "cat a.png | $k shrink - - --to " + ending +
                          " | $k enlarge --no-receipt --method cubic - - --to '" + codec->name + "'");
    CAPTURE(piped.errors);
    CHECK(piped.exitCode == 0);
    CHECK(piped.output == test::ReadBytes(folder / large));
    // The name says nothing, or something else.
    REQUIRE(KitIn(folder, "shrink a.png unnamed --overwrite --to " + ending).exitCode == 0);
    CHECK(test::ReadBytes(folder / "unnamed") == test::ReadBytes(folder / small));
  }
  const test::Outcome other = KitIn(folder, "shrink a.png d.png --to tiff");
  CHECK(Contains(other.errors, "d.png is written as TIFF"));
  CHECK(test::ReadBytes(folder / "d.png") == test::ReadBytes(folder / "b.tif"));
  CHECK(Shell(folder, "mkfifo f; cat a.png > f & $k shrink f e.png; $k info <(cat a.png)").exitCode == 0);
  CHECK(test::ReadBytes(folder / "e.png") == test::ReadBytes(folder / "b.png"));
  // More than is taken from a pipe at a time.
  CHECK(
      Shell(folder,
            "$k testcard g.ppm --size 900x500; $k shrink g.ppm h.ppm; cat g.ppm | $k shrink - - --to ppm | cmp - h.ppm")
          .exitCode == 0);
}

TEST_CASE("what fails leaves nothing on standard output, and what cannot be meant says what to type") {
  const test::ScratchFolder folder;
  REQUIRE(KitIn(folder, "testcard a.png --size 300x200").exitCode == 0);
  struct Line {
    const char* words;
    int exitCode;
    const char* reason;
  };
  for (const Line& line :
       {Line{"head -c 20000 a.png | $k shrink - - --to png", 1, "norvkit: standard input: PNG"},
        Line{"cat a.png | $k shrink - -", 2, "--to png"}, Line{"$k shrink a.png - --to xyz", 2, "xyz"},
        Line{"$k shrink a.png - --to mat", 1, "not to standard output"},
        Line{"$k shrink a.png - --to jpg --bits 16", 1, "standard output: JPEG holds 8 bits"},
        Line{"$k shrink - b.png < /dev/null", 1, "standard input brings nothing"},
        Line{"yes | $k shrink - b.png", 1, "standard input brings no picture"},
        Line{"$k shrink /dev/zero b.png", 1, "/dev/zero brings no picture"},
        Line{"$k shrink a.png - --to png > /dev/full", 1, "standard output: No space left"},
        Line{"$k new-net -", 1, "./-"}}) {
    const test::Outcome outcome = Shell(folder, line.words);
    CAPTURE(std::string(line.words));
    CAPTURE(outcome.errors);
    CHECK(outcome.exitCode == line.exitCode);
    CHECK(Contains(outcome.errors, line.reason));
    CHECK(outcome.output.empty());
  }
  CHECK(std::distance(std::filesystem::directory_iterator(folder.Path()), {}) == 1);
  CHECK(Shell(folder, "$k testcard - --to pfm --size 999x999 | head -c 1").output == "P");  // and does not hang

  for (const char* line : {"shrink a.png - --to png", "shrink - b.png"}) {
    test::TerminalRun run(
        {.arguments = test::Words(line), .executable = test::NorvkitExecutable(), .directory = folder.Path()});
    CHECK(run.Wait() == 1);
    CHECK(Contains(run.Shown(), "is a terminal"));
  }
}
