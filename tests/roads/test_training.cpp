// Mode 9 as the graphical program runs it: messages, files, backups, interrupts.
#include <chrono>
#include <regex>

#include "support/nets.h"
#include "support/places.h"
#include "support/process.h"
#include "support/samples.h"
#include "support/test.h"
#include "train/train.h"
#include "train/trainer.h"

namespace {

const std::string kReminder =
    "\n\n" + std::string(43, '-') + " REMINDER " + std::string(43, '-') +
    "\nNow, you can continue to use NorvImageProcessor.exe because it doesn't wait for this to complete.\n";

// A folder with test.net and test.dat.
struct Workplace {
  explicit Workplace(int32_t N = 200, const NeuralNet& given = RandomRecord(8, {12, 4}, kAllKinds))
      : set(MakeSamples(N, 8, given.LastNi())), net(given) {
    SaveNet(net, folder / "test.net", Folder::asGiven);
    WriteBytes(folder / "test.dat", FileBytes(set));
  }
  std::string Bytes(const std::string& name) const { return ReadBytes(folder / name); }
  // With nothing on standard error.
  Outcome Train(const std::string& words) const {
    const Outcome outcome = RunIn(folder, "9 " + words);
    CheckEnded(outcome, 0);
    return outcome;
  }

  ScratchFolder folder;
  TrainingSet set;
  NeuralNet net;
};

std::string Request(const std::string& numbers) {
  return kBanner + "\nMode = 9\n" + numbers + "\nSoundNotification = 0\n";
}

constexpr char kFirstBackup[] = "\nBackup file, previousprevioustest.net, is written.";
constexpr char kSecondBackup[] = "\nBackup file, previoustest.net, is written.";

// Until the terminal shows the text, at most 10 seconds.
bool WaitForText(TerminalRun& run, const std::string& text) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
  while (!Contains(run.Shown(), text))
    if (std::chrono::steady_clock::now() > deadline) return false;
  return true;
}

}  // namespace

TEST_CASE("mode 9: a run says what it does, rotates the backups and writes what the plain form learns") {
  Workplace place;
  const std::string original = place.Bytes("test.net"), older = NetBytes(RandomRecord(5, {3}, {1}));
  WriteBytes(place.folder / "previoustest.net", older);
  const Outcome outcome = place.Train("3 0.05 0.01 2 1 0.02 0.5 4 0");
  const std::string protocol = OutputOf([&] {
    TrainNet(place.net, place.set, {3, 0.05f, 0.01f, 2, 1, 0.02f, 0.5f, 1}, TrainedForm::record);
  });
  const std::string expected = Request(
                                   "iters = 3, nu0 = 0.050000, nuf = 0.010000, CostSelection = 2, Alternate = 1,\nClip "
                                   "= 0.020000, Momentum = 0.500000, Number of Threads = 4") +
                               kFirstBackup + kSecondBackup + kReminder + protocol +
                               "\nResults were written to test.net\n";
  CHECK(outcome.output.substr(0, expected.size()) == expected);
  const std::regex ending(
      R"(\n[\d.]+ secs, [\d.]+ mins\., [\d.]+ hrs\., [\d.]+ days\nDone!\nPress any key 3 times to exit\.)");
  CHECK(std::regex_match(outcome.output.substr(std::min(expected.size(), outcome.output.size())), ending));
  const std::regex epochs(
      R"(^\n1 of 3  \(nu = 0\.050000\)  Cost = \d\.\d{6}e[-+]\d\d\n2 of 3  \(nu = 0\.030000\)  Cost = \S+,     Change = \S+\n3 of 3)");
  CHECK(std::regex_search(protocol, epochs));
  CHECK(place.Bytes("test.net") == NetBytes(place.net));
  CHECK(place.Bytes("previoustest.net") == original);
  CHECK(place.Bytes("previousprevioustest.net") == older);
  CHECK(place.Bytes("test.dat") == FileBytes(place.set));
}

TEST_CASE("mode 9: without an older network an empty one is kept; epochs that shuffle go on from each other's order") {
  Workplace place(300);
  const Outcome outcome = place.Train("3 0.05 0.01 0 3 0 0 1 0");
  CHECK(Contains(outcome.output, std::string("\nNo previoustest.net") + kFirstBackup + kSecondBackup + kReminder));
  CHECK(place.Bytes("previousprevioustest.net") == std::string(84, '\0'));
  CHECK_FALSE(fs::exists(place.folder / "temp.dat"));
  CHECK(place.Bytes("test.dat") == FileBytes(place.set));
  // One epoch after the other by hand, its rate as the whole run's.
  RandomGenerator generator;
  for (const float nu : {0.05f, 0.5f * (0.01f - 0.05f) + 0.05f, (0.01f - 0.05f) + 0.05f}) {
    place.set = Shuffled(place.set, generator);
    const auto trainer = MakeRecordTrainer(place.net, 0, 0, 1);
    trainer->SetRate(nu, 0);
    place.net.Cost = 0;
    for (int32_t i = 0; i < place.set.N; ++i) trainer->Learn(place.set.Input(i), place.set.Target(i));
    place.net.Cost = std::sqrt(place.net.Cost * (1 / 2400.0f));
  }
  CHECK(place.Bytes("test.net") == NetBytes(place.net));
}

TEST_CASE("mode 9: what cannot be trained is said, waits for one key and changes nothing but the backups") {
  const Workplace place;
  const std::string net = place.Bytes("test.net"), data = FileBytes(place.set);
  const std::string words = "10 0.5 1e-3 2 -1 nan x 3 0", none = "\nNo previoustest.net",
                    missing = "\nNo test.dat. Abort! Press any key.",
                    incompatible = "\n\ntest.net and test.dat are incompatible.\n\nN0 = 8, Nin = ",
                    said = Request(
                        "iters = 10, nu0 = 0.500000, nuf = 0.001000, CostSelection = 2, Alternate = -1,\nClip = nan, "
                        "Momentum = 0.000000, Number of Threads = 3");
  for (const auto& [bytes, last] : {
           std::pair{std::string(), missing},
           {data.substr(0, 5000), missing},
           // The sizes come first: nobody looks whether there are records.
           {FileBytes(MakeSamples(3, 24, 4)).substr(0, 12), incompatible + "24\nLastNi = 4, Ny = 4\nN = 3"},
           {FileBytes(MakeSamples(2, 8, 16)), incompatible + "8\nLastNi = 4, Ny = 16\nN = 2"},
           {FileBytes(MakeSamples(0, 8, 4)), incompatible + "8\nLastNi = 4, Ny = 4\nN = 0"},
       }) {
    WriteBytes(place.folder / "test.dat", bytes);
    const Outcome outcome = RunIn(place.folder, "9 " + words);
    CHECK(outcome.exitCode == 0);
    CHECK(outcome.output == said + none + kFirstBackup + kSecondBackup + last);
    CHECK(place.Bytes("test.net") == net);
    fs::remove(place.folder / "previoustest.net");
  }
  fs::remove(place.folder / "test.net");
  CHECK(RunIn(place.folder, "9 " + words).output ==
        said + none + kFirstBackup + "\nNo test.net. Abort! Press any key.");
}

TEST_CASE("mode 9: a network without layers fits a set without targets and learns nothing") {
  NeuralNet net;
  BuildNet(net, 8, {});
  const Workplace place(5, net);
  for (const std::string threads : {"1", "2"}) {
    const Outcome outcome = place.Train("2 0.1 0.1 0 0 0 0.5 " + threads + " 0");
    CHECK(Contains(outcome.output, "\n2 of 2  (nu = 0.100000)  Cost = 0.000000e+00,"));
    CHECK(place.Bytes("test.net") == NetBytes(net));
  }
}

TEST_CASE("mode 9: failures that nobody handles end with their reason, the network kept") {
  Workplace place;
  const auto fails = [&](const std::string& reason) {
    const std::string net = place.Bytes("test.net");
    const Outcome outcome = RunIn(place.folder, "9 2 0.1 0.1 0 3 0 0 1 0");
    CheckEnded(outcome, 1, reason);
    CHECK_FALSE(Contains(outcome.output, "Results were written"));
    CHECK(place.Bytes("test.net") == net);
  };
  fs::create_symlink("/dev/full", place.folder / "temp.dat");
  fails("No space left");
  CHECK_FALSE(fs::is_symlink(place.folder / "temp.dat"));
  place.net.layers[0].units[3].ActivationKind = 18;
  SaveNet(place.net, place.folder / "test.net", Folder::asGiven);
  fails("activation");
}

TEST_CASE("mode 9: the first interrupt saves what was learned; no more words, no key") {
  for (const int signal : {SIGINT, SIGTERM}) {
    const Workplace place(EmulatorWords().empty() ? 200000 : 2000);  // epochs of a fraction of a second
    TerminalRun run(NorvIn(place.folder, "9 1000000 0.001 0.001 0 3 0 0 1 0"));
    CHECK(WaitForText(run, "\n2 of "));
    CHECK(WaitForText(run, " of 1000000, "));
    run.Signal(signal);
    CHECK(WaitForText(run, "norv: training was stopped"));
    CHECK(run.Wait() == 130);
    const std::string shown = run.Shown();
    CHECK_FALSE((Contains(shown, "Results were written") || fs::exists(place.folder / "temp.dat")));
    CHECK(place.Bytes("test.net") != NetBytes(place.net));
    // The cost of the last whole epoch is the last one shown.
    NeuralNet net;
    LoadNet(net, place.folder / "test.net", Folder::asGiven);
    char cost[64];
    std::snprintf(cost, sizeof cost, "Cost = %e,", net.Cost);
    CHECK(shown.find(cost) == shown.rfind("Cost = "));
  }
}

TEST_CASE("mode 9: the second interrupt ends at once and leaves the old network") {
  // Every sample takes a while, so that the first wish is not met at once.
  const Workplace place(20000, RandomRecord(8, {4000, 4000, 4}, {14}));
  TerminalRun run(NorvIn(place.folder, "9 2 0.001 0.001 0 3 0 0 1 0"));
  CHECK(WaitForText(run, "REMINDER"));
  std::this_thread::sleep_for(std::chrono::milliseconds(200));
  run.Signal(SIGINT);
  run.Signal(SIGTERM);
  CHECK(run.Wait() > 128);
  CHECK_FALSE((Contains(run.Shown(), "stopped") || fs::exists(place.folder / "temp.dat")));
  CHECK(place.Bytes("test.net") == NetBytes(place.net));
}
