// Not for people to type: what the build lays down for shells, and what these ask for while a word is completed.
#include "kit/commands/command.h"
#include "kit/completions/offers.h"
#include "kit/failure.h"
#include "kit/guidance/text.h"
#include "platform/console.h"

namespace norv {
namespace {

struct Settings {
  std::string what;
};

struct Shell {
  const char* name;
  std::string (*script)();
};
constexpr Shell kShells[] = {{"bash", BashCompletions}, {"zsh", ZshCompletions}, {"fish", FishCompletions}};

Options Rows(Settings& settings) {
  return {{.name = "WHAT", .target = &settings.what, .help = "bash, zsh or fish; networks or presets"}};
}

void Run(const Settings& settings) {
  std::vector<std::string> known;
  for (const Shell& shell : kShells) {
    if (settings.what == shell.name) return Say("%s", shell.script().c_str());
    known.push_back(shell.name);
  }
  for (const std::string& list : AskedLists()) {
    known.push_back(list);
    if (settings.what != list) continue;
    for (const std::string& name : AskedList(list)) Say("%s\n", name.c_str());
    return;
  }
  throw WrongUsage("completions takes " + Enumerated(known) + ", not " + settings.what);
}

}  // namespace

Command CompletionsCommand() {
  return MakeCommand<Settings>(
      {.name = "completions",
       .purpose = "Print the script that completes command lines in a shell, or what it asks for",
       .examples = "norvkit completions bash\nnorvkit completions networks"},
      Rows, Run);
}

}  // namespace norv
