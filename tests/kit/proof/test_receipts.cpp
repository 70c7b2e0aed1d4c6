// What pictures say of how they were made, and that it is believed in nothing.

#include "kit/failure.h"
#include "kit/formats/bytes.h"
#include "kit/pictures/image_file.h"
#include "kit/pictures/picture.h"
#include "kit/pictures/test_card.h"
#include "kit/proof/receipt.h"
#include "kit/proof/sha256.h"
#include "kit/proof/stored_receipt.h"
#include "support/kit.h"
#include "support/test.h"

namespace {

std::string SumOf(const std::string& message, size_t part) {
  Sha256 sum;
  for (size_t i = 0; i < message.size(); i += part) sum.Add(message.data() + i, std::min(part, message.size() - i));
  return sum.Digits();
}

std::string TextIn(const std::string& png) {
  const auto stored = ReceiptInPng(FromFile(png));
  return stored ? stored->text : "";
}

// The receipt beside a picture, with a text in it replaced.
void Change(const std::string& path, const std::string& from, const std::string& to) {
  std::string text = norv::test::ReadBytes(path);
  const size_t at = text.find(from);
  REQUIRE(at != std::string::npos);
  norv::test::WriteBytes(path, text.replace(at, from.size(), to));
}

void SaveCard(const std::string& path, int32_t width, int32_t height) {
  SaveImage(path, AllRows(DrawTestCard(width, height)), Over());
}

}  // namespace

TEST_CASE("SHA-256 of the published messages, in one piece and in many") {
  const std::pair<std::string, std::string> kVectors[] = {
      {"", "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855"},
      {"abc", "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"},
      {"abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq",
       "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1"},
      {std::string(1000000, 'a'), "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0"}};
  for (const auto& [message, digits] : kVectors)
    for (const size_t part : {1, 63, 64, 65, 1000000}) CHECK(SumOf(message, part) == digits);
}

TEST_CASE("a receipt comes out of its text as it went in, and what is none is refused") {
  Receipt receipt{"5.6", {"enlarge", "--by", "3"}, "png", {"sch\xC3\xB6n \"<a>\" \\.jpg", SumOf("abc", 1)}, {}};
  receipt.networks = {{"x2-48.net", SumOf("", 1)}, {"x4.net", SumOf("a", 1)}};
  const std::string text = TextOf(receipt);
  const Receipt again = ReceiptOfText(text);
  CHECK(again.settings == receipt.settings);
  CHECK(again.input.name == receipt.input.name);
  CHECK(again.networks.size() == 2);
  CHECK(TextOf(again) == text);
  CHECK(ReceiptOfText("\n" + text + " ").input.name == receipt.input.name);
  for (size_t end = 0; end < text.size(); ++end) CHECK_THROWS_AS(ReceiptOfText(text.substr(0, end)), Failure);
  const auto refused = [&](const std::string& from, const std::string& to) {
    std::string changed = text;
    changed.replace(changed.find(from), from.size(), to);
    CAPTURE(changed);
    CHECK_THROWS_AS(ReceiptOfText(changed), Failure);
  };
  for (const char* name :
       {"../x.net", "/etc/passwd", "..", ".", "a/b", "a\\u002fb", "a\\u0000b", "a\\nb", "a\nb", "\xFF"})
    refused("x2-48.net", name);
  refused("x2-48.net", std::string(256, 'n'));
  refused("\"1\"", "\"2\"");
  refused("\"png\"", "\"../png\"");
  refused("\"5.6\"", "\"5.6 on a system\"");
  refused(SumOf("abc", 1), SumOf("abc", 1).substr(1));
  refused("}", "}}");
  refused("\"--by\"", "\"\\x\"");
  refused("\"--by\"", "[\"--by\"]");
  refused("\"format\"", "\"folder\"");
  refused("[{", "[" + std::string(70000, ' ') + "{");
  std::string many;
  for (int i = 0; i < 300; ++i) many += "\"--by\", ";
  refused("\"--by\", ", many);
}

TEST_CASE("every PNG of enlarge, restore and denoise says how it was made, the same whatever names and threads") {
  const ScratchFolder folder;
  SaveCard(folder / "small.png", 40, 30);
  SaveCard(folder / "photo.jpg", 40, 30);
  for (const char* command :
       {"enlarge small.png", "enlarge photo.jpg --by 3 --quick", "enlarge small.png --method cubic",
        "restore small.png --by 1 --lambda 0.1 --kernel -2", "denoise small.png --noise 3"}) {
    CAPTURE(command);
    std::vector<std::string> words = Words(command);
    words.insert(words.begin() + 2, "a.png");
    CHECK(KitIn(folder, "", words).exitCode == 0);
    words[2] = "b.png";
    words.insert(words.end(), {"--threads", words[0] == "restore" ? "1" : "2"});
    CHECK(KitIn(folder, "", words).exitCode == 0);
    CHECK(norv::test::ReadBytes(folder / "a.png") == norv::test::ReadBytes(folder / "b.png"));
    const Receipt receipt = ReceiptOfText(TextIn(folder / "a.png"));
    CHECK(receipt.settings[0] == words[0]);
    CHECK(receipt.input.name == words[1]);
    CHECK(receipt.input.sha256 == Sha256OfFile(folder / words[1]));
    CHECK(receipt.networks.empty() == !(words[0] == "enlarge" && !Contains(command, "cubic")));
    CHECK_FALSE(Contains(TextOf(receipt), "threads"));
    CHECK_FALSE(Contains(TextOf(receipt), folder.Path()));
    const Outcome verified = KitIn(folder, "verify a.png");
    CHECK(verified.output == "same bits\n");
    CHECK(verified.errors == "");
    CHECK(verified.exitCode == 0);
    fs::remove(folder / "a.png");
    fs::remove(folder / "b.png");
  }
  CHECK(KitIn(folder, "enlarge small.png none.png --no-receipt").exitCode == 0);
  CHECK(KitIn(folder, "enlarge small.png bare.png --strip").exitCode == 0);
  for (const char* name : {"none.png", "bare.png"}) CHECK(TextIn(folder / name) == "");
  CHECK(KitIn(folder, "verify none.png").exitCode == 1);
}

TEST_CASE("a receipt is of one picture and is not carried on") {
  const ScratchFolder folder;
  SaveCard(folder / "small.png", 20, 20);
  KitIn(folder, "enlarge small.png first.png --quick");
  CHECK(TextIn(folder / "first.png") != "");
  KitIn(folder, "convert first.png copy.png");
  KitIn(folder, "convert first.png copy.jpg");
  KitIn(folder, "shrink first.png less.png --by 2");
  for (const char* name : {"copy.png", "less.png"}) CHECK(TextIn(folder / name) == "");
  CHECK_FALSE(Contains(norv::test::ReadBytes(folder / "copy.jpg"), "sha256"));
  KitIn(folder, "enlarge first.png second.png --quick");
  CHECK(ReceiptOfText(TextIn(folder / "second.png")).input.name == "first.png");
  CHECK(KitIn(folder, "verify second.png").output == "same bits\n");
}

TEST_CASE("other formats have their receipt beside them where it is wanted") {
  const ScratchFolder folder;
  SaveCard(folder / "small.png", 24, 20);
  for (const std::string name : {"a.jpg", "a.tif", "a.fdib", "a.pfm"}) {
    CAPTURE(name);
    CHECK(KitIn(folder, "enlarge small.png " + name + " --quick").exitCode == 0);
    CHECK_FALSE(fs::exists(folder / (name + ".receipt.json")));
    CHECK(KitIn(folder, "enlarge small.png " + name + " --quick --receipt --overwrite").exitCode == 0);
    CHECK(KitIn(folder, "verify " + name).output == "same bits\n");
    // Nobody's file is replaced unasked, and then no picture is made either.
    fs::remove(folder / name);
    CHECK(KitIn(folder, "enlarge small.png " + name + " --quick --receipt").exitCode == 1);
    CHECK_FALSE(fs::exists(folder / name));
  }
  CHECK(KitIn(folder, "enlarge small.png - --to jpg --receipt").exitCode == 2);
  CHECK(KitIn(folder, "enlarge small.png b.png --receipt --no-receipt").exitCode == 2);
}

TEST_CASE("verify says what differs or is missing") {
  const ScratchFolder folder, elsewhere, temporary;
  SaveCard(folder / "small.png", 24, 20);
  KitIn(folder, "enlarge small.png a.ppm --quick --receipt");
  const std::string receipt = folder / "a.ppm.receipt.json", kept = norv::test::ReadBytes(receipt);
  const auto verify = [&](const std::string& more = "") {
    return Run({.arguments = Words("verify a.ppm " + more),
                .environment = {"TMPDIR=" + temporary.Path()},
                .executable = NorvkitExecutable(),
                .directory = folder.Path()});
  };
  const auto differs = [&](const std::string& complaint, const std::string& more = "") {
    const Outcome outcome = verify(more);
    CAPTURE(outcome.errors);
    CHECK(outcome.exitCode == 1);
    CHECK(outcome.output == "");
    CHECK(Contains(outcome.errors, complaint));
    CHECK(fs::is_empty(temporary.Path()));
    norv::test::WriteBytes(receipt, kept);
  };
  CHECK(verify().output == "same bits\n");
  CHECK(fs::is_empty(temporary.Path()));

  fs::rename(folder / "small.png", elsewhere / "other.png");
  differs("small.png is missing");
  CHECK(verify("--input " + (elsewhere / "other.png")).output == "same bits\n");
  SaveCard(folder / "small.png", 24, 22);
  differs("is not the one that it was made of");
  fs::rename(elsewhere / "other.png", folder / "small.png");

  Change(receipt, "\"5.6\"", "\"5.5\"");
  differs("norvkit 5.5");
  Change(receipt, "x2-48-wide", "x9-99");
  differs("network x9-99.net is missing");
  Change(receipt, "\"networks\": [{",
         "\"networks\": [{\"name\": \"x2-48.net\", \"sha256\": \"" + SumOf("", 1) + "\"}, {");
  differs("is not the one that made it");
  Change(receipt, "\"--quick\"", "\"--method\", \"lanczos\"");
  differs("its pixels differ: ");
  Change(receipt, "\"--quick\"", "\"--by\", \"3\"");
  differs("its shape differs: 48 x 40");

  // A receipt names neither another place nor another command, and no option that is no setting of a picture.
  for (const char* words : {"\"--overwrite\"", "\"--report\", \"x.html\"", "\"--config\", \"x\"", "\"--json\"",
                            "\"--frob\"", "\"more.png\"", "\"--by\"", "\"--by\", \"--quick\"", "\"--receipt\"",
                            "\"--quick=1\"", "\"--net\", \"x2-48.net\"", "\"--net=x\"", "\"--by\", \"900\""}) {
    CAPTURE(words);
    Change(receipt, "\"--quick\"", words);
    differs("");
    Change(receipt, "\"--quick\"", words);
    CHECK_FALSE(Contains(verify().errors, "pixels"));
    norv::test::WriteBytes(receipt, kept);
  }
  Change(receipt, "\"enlarge\"", "\"import\"");
  differs("names no command");
  Change(receipt, "small.png", "../small.png");
  differs("more than a name");
  CHECK(std::distance(fs::directory_iterator(folder.Path()), {}) == 3);
  CHECK(verify().exitCode == 0);

  Outcome row = verify("--json");
  CHECK(Contains(row.output, "\"same\": true"));
  fs::remove(folder / "small.png");
  row = verify("--json");
  CHECK(Contains(row.output, "\"same\": false"));
  CHECK(row.exitCode == 1);
}

TEST_CASE("a network of one's own is named again, and a changed PNG is found out") {
  const ScratchFolder folder;
  SaveCard(folder / "small.png", 24, 20);
  KitIn(folder, "new-net own.net --inputs 8 --factor 2 --seed 5");
  CHECK(KitIn(folder, "enlarge small.png a.png --net " + (folder / "own.net")).exitCode == 0);
  CHECK_FALSE(Contains(TextIn(folder / "a.png"), folder.Path()));
  CHECK(KitIn(folder, "verify a.png").exitCode == 1);
  CHECK(KitIn(folder, "verify a.png --net own.net").output == "same bits\n");
  KitIn(folder, "new-net own.net --inputs 8 --factor 2 --seed 6 --overwrite");
  CHECK(Contains(KitIn(folder, "verify a.png --net own.net").errors, "is not the one that made it"));

  KitIn(folder, "enlarge small.png b.png --quick");
  std::string png = norv::test::ReadBytes(folder / "b.png");
  const size_t text = png.find("\"--quick\"");
  png[text + 3] = 'Q';
  norv::test::WriteBytes(folder / "b.png", png);
  CHECK(Contains(KitIn(folder, "verify b.png").errors, "receipt is damaged"));
}

TEST_CASE("a verification that is interrupted leaves nothing behind") {
  const ScratchFolder folder, temporary;
  SaveCard(folder / "small.png", 500, 400);
  KitIn(folder, "enlarge small.png a.png --method lanczos --by 2 --compression 0");
  for (const double after : {0.0, 0.05, 0.2}) {
    const Outcome outcome = Run({.arguments = Words("verify a.png"),
                                 .environment = {"TMPDIR=" + temporary.Path()},
                                 .executable = NorvkitExecutable(),
                                 .directory = folder.Path(),
                                 .signal = SIGINT,
                                 .after = after});
    CHECK((outcome.exitCode == 130 || outcome.output == "same bits\n"));
    CHECK(fs::is_empty(temporary.Path()));
  }
}
