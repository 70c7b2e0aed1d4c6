// norvkit train and curve: from pictures to networks, and what is left when something is wrong.
#include <algorithm>
#include <chrono>
#include <cmath>
#include <csignal>
#include <doctest/doctest.h>
#include <thread>
#include <tuple>

#include "kit/failure.h"
#include "kit/pictures/luminance.h"
#include "kit/pictures/picture.h"
#include "kit/pictures/picture_file.h"
#include "kit/pictures/test_card.h"
#include "kit/training/learning_curve.h"
#include "kit/training/training_pictures.h"
#include "net/net_file.h"
#include "support/kit.h"
#include "support/scratch.h"

using namespace norv;
using test::Contains;
using test::Kit;

namespace {

// A folder of three drawn pictures; v.png is held out.
struct Gallery {
  Gallery() {
    Draw("a.png", 60, 44);
    Draw("b.png", 48, 64);
    Draw("v.png", 72, 56);
    test::WriteBytes(folder / "notes.txt", "no picture");
  }
  void Draw(const char* name, int32_t width, int32_t height) const {
    WritePicture(folder / name, AllRows(DrawTestCard(width, height)), {});
  }
  // The command line of a training of a small network into `out`.
  std::vector<std::string> Line(const std::string& out, const std::string& more) const {
    return test::Words("train " + folder.Path() + " " + out + " --layout 8 --hidden 6 --seed 3 --rate 0.02 " + more);
  }
  test::Outcome Train(const std::string& out, const std::string& more) const { return Kit(Line(out, more)); }

  test::ScratchFolder folder, results;
};

test::Outcome Mode(const test::ScratchFolder& place, std::vector<std::string> arguments) {
  return test::Run({.arguments = std::move(arguments), .environment = {"NORV_DIR=" + place.Path()}, .input = "kkkk"});
}

// The SVG's elements are opened and closed in order and its attributes quoted: enough for a drawing of our own.
bool IsWellFormed(const std::string& text) {
  std::vector<std::string> open;
  size_t at = text.find("?>") + 2;
  while ((at = text.find('<', at)) != std::string::npos) {
    const size_t end = text.find('>', at);
    if (end == std::string::npos) return false;
    const std::string tag = text.substr(at + 1, end - at - 1), name = tag.substr(0, tag.find_first_of(" /", 1));
    if (tag.find('<') != std::string::npos || std::count(tag.begin(), tag.end(), '\'') % 2) return false;
    if (tag[0] == '/') {
      if (open.empty() || "/" + open.back() != tag) return false;
      open.pop_back();
    } else if (tag.back() != '/') {
      open.push_back(name);
    }
    at = end;
  }
  return open.empty();
}

}  // namespace

TEST_CASE("train leaves what modes 11, 12 and 9 leave, bit for bit") {
  const Gallery gallery;
  const std::string out = gallery.results / "out";
  const test::Outcome outcome =
      gallery.Train(out, "--final-rate 0.005 --valid v.png --epochs 3 --threads 4 --alternate 1");
  CAPTURE(outcome.errors);
  REQUIRE(outcome.exitCode == 0);
  CHECK(outcome.errors.empty());

  const test::ScratchFolder place;
  for (const char* name : {"a.png", "b.png"}) {
    LuminanceOf(ReadPicture(gallery.folder / name)).save(place / "standard.mat", Folder::asGiven);
    CHECK(Mode(place, {"11", name[0] == 'a' ? "0" : "1", "2", "8", "4", "-1"}).exitCode == 0);
  }
  CHECK(Mode(place, {"12"}).exitCode == 0);
  CHECK(Kit({"new-net", place / "test.net", "--layout", "8", "--hidden", "6", "--seed", "3"}).exitCode == 0);
  CHECK(Mode(place, {"9", "3", "0.02", "0.005", "0", "1", "0", "0", "1", "0"}).exitCode == 0);
  CHECK(test::ReadBytes(place / "test.dat").size() > 12);
  CHECK(test::ReadBytes(out + "/test.dat") == test::ReadBytes(place / "test.dat"));
  CHECK(test::ReadBytes(out + "/last.net") == test::ReadBytes(place / "test.net"));
}

TEST_CASE("the log tells of a falling cost and a rate on its line, and is drawn") {
  const Gallery gallery;
  const std::string out = gallery.results / "out";
  REQUIRE(gallery.Train(out, "--final-rate 0.005 --valid v.png --epochs 6").exitCode == 0);
  const TrainingLog log = ReadTrainingLog(out + "/log.csv");
  REQUIRE(log.size() == 6);
  CHECK(log.back().cost < 0.95 * log.front().cost);
  CHECK(log[0].rate == doctest::Approx(0.02));
  CHECK(log[2].rate == doctest::Approx(0.02 - 0.015 * 2 / 5));
  CHECK(log.back().psnr > log.front().psnr);
  CHECK(test::ReadBytes(out + "/curve.svg") == DrawLearningCurve(log));
  CHECK(Kit({"curve", out + "/log.csv", gallery.results / "again.svg"}).exitCode == 0);
  CHECK(test::ReadBytes(gallery.results / "again.svg") == DrawLearningCurve(log));
}

TEST_CASE("a network for JPEG files learns from and is measured on pictures compressed so") {
  const Gallery gallery;
  const auto train = [&](const std::string& out, const std::string& more) {
    REQUIRE(gallery.Train(gallery.results / out, "--epochs 1 --valid v.png " + more).exitCode == 0);
    return ReadTrainingLog(gallery.results / out + "/log.csv").back().cubic;
  };
  const double plain = train("plain", ""), good = train("good", "--jpeg 90-95"), poor = train("poor", "--jpeg 20");
  CHECK(poor < good - 1);
  CHECK(good < plain);
  // Inputs are differences of pixels, which a JPEG file knows as whole grey levels.
  const auto wholeLevels = [&](const std::string& out) {
    TrainingSet set;
    LoadTrainingSet(set, gallery.results / out + "/test.dat", Folder::asGiven);
    double whole = 0;
    for (int32_t n = 0; n < set.N; ++n)
      for (int32_t i = 0; i < set.Nin; ++i) {
        const float levels = set.Record(n)[i] * 255;
        whole += std::abs(levels - std::round(levels)) < 1e-3f;
      }
    return whole / (double{1} * set.N * set.Nin);
  };
  CHECK(wholeLevels("poor") == 1);
  CHECK(wholeLevels("plain") < 0.6);
  for (const char* range : {"0-50", "30-", "101", "x", "30-95-97"})
    CHECK(gallery.Train(gallery.results / "none", std::string("--jpeg ") + range).exitCode == 2);
}

TEST_CASE("the best network is that of the best epoch, whatever came after it") {
  const Gallery gallery;
  const std::string out = gallery.results / "out";
  // A rate that grows too high.
  REQUIRE(gallery.Train(out, "--final-rate 0.2 --valid v.png --epochs 5").exitCode == 0);
  const TrainingLog log = ReadTrainingLog(out + "/log.csv");
  double best = 0;
  for (const EpochRecord& record : log) best = std::max(best, record.psnr);
  REQUIRE(log.back().psnr < best - 0.1);
  REQUIRE(log.front().psnr < best - 0.01);
  const TrainingPictures pictures({.folder = gallery.folder.Path(), .valid = "v.png"});
  const auto psnr = [&](const std::string& name) {
    NeuralNet net;
    LoadNet(net, out + name, Folder::asGiven);
    return ValidationPsnr(net, pictures.Validation(), 4);
  };
  CHECK(psnr("/best.net") == doctest::Approx(best).epsilon(1e-5));
  CHECK(psnr("/last.net") == doctest::Approx(log.back().psnr).epsilon(1e-5));
  CHECK(log.back().cubic == doctest::Approx(pictures.Validation()[0].cubic).epsilon(1e-5));
}

TEST_CASE("a training without gain ends when patience does, and stays ended") {
  const Gallery gallery;
  const std::string out = gallery.results / "out", line = "--final-rate 0.4 --valid v.png --epochs 12 --patience 2";
  const test::Outcome first = gallery.Train(out, line);
  REQUIRE(first.exitCode == 0);
  const TrainingLog log = ReadTrainingLog(out + "/log.csv");
  const int32_t best = BestEpoch(log);
  REQUIRE(log.size() < 12);
  CHECK(static_cast<int32_t>(log.size()) == best + 2);
  CHECK(Contains(first.output, "stopped: no epoch of the last 2 was better than epoch " + std::to_string(best)));
  const std::string kept = test::ReadBytes(out + "/best.net"), last = test::ReadBytes(out + "/last.net");
  CHECK(kept != last);
  const test::Outcome again = gallery.Train(out, line + " --resume");
  CHECK(again.exitCode == 0);
  CHECK(Contains(again.output, "stopped"));
  CHECK(gallery.Train(out, line + " --resume --json").output ==
        "{\"stopped\": true, \"best_epoch\": " + std::to_string(best) + "}\n");
  CHECK((test::ReadBytes(out + "/best.net") == kept && test::ReadBytes(out + "/last.net") == last));
  CHECK(gallery.Train(gallery.results / "none", "--epochs 3 --valid 0 --patience 2").exitCode == 2);
}

TEST_CASE("a training in two parts is the whole one when the rate does not fall, and what fails leaves it as it is") {
  const Gallery gallery;
  const std::string whole = gallery.results / "whole", parts = gallery.results / "parts";
  const auto train = [&](const std::string& out, const std::string& more) {
    return gallery.Train(out, (Contains(more, "-rate") ? "--epochs " : "--final-rate 0.02 --epochs ") + more);
  };
  CHECK(train(whole, "4 --valid 1").exitCode == 0);
  CHECK(train(parts, "1 --valid 1").exitCode == 0);
  const std::string first = test::ReadBytes(parts + "/last.net");
  const auto refused = [&](const std::string& more, const char* reason) {
    const test::Outcome outcome = train(parts, more);
    CHECK(outcome.exitCode == 1);
    CHECK(Contains(outcome.errors, reason));
  };
  refused("4 --valid 1", "--resume");
  CHECK(test::ReadBytes(parts + "/last.net") == first);
  CHECK(train(parts, "4 --valid 1 --resume").exitCode == 0);
  CHECK(test::ReadBytes(parts + "/last.net") == test::ReadBytes(whole + "/last.net"));
  CHECK(ReadTrainingLog(parts + "/log.csv").size() == 4);
  refused("5 --valid 1 --resume --factor 4", "other layers");
  const std::string log = test::ReadBytes(parts + "/log.csv");
  for (const char* pictures : {"--valid 1 --shrink 2", "--valid 1 --order 3", "--valid 2"})
    refused(std::string("5 --resume ") + pictures, "measured on other pictures");
  // One that loses its numbers leaves the network of the epoch before.
  refused("5 --valid 1 --resume --final-rate 1e3", "lower --rate");
  CHECK(test::ReadBytes(parts + "/last.net") == test::ReadBytes(whole + "/last.net"));
  CHECK(test::ReadBytes(parts + "/log.csv") == log);
}

TEST_CASE("a training goes on from another network, as far as the layers fit") {
  const Gallery gallery;
  const std::string first = gallery.results / "first", net = first + "/last.net";
  const test::Outcome trained = gallery.Train(first, "--valid v.png --epochs 1");
  REQUIRE(trained.exitCode == 0);
  const auto from = [&](const char* out, const std::string& more) {
    return Kit(test::Words("train " + gallery.folder.Path() + " " + (gallery.results / out) +
                           " --valid v.png --epochs 1 --rate 0 --final-rate 0 --from " + net + more));
  };
  const auto psnr = [](const test::Outcome& outcome) { return outcome.output.substr(outcome.output.find("PSNR")); };
  // At rate 0 nothing is learned.
  CHECK(psnr(from("same", "")) == psnr(trained));
  CHECK(psnr(from("wide", " --hidden 9")) == psnr(trained));
  CHECK(Contains(from("narrow", " --hidden 4").errors, "has 6 units already"));
  CHECK(from("other", " --inputs 24").exitCode == 2);
}

TEST_CASE("an interrupt keeps the network and says how to go on") {
  const Gallery gallery;
  const std::string out = gallery.results / "out";
  test::TerminalRun run(
      {.arguments = gallery.Line(out, "--valid 1 --epochs 1000000"), .executable = test::NorvkitExecutable()});
  for (int i = 0; i < 400 && test::ReadBytes(out + "/curve.svg").empty(); ++i)
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  run.Signal(SIGINT);
  CHECK(run.Wait() == 130);
  CHECK(Contains(run.Shown(), "training was stopped"));
  NeuralNet net;
  LoadNet(net, out + "/last.net", Folder::asGiven);
  const size_t epochs = ReadTrainingLog(out + "/log.csv").size();
  CHECK(epochs > 0);
  CHECK(gallery.Train(out, "--valid 1 --resume --epochs " + std::to_string(epochs + 1)).exitCode == 0);
  CHECK(ReadTrainingLog(out + "/log.csv").size() == epochs + 1);
}

TEST_CASE("pictures that cannot serve are passed over with a warning, and none at all is an error") {
  const Gallery gallery;
  gallery.Draw("tiny.png", 100, 13);
  test::WriteBytes(gallery.folder / "broken.png", "no picture");
  const std::string out = gallery.results / "out";
  const test::Outcome outcome = gallery.Train(out, "--valid v.png --epochs 1");
  CHECK(outcome.exitCode == 0);
  CHECK(Contains(outcome.errors, "tiny.png is left out: 100 x 13 pixels, less than 14"));
  CHECK(Contains(outcome.errors, "broken.png"));
  CHECK(Contains(gallery.Train(gallery.results / "b", "--valid v.png --epochs 1 --shrink 5").errors, "less than 70"));

  const test::ScratchFolder empty;
  const std::string results = gallery.results.Path(), nowhere = " " + results + "/nowhere",
                    train = "train " + gallery.folder.Path() + nowhere;
  test::WriteBytes(gallery.results / "log.csv", "epoch,rate\n1,2\n");
  const std::tuple<std::string, int, const char*> failures[] = {
      {"train " + empty.Path() + nowhere, 1, "there are no pictures in"},
      {"train " + empty / "missing" + nowhere, 1, "cannot read the folder"},
      {train + " --valid w.png", 1, "no picture w.png"},
      {train + " --valid 9", 1, "left to train on"},
      {train + " --valid 0", 1, "held out"},
      {train + " --order -7", 2, "no such filter"},
      {train + " --layout 50", 2, "inputs"},
      {"curve " + results + "/log.csv " + results + "/c.svg", 1, "no training log"}};
  for (const auto& [line, exitCode, reason] : failures) {
    const test::Outcome failed = Kit(test::Words(line));
    CHECK(failed.exitCode == exitCode);
    CHECK(Contains(failed.errors, reason));
  }
  // Room for the pairs of one picture.
  CHECK(test::Shell(gallery.results, "ulimit -f 200; exec $k train " + gallery.folder.Path() +
                                         " full --layout 8 --hidden 6 --valid 1 --epochs 1")
            .exitCode == 1);
  CHECK(!std::filesystem::exists(gallery.results / "full/test.dat.unfinished"));
}

TEST_CASE("a log comes back from its file, and what is no log is refused with its line") {
  const test::ScratchFolder folder;
  const TrainingLog log = {{1, 0.01, 0.25, 1000, 2.5, 30.25, 29.5, 29.75},
                           {2, 0.005, 0.125, 1200, 2, INFINITY, 29, 30}};
  WriteTrainingLog(folder / "log.csv", log);
  const TrainingLog back = ReadTrainingLog(folder / "log.csv");
  REQUIRE(back.size() == 2);
  CHECK(back[0].rate == 0.01);
  CHECK(back[0].lanczos == 29.75);
  CHECK(std::isinf(back[1].psnr));
  const std::string good = test::ReadBytes(folder / "log.csv");
  for (const char* line : {"3,1,2,3", "3,1,2,3,4,5,6,x", "4,1,2,3,4,5,6,7", "3,1,2,3,4,5,6,7,8", "3,1,2,3,4,5,6,"}) {
    CAPTURE(line);
    test::WriteBytes(folder / "bad.csv", good + line + "\n");
    CHECK_THROWS_WITH_AS(ReadTrainingLog(folder / "bad.csv"),
                         ("line 4 of the training log " + folder / "bad.csv" + " makes no sense").c_str(), Failure);
  }
}

TEST_CASE("a learning curve is well-formed, whatever the log holds, and higher values stand higher") {
  TrainingLog log;
  CHECK(IsWellFormed(DrawLearningCurve(log)));
  for (int32_t epoch = 1; epoch <= 30; ++epoch) {
    const double psnr = epoch == 20 ? NAN : 25 + epoch * 0.1;
    log.push_back({epoch, 0.01, 1.0 / epoch, 1e5, 1, psnr, 26, 27});
    CAPTURE(epoch);
    CHECK(IsWellFormed(DrawLearningCurve(log)));
  }
  const std::string drawing = DrawLearningCurve(log);
  CHECK(!Contains(drawing, "nan"));
  CHECK(Contains(drawing, "Best: epoch 30, 28.00 dB; cubic 26.00 dB, Lanczos 27.00 dB"));
  const auto height = [&](const char* name) {
    const size_t end = drawing.find(std::string(">") + name + "</text>"), y = drawing.rfind("y='", end);
    return std::stod(drawing.substr(y + 3));
  };
  CHECK(height("network") < height("Lanczos"));
  CHECK(height("Lanczos") < height("cubic"));
  CHECK(height("cubic") - height("Lanczos") == doctest::Approx(height("Lanczos") - height("network")).epsilon(0.01));
}

TEST_CASE("a search trains every seed as alone, keeps the best, and trains nothing twice") {
  const Gallery kit;
  const std::string out = kit.results / "search";
  const auto search = [&](const std::string& more) {
    return Kit(test::Words("train " + kit.folder.Path() + " " + out + " --layout 8 --hidden 6 --epochs 2 " + more));
  };
  CHECK(search("--seeds 2-1").exitCode == 2);
  CHECK(search("--seeds 4,2-3").exitCode == 0);
  const std::string table = test::ReadBytes(out + "/seeds.csv");
  CHECK(table.starts_with("seed,epochs,best epoch,psnr\n2,2,"));
  double best = 0;
  std::string seed;
  for (const char* each : {"2", "3", "4"}) {
    const size_t row = table.find(std::string("\n") + each + ",");
    const double psnr = std::stod(table.substr(table.find('.', row) - 2));
    if (psnr > best) seed = each;
    best = std::max(best, psnr);
  }
  CHECK(test::ReadBytes(out + "/best.net") == test::ReadBytes(out + "/seed-" + seed + "/best.net"));
  const std::string trained = test::ReadBytes(out + "/seed-3/last.net");
  test::WriteBytes(out + "/seed-3/last.net", trained + "untouched");
  const test::Outcome again = search("--seeds 1-4");
  CHECK((Contains(again.output, "trained already: 3 of 4 seeds") && Contains(again.output, "seed 1: epoch 2 of 2")));
  CHECK(test::ReadBytes(out + "/seed-3/last.net") == trained + "untouched");
  CHECK(Contains(search("--seeds 1-4 --rate 0.5").errors, "other settings"));
}
