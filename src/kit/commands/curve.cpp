#include "kit/commands/command.h"
#include "kit/formats/bytes.h"
#include "kit/training/learning_curve.h"

namespace norv {
namespace {

struct CurveOptions {
  std::string log, out;
};

void Declare(CLI::App& command, CurveOptions& options) {
  command.add_option("LOG", options.log, "the log.csv of a training")->required();
  command.add_option("OUT", options.out, "the .svg file to write")->required();
}

void Run(const CurveOptions& options) {
  const std::string drawing = DrawLearningCurve(ReadTrainingLog(options.log));
  WriteBytes(options.out, {drawing.begin(), drawing.end()});
}

}  // namespace

CLI::App& AddCurve(CLI::App& kit) {
  return AddCommand<CurveOptions>(kit, "curve", "Draw the learning curve of a training again",
                                  "norvkit curve trained/log.csv curve.svg", Declare, Run);
}

}  // namespace norv
