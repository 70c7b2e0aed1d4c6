// Nothing that was there is lost, nothing is made that is no result, and whoever asks for what cannot be written hears
// so at once.
#include <algorithm>
#include <cmath>
#include <doctest/doctest.h>
#include <filesystem>

#include "kit/pictures/picture.h"
#include "kit/pictures/picture_file.h"
#include "linear/matrix2.h"
#include "support/kit.h"
#include "support/scratch.h"

using namespace norv;
using test::Contains;
using test::KitIn;

namespace {

namespace fs = std::filesystem;

// Every command that writes a file of its user's naming, on what Place holds; its name is put where the @ stands.
constexpr const char* kWriters[] = {"export a.fdib @.png",
                                    "testcard @.png --size 48x48",
                                    "shrink a.png @.png",
                                    "enlarge a.png @.png",
                                    "enlarge a.png @.fdib --net a.net",
                                    "restore a.png @.tif",
                                    "denoise a.png @.mat",
                                    "noise a.png @.bit",
                                    "new-net @.net --layout 8",
                                    "curve log.csv @.svg"};

struct Place {
  const test::ScratchFolder folder;

  Place() {
    Picture picture(24, 20, 3);
    for (int k = 0; k < 3; ++k)
      for (int32_t i = 0; i < picture.plane[k].mn; ++i) picture.plane[k].x[i] = static_cast<float>((i + 90 * k) % 256);
    WritePicture(folder / "a.png", picture, {});
    REQUIRE(KitIn(folder, "import a.png a.fdib").exitCode == 0);
    REQUIRE(KitIn(folder, "new-net a.net --layout 8 --hidden 3").exitCode == 0);
    test::WriteBytes(folder / "log.csv",
                     "epoch,rate,cost,samples_per_second,seconds,psnr,cubic,lanczos\n1,1,1,1,1,30,29,28\n");
  }
  std::string operator/(const std::string& name) const { return folder / name; }
  test::Outcome Kit(std::string line, const std::string& out, const std::string& more = "") const {
    if (const size_t at = line.find('@'); at != std::string::npos) line.replace(at, 1, out);
    return KitIn(folder, line + " " + more);
  }
  int Files() const { return static_cast<int>(std::distance(fs::directory_iterator(folder.Path()), {})); }
};

// The name that the line writes to, with its ending.
std::string OutOf(const std::string& line, const std::string& name) {
  const size_t at = line.find('@');
  return name + line.substr(at + 1, line.find(' ', at) - at - 1);
}

}  // namespace

TEST_CASE("a file that is there is replaced when it is given up, and one that is read-only never") {
  const Place place;
  for (const char* line : kWriters) {
    CAPTURE(line);
    const bool links = line[0] == 'e' || line[0] == 'n';  // followed by what all writers share
    const std::string old = OutOf(line, "old"), link = OutOf(line, "link"), away = OutOf(line, "away");
    test::WriteBytes(place / old, "old");
    fs::create_symlink(old, place / link);
    fs::create_symlink("new", place / away);
    const int files = place.Files();
    for (const char* name : {"old", "link"}) {
      if (name[0] == 'l' && !links) continue;
      const test::Outcome refused = place.Kit(line, name);
      CHECK(refused.exitCode == 1);
      CHECK(Contains(refused.errors, "--overwrite"));
      CHECK(test::ReadBytes(place / old) == "old");
    }
    fs::permissions(place / old, fs::perms::owner_read | fs::perms::group_read);
    CHECK(Contains(place.Kit(line, links ? "link" : "old", "--overwrite").errors, "read-only"));
    CHECK(test::ReadBytes(place / old) == "old");
    fs::permissions(place / old, fs::perms::owner_read | fs::perms::owner_write);
    CHECK(place.Files() == files);

    CHECK(place.Kit(line, "old", "--overwrite").exitCode == 0);
    const std::string made = test::ReadBytes(place / old);
    CHECK(made.size() > 20);
    if (links) {
      test::WriteBytes(place / old, "old");
      CHECK(place.Kit(line, "link", "--overwrite").exitCode == 0);
      CHECK(test::ReadBytes(place / old) == made);
      CHECK(fs::is_symlink(place / link));
      // A link to what is not there yet names what will be.
      CHECK(place.Kit(line, "away").exitCode == 0);
      CHECK(test::ReadBytes(place / "new") == made);
    }
    for (const std::string& name : {old, link, away, std::string("new")}) fs::remove(place / name);
    CHECK(place.Files() == files - 3);
  }
}

TEST_CASE("what is read is written over only when it is given up, by whatever name") {
  const Place place;
  for (const char* kind : {".png", ".fdib"}) {
    const std::string file = std::string("a") + kind, bytes = test::ReadBytes(place / file);
    fs::create_symlink(file, place / ("soft" + std::string(kind)));
    fs::create_hard_link(place / file, place / ("hard" + std::string(kind)));
    for (const char* command : {"enlarge ", "noise ", "import "})
      for (const char* name : {"a", "./a", "soft", "hard"}) {
        if (*command == 'i' && kind[1] == 'p') continue;  // which would be no image of ours
        const test::Outcome refused = KitIn(place.folder, command + file + " " + name + kind);
        CAPTURE(refused.errors);
        CHECK(refused.exitCode == 1);
        CHECK(Contains(refused.errors, "the very file that is read"));
        CHECK(test::ReadBytes(place / file) == bytes);
      }
    CHECK(KitIn(place.folder, "noise " + file + " soft" + kind + " --overwrite").exitCode == 0);
    CHECK(test::ReadBytes(place / file) != bytes);
    CHECK(test::ReadBytes(place / ("hard" + std::string(kind))) == bytes);
  }
  // The longest name there is.
  CHECK(KitIn(place.folder, "noise a.png " + std::string(251, 'n') + ".png").exitCode == 0);
  CHECK(KitIn(place.folder, "noise a.png " + std::string(252, 'n') + ".png").exitCode == 1);
  // The tool's own input is laid down again and again.
  for (int run = 0; run < 2; ++run) CHECK(KitIn(place.folder, "import a.png input.fdib").exitCode == 0);
}

TEST_CASE("what cannot be written is refused before the picture is looked at") {
  const Place place;
  // Its header is whole, its pixels are damaged: whoever had begun to work would have found out.
  for (const char* name : {"a.png", "wide.png"}) {
    Picture picture = *name == 'a' ? Picture(200, 200, 3) : Picture(40000, 8, 3);
    for (matrix& plane : picture.plane)
      for (int32_t i = 0; i < plane.mn; ++i) plane.x[i] = static_cast<float>(i * 7919LL % 251);
    WritePicture(place / name, std::move(picture), {});
    const std::string bytes = test::ReadBytes(place / name);
    test::WriteBytes(place / name, bytes.substr(0, bytes.size() / 2));
  }
  fs::create_directory(place / "folder.png");
  const std::pair<const char*, const char*> targets[] = {{"a.png missing/b.png", "missing/b.png"},
                                                         {"a.png b.xyz", "b.xyz"},
                                                         {"a.png b", "b"},
                                                         {"a.png b.jpg --bits 16", "JPEG"},
                                                         {"a.png folder.png", "folder"},
                                                         {"a.png log.csv/b.png", "log.csv/b.png"},
                                                         {"a.png /proc/b.png", "/proc/b.png"},
                                                         {"a.png a.net/", "a.net/"}};
  const int files = place.Files();
  for (const std::string command : {"enlarge ", "shrink ", "restore ", "denoise ", "noise ", "enlarge --net a.net "})
    for (const auto& [words, named] : targets) {
      if (command != "enlarge " && words != targets[0].first) continue;  // what all of them ask first
      const test::Outcome outcome = KitIn(place.folder, command + words);
      CAPTURE(outcome.errors);
      CHECK(outcome.exitCode == 1);
      CHECK(Contains(outcome.errors, named));
      CHECK(std::count(outcome.errors.begin(), outcome.errors.end(), '\n') == 1);
      CHECK(place.Files() == files);
    }
  CHECK(Contains(KitIn(place.folder, "enlarge wide.png b.jpg").errors, "65500"));
  CHECK(Contains(KitIn(place.folder, "restore wide.png b.bit --factor 64").errors, "cannot hold 2560000 x 512"));
}

TEST_CASE("a result that is no number anywhere is no result") {
  const Place place;
  matrix plane(6, 5);
  const auto write = [&](int32_t none, float value) {
    plane.fill(100);
    std::fill_n(plane.x, none, value);
    plane.save(place / "none.mat", Folder::asGiven);
  };
  const int files = place.Files() + 1;
  for (const float value : {NAN, -INFINITY})
    for (const char* line : {"export none.mat b.png", "enlarge none.mat b.jpg --method nearest",
                             "import none.mat b.fdib", "shrink none.mat b.tif", "enlarge none.mat b.png --net a.net"}) {
      write(30, value);
      const test::Outcome outcome = KitIn(place.folder, line);
      CAPTURE(outcome.errors);
      CHECK(outcome.exitCode == 1);
      CHECK(Contains(outcome.errors, "no number"));
      CHECK(place.Files() == files);
    }
  write(7, NAN);
  const test::Outcome some = KitIn(place.folder, "export none.mat b.png");
  CHECK(some.exitCode == 0);
  CHECK(Contains(some.errors, "7 of 30 values"));
}
