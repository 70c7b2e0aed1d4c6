#include "kit/kit.h"

#include <algorithm>

#include "kit/commands/command.h"
#include "kit/failure.h"
#include "platform/console.h"
#include "simd/levels.h"

namespace norv {
namespace {

struct CommandRow {
  const char* purpose;  // the heading that it stands under
  CLI::App& (*add)(CLI::App&);
};

constexpr char kInAndOut[] = "Pictures in and out";
constexpr char kScale[] = "Smaller and larger";
constexpr char kNoise[] = "Noise";
constexpr char kLook[] = "Look and measure";
constexpr char kNetworks[] = "Networks";

constexpr CommandRow kCommands[] = {
    {kInAndOut, AddImport}, {kInAndOut, AddExport}, {kInAndOut, AddTestCard}, {kScale, AddShrink}, {kScale, AddEnlarge},
    {kScale, AddRestore},   {kNoise, AddDenoise},   {kNoise, AddNoise},       {kLook, AddInfo},    {kLook, AddCompare},
    {kNetworks, AddNewNet}, {kNetworks, AddTrain},  {kNetworks, AddCurve},
};

// Options as "--name N=default"; what they allow is in their own words.
class PlainFormatter : public CLI::Formatter {
 public:
  std::string make_option_opts(const CLI::Option* option) const override {
    if (option->get_positional() || option->get_type_size() == 0) return "";
    const std::string type = option->get_type_name(), value = option->get_default_str();
    return " " + type.substr(0, type.find(':')) + (value.empty() ? "" : "=" + value);
  }
};

int Run(CLI::App& kit, const std::vector<std::string>& arguments) {
  try {
    std::vector<std::string> reversed(arguments.rbegin(), arguments.rend() - 1);
    kit.parse(reversed);
    return 0;
  } catch (const CLI::ParseError& error) {
    return kit.exit(error) == 0 ? 0 : 2;
  } catch (const Interrupted&) {
    return 130;
  } catch (const SaidFailure&) {
  } catch (const char* message) {
    Complain("%s", message);
  } catch (const std::bad_alloc&) {
    Complain("out of memory");
  } catch (const std::exception& error) {
    Complain("%s", error.what());
  }
  return 1;
}

}  // namespace

void RefuseUsage(const std::string& reason) { throw CLI::ValidationError(reason); }

void DeclareWriteChoice(CLI::App& command, WriteChoice& choice) {
  command.add_option("--bits", choice.bits, "bits a sample of the picture: 8 or 16 (default: those of the input)")
      ->type_name("N")
      ->check(CLI::IsMember({8, 16}))
      ->default_str("");
  command.add_option("--quality", choice.encoding.quality, "quality of a JPEG, 1 to 100")
      ->type_name("N")
      ->check(CLI::Range(1, 100));
}

int RunKit(const std::vector<std::string>& arguments) {
  CLI::App kit(
      "The companion of norv: pictures in and out of its files, networks to start from, and what is pleasant to "
      "have at a prompt.\nEvery command explains itself and shows an example: norvkit COMMAND --help",
      "norvkit");
  kit.require_subcommand(1);
  kit.set_version_flag("--version", NORV_VERSION);
  kit.formatter(std::make_shared<PlainFormatter>());
  kit.get_formatter()->column_width(22);
  for (const CommandRow& row : kCommands) row.add(kit).group(row.purpose);
  kit.footer("Exit codes: 0 good, 1 failed (the reason is on standard error), 2 wrong command line, 130 stopped.");
  const std::string refusal = ChooseLevelFromEnvironment();
  if (!refusal.empty()) {
    Complain("%s", refusal.c_str());
    return 2;
  }
  const auto named = [&](const CLI::App* command) { return command->get_name() == arguments[1]; };
  if (arguments.size() > 1 && !arguments[1].starts_with('-') && kit.get_subcommands(named).empty()) {
    Complain("there is no command %s; norvkit --help lists them", arguments[1].c_str());
    return 2;
  }
  // The parser would take an empty value for none and skip its checks.
  if (std::find(arguments.begin() + 1, arguments.end(), "") != arguments.end()) {
    Complain("an empty word on the command line means nothing");
    return 2;
  }
  return Run(kit, arguments);
}

}  // namespace norv
