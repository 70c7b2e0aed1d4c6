#include "kit/guidance/help.h"

#include <algorithm>
#include <cstdio>
#include <string_view>

#include "kit/guidance/text.h"
#include "kit/guidance/usage.h"

namespace norv {
namespace {

constexpr size_t kColumn = 22;  // where explanations begin

constexpr char kStart[] =
    "Makes pictures larger, sharper and cleaner; and is the companion of norv: pictures in and out of its files, "
    "networks to start from and to train.";
constexpr char kFirstWords[] =
    "    norvkit photo.jpg                       twice as large, as photo_2x.png beside it\n"
    "    norvkit enlarge photo.jpg large.jpg     twice as large, under a name of one's own\n"
    "    norvkit enlarge --help                  what else enlarge can do; every command has its own help\n";
constexpr char kExitCodes[] =
    "Exit codes: 0 done; 1 refused or failed (of many pictures any), the reason is on standard error; 2 a command line "
    "that cannot be meant; "
    "130 interrupted.";

// "  name       explanation", wrapped.
std::string Line(const std::string& name, const std::string& explanation) {
  std::string line = "  " + name;
  if (line.size() >= kColumn) line += "\n";
  line.append(kColumn - (line.back() == '\n' ? 0 : line.size()), ' ');
  return line + Wrapped(explanation, kColumn, kColumn) + "\n";
}

std::string Shown(double value) {
  char text[32];
  std::snprintf(text, sizeof text, "%.7g", value);
  return text;
}

// The value beforehand where it can be shown, else empty.
std::string DefaultOf(const Option& row) {
  if (*row.byDefault) return row.byDefault;
  return std::visit(
      [](auto* target) -> std::string {
        using Value = std::decay_t<decltype(*target)>;
        if constexpr (std::is_same_v<Value, std::string>) return *target;
        if constexpr (std::is_arithmetic_v<Value> && !std::is_same_v<Value, bool>)
          return Shown(static_cast<double>(*target));
        return "";
      },
      row.target);
}

// A value beforehand that could not be given stands for none.
std::string SaidDefaultOf(const Option& row) {
  const std::string value = DefaultOf(row);
  return *row.byDefault || WhyNotValue(row, value).empty() ? value : "";
}

std::string LineOf(const Option& row) {
  const std::string value = SaidDefaultOf(row), unit = row.unit;
  std::string explanation = row.help;
  if (*row.aliases) explanation += std::string(" (also ") + row.aliases + ")";
  if (!row.HasPlace() && !value.empty()) explanation += " (default: " + value + ")";
  return Line(unit.empty() ? row.name : row.name + (" " + unit), explanation);
}

bool StandsUnder(const Option& row, std::string_view heading) {
  return !row.HasPlace() && (*row.heading ? row.heading : "Options") == heading;
}

std::string OptionsOf(const Command& command) {
  std::vector<std::string> headings = {"Options"};
  for (const Option& row : command.options)
    if (!StandsUnder(row, headings.back()) && !row.HasPlace() && *row.heading) headings.push_back(row.heading);
  std::string text;
  for (const std::string& heading : headings) {
    text.append("\n").append(Wrapped(heading + ":", 0, 0)).append("\n");
    for (const Option& row : command.options)
      if (StandsUnder(row, heading)) text += LineOf(row);
    if (heading == "Options") text += Line("--help", "this help");
  }
  return text;
}

}  // namespace

namespace {

bool HasLast(const Command& command) {
  return std::ranges::any_of(command.options, [](const Option& row) { return row.lastOfSeveral; });
}

}  // namespace

std::string UsageOf(const Command& command) {
  std::string usage = std::string("norvkit ") + command.name;
  for (const Option& row : command.options)
    if (row.HasPlace() && row.mayBeLeftOut)
      usage += std::string(" [") + row.name + "]";
    else if (row.HasPlace())
      usage += std::string(" ") + row.name + (row.TakesSeveral() && !HasLast(command) ? "..." : "");
  return usage;
}

std::string HelpOf(const Command& command) {
  std::string text = Wrapped(command.purpose, 0, 0) + "\n\nUsage: " + UsageOf(command) + " [options]\n\n";
  for (const Option& row : command.options)
    if (row.HasPlace()) text += LineOf(row);
  text += OptionsOf(command);
  if (*command.notes) text.append("\n").append(Wrapped(command.notes, 0, 0)).append("\n");
  text += "\nExample:\n";
  for (const std::string& example : SplitAt('\n', command.examples)) text += "  " + example + "\n";
  return text;
}

std::string HelpOfAll() {
  std::string text = Wrapped(kStart, 0, 0) + "\n\n" + kFirstWords, heading;
  for (const CommandRow& row : CommandTable()) {
    if (!*row.heading) continue;
    const Command command = row.make();
    if (heading != row.heading) text.append("\n").append(heading = row.heading).append(":\n");
    text += Line(command.name, command.purpose);
  }
  text += "\nOptions:\n" + Line("--help", "this help; behind a command, that of the command") +
          Line("--version", "the version of norvkit");
  return text + "\n" + Wrapped(kExitCodes, 0, 0) + "\n";
}

}  // namespace norv
