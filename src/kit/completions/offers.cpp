#include "kit/completions/offers.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "kit/formats/encoding.h"
#include "kit/guidance/text.h"
#include "kit/models/catalogue.h"
#include "kit/scale/restore_presets.h"
#include "kit/search/stored_presets.h"

namespace norv {
namespace {

constexpr char kNetworks[] = "networks", kPresets[] = "presets";

// "png jpg tif", of the endings that names have.
std::vector<std::string> FormatNames() {
  std::vector<std::string> names;
  for (const std::string& ending : SplitAt(',', WrittenExtensions()))
    names.push_back(ending.substr(ending.find('.') + 1));
  return names;
}

// By what stands for the value in the help, or for a word by its place.
Offer OfferForUnit(std::string_view unit) {
  using Kind = Offer::Kind;
  if (unit == "FORMAT") return {Kind::words, FormatNames()};
  if (unit.ends_with("DIR") || unit == "FOLDER") return {Kind::folders, {}};
  for (const char* file : {"FILE", "NET", "OUT", "PICTURE"})
    if (unit.starts_with(file)) return {Kind::files, {}};
  return {};
}

}  // namespace

Offer OfferFor(const Option& row) {
  using Kind = Offer::Kind;
  if (row.named == Named::network) return {Kind::asked, {kNetworks}};
  if (row.named == Named::preset) return {Kind::asked, {kPresets}};
  if (const OneOf* choice = std::get_if<OneOf>(&row.check)) return {Kind::words, SplitAt(',', choice->words)};
  if (const BetweenOr* choice = std::get_if<BetweenOr>(&row.check)) return {Kind::words, {choice->word}};
  Offer offer = OfferForUnit(row.HasPlace() ? row.name : row.unit);
  if (row.HasPlace() && offer.kind == Kind::nothing) offer.kind = Kind::files;
  return offer;
}

std::vector<std::string> AskedLists() { return {kNetworks, kPresets}; }

std::vector<std::string> AskedList(const std::string& what) {
  std::vector<std::string> names;
  if (what == kNetworks)
    for (const Model& model : FindModels()) names.push_back(model.name);
  if (what != kPresets) return names;
  names = RestorePresetNames();
  for (const std::string& name : KeptNames()) names.push_back(name);
  return names;
}

std::string Script(std::initializer_list<std::string_view> parts) {
  std::string script;
  for (const std::string_view part : parts) script += part;
  return script;
}

std::string InLine(const std::vector<std::string>& words, std::string_view between) {
  std::string line;
  for (const std::string& word : words) line.append(line.empty() ? "" : between).append(word);
  return line;
}

std::string Escaped(const std::string& text, const char* characters) {
  std::string escaped;
  for (const char c : text) {
    if (std::strchr(characters, c)) escaped += '\\';
    escaped += c;
  }
  return escaped;
}

std::vector<Command> OfferedCommands() {
  std::vector<Command> commands;
  for (const CommandRow& row : CommandTable())
    if (*row.heading) commands.push_back(row.make());
  return commands;
}

std::vector<std::string> OfferedNames() {
  std::vector<std::string> names;
  for (const Command& command : OfferedCommands()) names.push_back(command.name);
  return names;
}

std::vector<std::string> OptionNames(const Command& command) {
  std::vector<std::string> names = {"--help"};
  for (const Option& row : command.options)
    if (!row.HasPlace()) names.push_back(row.name);
  return names;
}

}  // namespace norv
