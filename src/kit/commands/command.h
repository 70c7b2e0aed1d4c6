// The companion's commands: one file each, one row each in the table of kit.cpp.
#pragma once

#include <CLI/CLI.hpp>
#include <memory>
#include <string>

#include "kit/pictures/picture.h"

namespace norv {

// A command's options live as long as its parser: Options is a plain struct of what the command line sets, run does
// the work once everything has been parsed.
template <typename Options>
CLI::App& AddCommand(CLI::App& kit, const char* name, const char* purpose, const char* example,
                     void (*declare)(CLI::App&, Options&), void (*run)(const Options&)) {
  CLI::App& command = *kit.add_subcommand(name, purpose);
  const auto options = std::make_shared<Options>();
  command.option_defaults()->always_capture_default();
  declare(command, *options);
  command.footer(std::string("Example:\n  ") + example);
  command.callback([options, run] { run(*options); });
  return command;
}

// Ends the parsing with exit code 2 and this reason.
[[noreturn]] void RefuseUsage(const std::string& reason);

// --bits and --quality of commands that write pictures.
void DeclareWriteChoice(CLI::App& command, WriteChoice& choice);

CLI::App& AddImport(CLI::App& kit);
CLI::App& AddExport(CLI::App& kit);
CLI::App& AddInfo(CLI::App& kit);
CLI::App& AddCompare(CLI::App& kit);
CLI::App& AddTestCard(CLI::App& kit);
CLI::App& AddShrink(CLI::App& kit);
CLI::App& AddEnlarge(CLI::App& kit);
CLI::App& AddRestore(CLI::App& kit);
CLI::App& AddDenoise(CLI::App& kit);
CLI::App& AddNoise(CLI::App& kit);
CLI::App& AddNewNet(CLI::App& kit);
CLI::App& AddTrain(CLI::App& kit);
CLI::App& AddCurve(CLI::App& kit);

}  // namespace norv
