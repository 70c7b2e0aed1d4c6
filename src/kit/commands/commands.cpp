// The table of commands.
#include <algorithm>

#include "kit/commands/command.h"

namespace norv {

Command ImportCommand();
Command ExportCommand();
Command ConvertCommand();
Command InfoCommand();
Command CompareCommand();
Command VerifyCommand();
Command TestCardCommand();
Command ShrinkCommand();
Command EnlargeCommand();
Command RestoreCommand();
Command DenoiseCommand();
Command NoiseCommand();
Command NewNetCommand();
Command TrainCommand();
Command CurveCommand();
Command FilterCommand();
Command RankCommand();
Command ModelsCommand();
Command CompletionsCommand();

namespace {

constexpr char kInAndOut[] = "Pictures in and out";
constexpr char kScale[] = "Smaller and larger";
constexpr char kNoise[] = "Noise";
constexpr char kLook[] = "Look and measure";
constexpr char kNetworks[] = "Networks";
constexpr char kHidden[] = "";

constexpr CommandRow kCommands[] = {
    {kInAndOut, ImportCommand}, {kInAndOut, ExportCommand}, {kInAndOut, ConvertCommand},   {kInAndOut, TestCardCommand},
    {kScale, ShrinkCommand},    {kScale, EnlargeCommand},   {kScale, RestoreCommand},      {kNoise, DenoiseCommand},
    {kNoise, NoiseCommand},     {kLook, InfoCommand},       {kLook, CompareCommand},       {kLook, VerifyCommand},
    {kLook, FilterCommand},     {kLook, RankCommand},       {kNetworks, NewNetCommand},    {kNetworks, TrainCommand},
    {kNetworks, CurveCommand},  {kNetworks, ModelsCommand}, {kHidden, CompletionsCommand},
};

}  // namespace

std::span<const CommandRow> CommandTable() { return kCommands; }

bool IsCommand(const std::string& name) {
  return std::ranges::any_of(kCommands, [&](const CommandRow& row) { return row.make().name == name; });
}

}  // namespace norv
