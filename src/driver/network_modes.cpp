// Modes 10 and 13: enlargement by a network, and what its weights are like.
#include "driver/modes.h"
#include "driver/report.h"
#include "net/enlarge_file.h"
#include "net/net_file.h"
#include "net/neural_net.h"
#include "platform/console.h"
#include "platform/paths.h"

namespace norv {

Ending EnlargeByNetwork(const Request& request) {
  constexpr ParameterNames in = kEnlargementParameters;
  const Arguments& a = request.arguments;
  const int32_t average = a.Integer(in["AVERAGE"]), threads = a.Integer(in["THREADS"]);
  const int32_t shortcut = a.Integer(in["SHORTCUT"]);
  Say("\nNeural Net Enlargement\n\nShortcut = %d, Average = %d, Threads = %d", shortcut, average, threads);
  NeuralNet net;
  LoadNet(net, "net.net", Folder::executable);
  NetEnlargeFile(PathOf("input.fdib", Folder::executable), PathOf("output.fdib", Folder::executable), net,
                 shortcut != 0, average != 0, threads);
  return Ending::report;
}

Ending ReportNetStatistics(const Request&) {
  NeuralNet net;
  try {
    LoadNet(net, "test.net", Folder::executable);
  } catch (const char*) {
    SayAndWaitForOneKey("\nNo test.net. Abort! Press any key.");
    return Ending::silent;
  }
  float mean = 0, deviation = 0;
  NetWeightStatistics(net, mean, deviation);
  Say("\nMean = %f\n\nStd. Dev. = %f", Printable(mean), Printable(deviation));
  SayAndWait("\n\n\nDone!\nPress any key 3 times to exit.", true);
  return Ending::silent;
}

}  // namespace norv
