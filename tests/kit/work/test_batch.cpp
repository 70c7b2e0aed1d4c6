// Many pictures at a time: what fails stops nobody, what is made is not made again, nobody's file is lost.
#include <doctest/doctest.h>
#include <filesystem>

#include "kit/batch/journal.h"
#include "kit/batch/lanes.h"
#include "kit/pictures/image_file.h"
#include "kit/pictures/picture.h"
#include "kit/pictures/test_card.h"
#include "kit/work/result_name.h"
#include "support/kit.h"

using namespace norv;
using test::Contains;
using test::KitIn;

namespace {

namespace fs = std::filesystem;

// in/ with two pictures, one of them in a folder, one that ends early, and a file that is no picture.
struct Place {
  const test::ScratchFolder folder;

  Place() {
    fs::create_directories(folder / "in/sub");
    for (const char* name : {"in/a.png", "in/b.jpg", "in/sub/c.png"})
      SaveImage(folder / name, AllRows(DrawTestCard(60, 50)), {});
    test::WriteBytes(folder / "in/b.jpg", test::ReadBytes(folder / "in/b.jpg").substr(0, 1200));
    test::WriteBytes(folder / "in/notes.txt", "no picture");
    fs::create_symlink("..", folder / "in/sub/loop");
  }
  std::string operator/(const std::string& name) const { return folder / name; }
  test::Outcome operator()(const std::string& line) const { return KitIn(folder, line); }
  // The last line on standard error.
  std::string Summary(const std::string& line) const {
    const std::string errors = (*this)(line).errors;
    const size_t end = errors.find_last_not_of('\n'), start = errors.rfind('\n', end);
    return errors.substr(start == std::string::npos ? 0 : start + 1,
                         end - (start == std::string::npos ? 0 : start + 1) + 1);
  }
  int64_t Results() const {
    int64_t count = 0;
    for (const auto& entry : fs::recursive_directory_iterator(folder / "out"))
      count += entry.is_regular_file() && entry.path().filename() != kJournalName;
    return count;
  }
};

constexpr char kLine[] = "enlarge in -r --out out --method nearest";
constexpr char kFailure[] = "1 failed: in/b.jpg: JPEG: Premature end of input file; 1 not a picture";

}  // namespace

TEST_CASE("a batch goes on after a bad file, says what failed, and makes nothing twice") {
  const Place kit;
  const test::Outcome first = kit(std::string(kLine) + " --report page.html");
  CHECK(first.exitCode == 1);
  const std::string page = test::ReadBytes(kit / "page.html");
  CHECK((Contains(page, "2 made, 1 failed") && Contains(page, "in/b.jpg")));
  CHECK(first.errors == std::string("2 done, ") + kFailure + "\n");
  CHECK(kit.Results() == 2);
  CHECK(OpenImage(kit / "out/sub/c_2x.png").shape.width == 120);
  CHECK(kit.Summary(kLine) == std::string("2 skipped, ") + kFailure);
  CHECK(kit.Summary(std::string(kLine) + " --threads 3 --quiet") == std::string("2 skipped, ") + kFailure);
  fs::remove(kit / "in/b.jpg");
  CHECK(kit(kLine).exitCode == 0);
  CHECK(kit(std::string(kLine) + " --quiet").errors == "");
  // Other settings, another input, a result that is gone: made again without --overwrite.
  const std::string doubled = test::ReadBytes(kit / "out/a_2x.png");
  CHECK(kit.Summary("enlarge in -r --out out --method cubic") == "2 done, 1 not a picture");
  CHECK(test::ReadBytes(kit / "out/a_2x.png") != doubled);
  CHECK(kit.Summary(kLine) == "2 done, 1 not a picture");
  CHECK(test::ReadBytes(kit / "out/a_2x.png") == doubled);
  SaveImage(kit / "in/a.png", AllRows(DrawTestCard(70, 50)), test::Over());
  CHECK(kit.Summary(kLine) == "1 done, 1 skipped, 1 not a picture");
  fs::remove(kit / "out/sub/c_2x.png");
  CHECK(kit.Summary(kLine) == "1 done, 1 skipped, 1 not a picture");
}

TEST_CASE("a file that no batch has made, or that was changed since, is nobody's to replace") {
  const Place kit;
  fs::remove(kit / "in/b.jpg");
  fs::create_directory(kit / "out");
  test::WriteBytes(kit / "out/a_2x.png", "somebody's own");
  CHECK(Contains(kit.Summary(kLine), "1 done, 1 failed: in/a.png: out/a_2x.png exists already"));
  test::WriteBytes(kit / "out/sub/c_2x.png", "changed");
  const test::Outcome both = kit(std::string(kLine) + " --json");
  CHECK((both.exitCode == 1 && Contains(both.errors, "2 failed")));
  CHECK(Contains(both.output, "changed since it was made"));
  CHECK(test::ReadBytes(kit / "out/a_2x.png") + test::ReadBytes(kit / "out/sub/c_2x.png") == "somebody's ownchanged");
  CHECK(kit.Summary(std::string(kLine) + " --overwrite") == "2 done, 1 not a picture");
  // Two that would get one name, and one that would stand where another is read.
  fs::copy(kit / "in/a.png", kit / "in/a.tif");
  CHECK(Contains(kit.Summary("convert in --out same --name {stem}.png"), "would get the same name"));
  CHECK(fs::is_empty(kit / "same"));
  CHECK(Contains(kit.Summary("convert in/a.png in/sub/c.png --out in --name a.tif --overwrite"), "2 failed"));
}

TEST_CASE("a journal is data: what is torn or made up is passed over") {
  const Place kit;
  fs::remove(kit / "in/b.jpg");
  kit(kLine);
  const std::string path = kit / (std::string("out/") + kJournalName), whole = test::ReadBytes(path);
  for (size_t cut : {whole.size() - 1, whole.size() - 9, whole.size() / 2 + 3, size_t{0}}) {
    test::WriteBytes(path, whole.substr(0, cut));
    for (const char* name : {"out/a_2x.png", "out/sub/c_2x.png"})
      if (Journal(kit / "out").Entries(name + 4).empty()) fs::remove(kit / name);
    CAPTURE(cut);
    CHECK(kit(kLine).exitCode == 0);
    CHECK(Contains(kit.Summary(kLine), "2 skipped"));
  }
  const std::string hostile =
      "../in/a.png\t1\t1\ta\t1\t1\trm\t0\n" + std::string(100000, '\t') + "\n\xFF\n" + std::string(3, '\0');
  test::WriteBytes(path, hostile + test::ReadBytes(path));
  CHECK(Contains(kit.Summary(kLine), "2 skipped"));
  fs::remove(path);
  fs::create_directory(path);
  CHECK((kit(kLine).exitCode == 1 && kit.Results() == 2));
  // Names with any bytes come back; a file that a line before the last has made is still one of ours.
  const test::ScratchFolder folder;
  const JournalEntry older{"tab\tand\nend\\", {1, -2}, {3, 4}, "enlarge --net 'a\tb'"}, newer{"x", {1, 1}, {5, 6}, ""};
  Journal(folder.Path()).Add("x\n\t\\.png", older);
  Journal(folder.Path()).Add("x\n\t\\.png", newer);
  const Journal read(folder.Path());
  REQUIRE(read.Find("x\n\t\\.png", {3, 4}));
  CHECK(*read.Find("x\n\t\\.png", {3, 4}) == older);
  CHECK(*read.Find("x\n\t\\.png", {5, 6}) == newer);
  CHECK(read.Find("x\n\t\\.png", {5, 7}) == nullptr);
  // One bit of the last line's sum.
  std::string text = test::ReadBytes(folder / kJournalName);
  text[text.size() - 2] ^= 1;
  test::WriteBytes(folder / kJournalName, text);
  CHECK(Journal(folder.Path()).Find("x\n\t\\.png", {5, 6}) == nullptr);
}

TEST_CASE("a batch within its own folder takes no result for a picture") {
  const Place kit;
  fs::remove(kit / "in/b.jpg");
  CHECK(kit.Summary("enlarge in -r --out in --method nearest") == "2 done, 1 not a picture");
  CHECK(kit.Summary("enlarge in -r --out in --method nearest") == "2 skipped, 1 not a picture");
  CHECK(kit.Summary("enlarge in -r --out in --method cubic") == "2 done, 1 not a picture");
  CHECK(Contains(kit.Summary("denoise in -r --out in/sub/cleaner"), "4 done"));
  CHECK(Contains(kit.Summary("denoise in -r --out in/sub/cleaner"), "4 skipped"));
}

TEST_CASE("threads and memory change nothing of the results, and what does not fit alone is refused") {
  const Place kit;
  fs::remove(kit / "in/b.jpg");
  for (const char* work :
       {"enlarge in -r", "restore in -r --denoise", "denoise in -r", "shrink in -r", "convert in -r --to tif"}) {
    CAPTURE(std::string(work));
    std::string all[3];
    const char* ways[] = {"--threads 1", "--threads 4", "--memory 1G --threads 2"};
    for (int i = 0; i < 3; ++i) {
      fs::remove_all(kit / "out");
      CHECK(kit(std::string(work) + " --out out --name {stem}{ext} " + ways[i]).exitCode == 0);
      CHECK(kit.Results() == 2);
      for (const auto& entry : fs::recursive_directory_iterator(kit / "out"))
        if (entry.is_regular_file() && entry.path().filename() != kJournalName)
          all[i] += test::ReadBytes(entry.path().string());
    }
    CHECK((all[0] == all[1] && all[0] == all[2]));
  }
  fs::remove_all(kit / "out");
  const test::Outcome refused = kit("denoise in -r --out out --memory 1M --json");
  CHECK((refused.exitCode == 1 && Contains(refused.output, "it needs about ") && kit.Results() == 0));
  CHECK(Contains(kit("enlarge in/a.png x.png --memory 1M").errors, "it needs about"));
  for (const char* wrong : {"2X", "G", "0", "-1", "nan", "1e30"}) CHECK(BytesOf(wrong) == 0);
  CHECK(BytesOf("2G") == uint64_t{2} << 30);
  CHECK(BytesOf("1.5 mb") == 3 << 19);
  CHECK(BytesInWords(uint64_t{3} << 29) == "1.5 GB");
}

TEST_CASE("a dry run says what would be done and leaves everything as it is") {
  const Place kit;
  const auto files = [&] { return std::distance(fs::recursive_directory_iterator(kit.folder.Path()), {}); };
  const auto before = files();
  const test::Outcome many = kit("enlarge in -r --out out --dry-run"), one = kit("restore in/a.png b.png --dry-run");
  CHECK((many.exitCode == 0 && one.exitCode == 0));
  CHECK(Contains(many.output, "in/a.png -> out/a_2x.png: 120 x 100 pixels, network x2-48"));
  CHECK(Contains(many.output, "by estimate"));
  CHECK(Contains(one.output, "in/a.png -> b.png"));
  CHECK(files() == before);
}

TEST_CASE("what many pictures need is asked for, and names are patterns of known fields") {
  const Place kit;
  for (const auto& [line, reason] :
       {std::pair{"enlarge in", "norvkit enlarge in --out DIR"},
        {"denoise in out", "norvkit denoise in --out DIR"},
        {"shrink in/a.png in/b.jpg in/a.png", "norvkit shrink in/a.png in/b.jpg in/a.png --out DIR"},
        {"enlarge in/a.png --recursive", "--out DIR"},
        {"enlarge - --out out", "- is one picture"},
        {"enlarge in --out out --name {stem}_{size}", "not {size}"},
        {"enlarge in --out out --name {stem", "brace"},
        {"enlarge in --out out --name ../{stem}", "folders"},
        {"enlarge in --out out --memory lots", "--memory takes a size"}}) {
    const test::Outcome refused = kit(line);
    CAPTURE(refused.errors);
    CHECK(refused.exitCode == 2);
    CHECK(Contains(refused.errors, reason));
  }
  CHECK(kit.Summary("shrink in/a.png in/a.png ./in/a.png --out out --name {stem}_{width}x{height}_{method}.bmp") ==
        "1 done");
  CHECK(fs::exists(kit / "out/a_30x25_shrunk-by-2.bmp"));
  CHECK(kit.Summary("enlarge in/a.png --out out --by 1.5 --method nearest --name {stem}_{factor}x{ext}") == "1 done");
  CHECK(fs::exists(kit / "out/a_1.5x.png"));
  CHECK(Contains(kit.Summary("enlarge missing.png in/a.png --out new"), "1 done, 1 failed: missing.png: "));
}
