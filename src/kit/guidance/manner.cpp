#include "kit/guidance/manner.h"

#include <atomic>

#include "kit/commands/command.h"
#include "kit/failure.h"
#include "kit/formats/streams.h"
#include "kit/guidance/json.h"
#include "platform/console.h"

namespace norv {
namespace {

std::atomic<bool> errorWasSaid{false};

}  // namespace

Manner& RunManner() {
  static Manner manner;
  return manner;
}

Options WithMannerRows(Options rows) {
  static constexpr char kHeading[] = "Of every command";
  Manner& manner = RunManner();
  const Options own = {{.name = "--json",
                        .target = &manner.json,
                        .help = "an object a line on standard output, for programs, and nothing else there",
                        .heading = kHeading,
                        .aside = true},
                       {.name = "--quiet",
                        .target = &manner.quiet,
                        .help = "no progress, no word but errors",
                        .excludes = "--verbose",
                        .heading = kHeading,
                        .aside = true},
                       {.name = "--verbose",
                        .target = &manner.verbose,
                        .help = "say more: what was chosen, how long its parts took",
                        .heading = kHeading,
                        .aside = true},
                       {.name = "--threads",
                        .target = &manner.threads,
                        .unit = "N",
                        .check = Between{1, 1024},
                        .help = "at the same time; no result depends on it",
                        .byDefault = "all cores",
                        .heading = kHeading,
                        .aside = true},
                       {.name = "--config",
                        .target = &manner.config,
                        .unit = "FILE",
                        .help = "options from a TOML file: KEY = VALUE, or below [COMMAND] for that command only; what "
                                "the command line says wins",
                        .heading = kHeading,
                        .aside = true}};
  rows.insert(rows.end(), own.begin(), own.end());
  return rows;
}

void SayRow(const JsonObject& row, bool isError) {
  if (isError) errorWasSaid = true;
  Say("%s\n", row.Line().c_str());
}

void RefuseRowsBesidePicture(const std::string& output) {
  if (RunManner().json && IsStandard(output))
    throw WrongUsage("--json and a picture cannot both go to standard output: name a file");
}

void SayWritten(const std::string& input, const std::string& output) {
  if (!RunManner().json) return;
  JsonObject row;
  if (!input.empty()) row.Text("input", input);
  SayRow(row.Text("output", output));
}

void SayWritten(const std::string& input, const std::string& output, int32_t width, int32_t height) {
  if (!RunManner().json) return;
  JsonObject row;
  if (!input.empty()) row.Text("input", input);
  SayRow(row.Text("output", output).Whole("width", width).Whole("height", height));
}

bool ErrorWasSaid() { return errorWasSaid; }

}  // namespace norv
