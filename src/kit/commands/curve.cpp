#include "kit/commands/command.h"
#include "kit/commands/shared_rows.h"
#include "kit/formats/bytes.h"
#include "kit/guidance/manner.h"
#include "kit/pictures/destination.h"
#include "kit/training/learning_curve.h"

namespace norv {
namespace {

struct Settings {
  std::string log, out;
  bool overwrite = false;
};

Options Rows(Settings& settings) {
  return {{.name = "LOG", .target = &settings.log, .help = "the log.csv of a training"},
          {.name = "OUT", .target = &settings.out, .help = "the .svg file to write"},
          OverwriteRow(settings.overwrite)};
}

void Run(const Settings& settings) {
  RequireFree(settings.out, settings.overwrite, settings.log);
  const std::string drawing = DrawLearningCurve(ReadTrainingLog(settings.log));
  WriteBytes(settings.out, {drawing.begin(), drawing.end()});
  SayWritten(settings.log, settings.out);
}

}  // namespace

Command CurveCommand() {
  return MakeCommand<Settings>({.name = "curve",
                                .purpose = "Draw the learning curve of a training again",
                                .examples = "norvkit curve trained/log.csv curve.svg"},
                               Rows, Run);
}

}  // namespace norv
