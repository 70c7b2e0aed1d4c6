// Modes 9, 11 and 12: training, its samples and their order.
#include "driver/modes.h"
#include "driver/report.h"
#include "net/net_file.h"
#include "platform/console.h"
#include "platform/paths.h"
#include "train/train.h"
#include "train/training_pairs.h"

namespace norv {
namespace {

TrainingOptions DecodeTrainingOptions(const Arguments& a) {
  constexpr ParameterNames in = kTrainingParameters;
  TrainingOptions options;
  options.iters = a.Integer(in["ITERS"]);
  options.nu0 = a.Float(in["NU0"]);
  options.nuf = a.Float(in["NUF"]);
  options.costSelection = a.Integer(in["COST_SELECTION"]);
  options.alternate = a.Integer(in["ALTERNATE"]);
  options.clip = a.Float(in["CLIP"]);
  options.momentum = a.Float(in["MOMENTUM"]);
  options.threads = a.Integer(in["THREADS"]);
  return options;
}

void SayTrainingOptions(const TrainingOptions& o, int32_t sound) {
  Say("\niters = %d, nu0 = %f, nuf = %f, CostSelection = %d, Alternate = %d,\n"
      "Clip = %f, Momentum = %f, Number of Threads = %d\nSoundNotification = %d\n",
      o.iters, Printable(o.nu0), Printable(o.nuf), o.costSelection, o.alternate, Printable(o.clip),
      Printable(o.momentum), o.threads, sound);
}

void SaveBackup(const NeuralNet& net, const char* name) {
  SaveNet(net, name, Folder::executable);
  Say("\nBackup file, %s, is written.", name);
}

// That there is none yet is no failure; that it is damaged is one, and LoadNet says why.
bool LoadPrevious(NeuralNet& net) {
  constexpr char kName[] = "previoustest.net";
  if (!FileIn(PathOf(kName, Folder::executable)).IsOpen()) return false;
  try {
    LoadNet(net, kName, Folder::executable);
    return true;
  } catch (const char*) {
    return false;
  }
}

// The two older generations move on by one; the network to be trained remains in net. False, all said, when there is
// none.
bool RotateBackups(NeuralNet& net) {
  if (!LoadPrevious(net)) Say("\nNo previoustest.net");
  SaveBackup(net, "previousprevioustest.net");
  try {
    LoadNet(net, "test.net", Folder::executable);
  } catch (const char*) {
    SayAndWaitForOneKey("\nNo test.net. Abort! Press any key.");
    return false;
  }
  SaveBackup(net, "previoustest.net");
  return true;
}

bool AreCompatible(const NeuralNet& net, const TrainingHeader& set) {
  if (net.N0 == set.Nin && net.LastNi() == set.Ny && set.N != 0) return true;
  Say("\n\ntest.net and test.dat are incompatible.\n\nN0 = %d, Nin = %d\nLastNi = %d, Ny = %d\nN = %d", net.N0, set.Nin,
      net.LastNi(), set.Ny, set.N);
  WaitForKeys(1);
  return false;
}

// The set that fits the network: sizes are compared before anybody looks at the records. False, all said, when there is
// none.
bool LoadFittingSet(const NeuralNet& net, TrainingSet& set) {
  constexpr char kName[] = "test.dat";
  try {
    FileIn file(PathOf(kName, Folder::executable));
    if (!AreCompatible(net, ReadTrainingHeader(file))) return false;
    LoadTrainingSet(set, kName, Folder::executable);
    return true;
  } catch (const char*) {
    SayAndWaitForOneKey("\nNo test.dat. Abort! Press any key.");
    return false;
  }
}

constexpr char kReminder[] =
    "\n\n------------------------------------------- REMINDER -------------------------------------------\n"
    "Now, you can continue to use NorvImageProcessor.exe because it doesn't wait for this to complete.\n";

// Failures of modes 11 and 12 end in a message and a key press.
template <typename Operation>
Ending ReportFailure(const Operation& operation) {
  try {
    operation();
    return Ending::report;
  } catch (const char* reason) {
    SayAndWaitForOneKey(std::string("\n") + reason);
    return Ending::silent;
  }
}

}  // namespace

Ending RunTraining(const Request& request) {
  const TrainingOptions options = DecodeTrainingOptions(request.arguments);
  const int32_t sound = request.arguments.Integer(kTrainingParameters["SOUND"]);
  SayTrainingOptions(options, sound);
  NeuralNet net;
  TrainingSet set;
  if (!RotateBackups(net) || !LoadFittingSet(net, set)) return Ending::silent;
  if (const char* reason = WhyNotTrainable(net, options)) throw reason;
  Say("%s", kReminder);
  const TrainingEnd end = TrainNet(net, set, options);
  ClearTrainingSet(set);
  SaveNet(net, "test.net", Folder::executable);
  if (end == TrainingEnd::interrupted) {
    Complain("training was stopped; what was learned so far is in test.net");
    return Ending::interrupted;
  }
  Say("\nResults were written to test.net\n");
  SayElapsed(request.start);
  SayAndWait("\nDone!\nPress any key 3 times to exit.", sound != 0);
  return Ending::silent;
}

Ending AddTrainingPairs(const Request& request) {
  constexpr ParameterNames in = kPairsParameters;
  const Arguments& a = request.arguments;
  const int32_t index = a.Integer(in["INDEX"]), total = a.Integer(in["TOTAL"]);
  const int32_t Nin = a.Integer(in["INPUTS"]), Ny = a.Integer(in["OUTPUTS"]);
  const int32_t shrinkOrder = a.Integer(in["SHRINK_ORDER"]);
  // The index may be any number, the largest included: the next one is formed without overflow.
  Say("\n%d of %d", static_cast<int32_t>(static_cast<uint32_t>(index) + 1), total);
  Say("\nShrinkOrder = %d", shrinkOrder);
  return ReportFailure([&] {
    matrix picture;
    picture.load("standard.mat", false, Folder::executable);
    const std::string path = PathOf("test.dat", Folder::executable);
    if (index == 0 && Nin != 0)
      WriteTrainingPairs(path, picture, Nin, Ny, shrinkOrder);
    else
      AppendTrainingPairs(path, picture, shrinkOrder);
    RemoveFile(PathOf("standard.mat", Folder::executable));
  });
}

Ending ShuffleTrainingSet(const Request&) {
  Say("\nShuffling Data");
  return ReportFailure([] { ShuffleTrainingFile(PathOf("test.dat", Folder::executable)); });
}

}  // namespace norv
