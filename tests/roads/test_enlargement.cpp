// Mode 10 from the files that it reads to the file that it writes.
#include "support/nets.h"
#include "support/plain_enlarge.h"
#include "support/process.h"
#include "support/test.h"

namespace {

const std::string kSaid = "\nMode = 10\nNeural Net Enlargement\n\n";

// A folder with net.net and input.fdib, if there are any.
struct Workplace {
  Workplace(const std::string& net, const std::string& image) {
    if (!net.empty()) WriteBytes(folder / "net.net", net);
    if (!image.empty()) WriteBytes(folder / "input.fdib", image);
    WriteBytes(folder / "output.fdib", "old");
  }
  Outcome Enlarge(const std::string& average = "0", const std::string& threads = "1",
                  const std::string& shortcut = "0") const {
    return RunIn(folder, "10 " + average + " " + threads + " " + shortcut);
  }
  std::string Result() const { return ReadBytes(folder / "output.fdib"); }

  ScratchFolder folder;
};

NeuralNet SomeNet(int32_t kind = 14) { return RandomRecord(24, {6, 4}, {kind}); }

}  // namespace

TEST_CASE("mode 10: parameters are average, threads, shortcut, and the result is what the plain form gives") {
  const NeuralNet net = SomeNet();
  const FloatImage image = RandomFloatImage(6, 17, 23);
  const Workplace place(NetBytes(net), ImageBytes(image));
  const auto check = [&](const char* average, const char* threads, const char* shortcut, const FloatImage& expected) {
    CheckReported(place.Enlarge(average, threads, shortcut),
                  kSaid + "Shortcut = " + shortcut + ", Average = " + average + ", Threads = " + threads);
    CHECK(place.Result() == ImageBytes(expected));
  };
  for (const char* one : {"0", "1"}) check("0", one, "0", PlainImage(image, net, false, false));
  check("2", "1", "0", PlainImage(image, net, false, true));
  check("0", "1", "-1", PlainImage(image, net, true, false));
  check("0", "4", "0", PlainBands(image, net, false, false, 5));
  check("0", "-3", "0", PlainImage(FloatImage(12, 34, 23), net, false, false));
}

TEST_CASE("mode 10: without a network, or with one that cannot be evaluated, it fails and the old result stays") {
  const std::string good = NetBytes(SomeNet());
  for (const std::string& net : {std::string(), NetBytes(SomeNet(18)), good.substr(0, good.size() - 1)}) {
    const Workplace place(net, ImageBytes(RandomFloatImage(4, 4, 23)));
    const Outcome outcome = place.Enlarge();
    CHECK((outcome.exitCode == 1 && outcome.errors.size() > 10));
    CHECK(outcome.output == kBanner + kSaid + "Shortcut = 0, Average = 0, Threads = 1");
    CHECK(place.Result() == "old");
  }
}

TEST_CASE("mode 10: a missing picture is an empty one; a result that cannot be written ends the run as usual") {
  const Workplace empty(NetBytes(SomeNet()), ""), blocked(NetBytes(SomeNet()), ImageBytes(RandomFloatImage(4, 4, 23)));
  fs::remove(blocked.folder / "output.fdib");
  fs::create_directories(blocked.folder / "output.fdib/taken");
  for (const auto& [place, warning] : {std::pair{&empty, "input.fdib"}, {&blocked, "output.fdib"}}) {
    const Outcome outcome = place->Enlarge();
    CheckEnded(outcome, 0, warning);
    CHECK(IsReported(outcome.output, kSaid + "Shortcut = 0, Average = 0, Threads = 1"));
  }
  CHECK(empty.Result() == ImageBytes(FloatImage()));
}

TEST_CASE("standard streams that are closed or full leave the result alone") {
  const NeuralNet net = SomeNet();
  const FloatImage image = RandomFloatImage(4, 4, 23);
  const Workplace place(NetBytes(net), ImageBytes(image));
  Command command = NorvIn(place.folder, "10 0 1 0");
  for (const std::string closed : {"0", "1", "2", "012", "full"}) {
    fs::remove(place.folder / "output.fdib");
    command.output = closed == "full" ? "/dev/full" : "";
    command.closed = closed == "full" ? "" : closed;
    CHECK(Run(command).exitCode == 0);
    CHECK(place.Result() == ImageBytes(PlainImage(image, net, false, false)));
  }
}
