// The only file that knows the command-line library, whose templates take long to compile: rows become its parsers.
#include "kit/commands/command_line.h"

#include <CLI/CLI.hpp>

#include "kit/failure.h"
#include "platform/console.h"

namespace norv {
namespace {

constexpr char kPurpose[] =
    "The companion of norv: pictures in and out of its files, networks to start from, and what is pleasant to have at "
    "a prompt.\nEvery command explains itself and shows an example: norvkit COMMAND --help";
constexpr char kExitCodes[] =
    "Exit codes: 0 good, 1 failed (the reason is on standard error), 2 wrong command line, 130 stopped.";

// Options as "--name N=default", without their older names; what they allow is in their own words.
class PlainFormatter : public CLI::Formatter {
 public:
  PlainFormatter() { column_width(22); }
  std::string make_option_name(const CLI::Option* option, bool positional) const override {
    const std::vector<std::string>& names = option->get_lnames();
    return names.size() > 1 ? "--" + names[0] : Formatter::make_option_name(option, positional);
  }
  std::string make_option_opts(const CLI::Option* option) const override {
    if (option->get_positional() || option->get_type_size() == 0) return "";
    const std::string type = option->get_type_name(), value = option->get_default_str();
    return " " + type.substr(0, type.find(':')) + (value.empty() ? "" : "=" + value);
  }
};

// Whether the value beforehand is one that can be shown.
template <typename Value>
constexpr bool kIsOneValue = true;
template <typename Element>
constexpr bool kIsOneValue<std::vector<Element>> = false;
template <typename Number>
constexpr bool kIsOneValue<std::optional<Number>> = false;

// The library's check for what a row accepts, of the type that its target holds.
template <typename Value>
struct Checks {
  CLI::Option& option;
  using Number = std::conditional_t<std::is_integral_v<Value>, int32_t, double>;

  void operator()(Form form) const {
    if (form == Form::number) option.check(CLI::Number);
    if (form == Form::wholeNumber) option.check(CLI::TypeValidator<int32_t>("N"));
    if (form == Form::notNegative) option.check(CLI::NonNegativeNumber);
  }
  void operator()(const Between& range) const {
    option.check(CLI::Range(static_cast<Number>(range.low), static_cast<Number>(range.high)));
  }
  void operator()(const OneOf& choices) const {
    const std::vector<std::string> words = CLI::detail::split(choices.words, ',');
    if constexpr (std::is_integral_v<Value>) {
      std::vector<int32_t> numbers;
      for (const std::string& word : words) numbers.push_back(std::stoi(word));
      option.check(CLI::IsMember(numbers));
    } else {
      option.check(CLI::IsMember(words));
    }
  }
};

std::string HelpOf(const Option& row) {
  return *row.byDefault == '\0' ? row.help : row.help + " (default: " + row.byDefault + ")";
}

template <typename Value>
CLI::Option& AddParser(CLI::App& command, const Option& row, Value& target) {
  const std::string name = std::string(row.name) + (*row.aliases ? "," : "") + row.aliases;
  if constexpr (std::is_same_v<Value, bool>) {
    return *command.add_flag(name, target, row.help);
  } else {
    CLI::Option& option = *command.add_option(name, target, HelpOf(row));
    if (kIsOneValue<Value> && *row.byDefault == '\0') option.capture_default_str();
    if (*row.unit) option.type_name(row.unit);
    if constexpr (std::is_same_v<Value, std::vector<int32_t>>) option.delimiter(',');
    std::visit(Checks<Value>{option}, row.check);
    return option;
  }
}

void AddOption(CLI::App& command, const Option& row) {
  const auto add = [&](auto* target) {
    CLI::Option& option = AddParser(command, row, *target);
    if (row.HasPlace()) option.required();
    if (*row.heading) option.group(row.heading);
    if (*row.excludes) option.excludes(row.excludes);
  };
  std::visit(add, row.target);
}

void AddCommand(CLI::App& kit, const char* heading, const Command& command) {
  CLI::App& parser = *kit.add_subcommand(command.name, command.purpose)->group(heading);
  for (const Option& row : command.options) AddOption(parser, row);
  std::string footer = *command.notes ? std::string(command.notes) + "\n\n" : "";
  footer += "Example:";
  for (const std::string& example : CLI::detail::split(command.examples, '\n')) footer += "\n  " + example;
  parser.footer(footer);
}

}  // namespace

std::optional<Command> ReadCommandLine(const std::vector<std::string>& words) {
  CLI::App kit(kPurpose, "norvkit");
  kit.require_subcommand(1);
  kit.set_version_flag("--version", NORV_VERSION);
  kit.formatter(std::make_shared<PlainFormatter>());
  kit.footer(kExitCodes);
  std::vector<Command> commands;
  for (const CommandRow& row : CommandTable()) AddCommand(kit, row.heading, commands.emplace_back(row.make()));
  try {
    kit.parse(std::vector<std::string>(words.rbegin(), words.rend()));
  } catch (const CLI::Success& asked) {
    std::ostringstream text;
    kit.exit(asked, text, text);
    Say("%s", text.str().c_str());
    return {};
  } catch (const CLI::ParseError& error) {
    throw WrongUsage(error.what());
  }
  for (Command& command : commands)
    if (kit.got_subcommand(command.name)) return std::move(command);
  return {};
}

}  // namespace norv
