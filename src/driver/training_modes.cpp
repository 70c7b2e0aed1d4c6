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
  return {a.Integer(2), a.Float(3), a.Float(4), a.Integer(5), a.Integer(6), a.Float(7), a.Float(8), a.Integer(9)};
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

bool LoadSet(TrainingSet& set) {
  try {
    LoadTrainingSet(set, "test.dat", Folder::executable);
    return true;
  } catch (const char*) {
    SayAndWaitForOneKey("\nNo test.dat. Abort! Press any key.");
    return false;
  }
}

bool AreCompatible(const NeuralNet& net, const TrainingSet& set) {
  if (net.N0 == set.Nin && net.LastNi() == set.Ny && set.N != 0) return true;
  Say("\n\ntest.net and test.dat are incompatible.\n\nN0 = %d, Nin = %d\nLastNi = %d, Ny = %d\nN = %d", net.N0, set.Nin,
      net.LastNi(), set.Ny, set.N);
  WaitForKeys(1);
  return false;
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
  const int32_t sound = request.arguments.Integer(10);
  SayTrainingOptions(options, sound);
  NeuralNet net;
  TrainingSet set;
  if (!RotateBackups(net) || !LoadSet(set) || !AreCompatible(net, set)) return Ending::silent;
  if (const char* reason = WhyNotEvaluable(net)) throw reason;
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
  const Arguments& arguments = request.arguments;
  const int32_t index = arguments.Integer(2), Nin = arguments.Integer(4), Ny = arguments.Integer(5);
  const int32_t shrinkOrder = arguments.Integer(6);
  // The index may be any number, the largest included: the next one is formed without overflow.
  Say("\n%d of %d", static_cast<int32_t>(static_cast<uint32_t>(index) + 1), arguments.Integer(3));
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
