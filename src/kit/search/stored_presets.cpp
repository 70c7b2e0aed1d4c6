#include "kit/search/stored_presets.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <optional>

#include "kit/failure.h"
#include "kit/guidance/text.h"
#include "kit/scale/restore_presets.h"
#include "platform/file.h"
#include "platform/native/places.h"
#include "platform/paths.h"

namespace norv {
namespace {

constexpr char kEnding[] = ".txt";
constexpr size_t kLongestName = 64, kMostLines = 100;
const std::vector<std::string> kMethods = {"nearest", "cubic", "lanczos", "net", "both", "restore"};

bool IsName(const std::string& name) {
  const auto fits = [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' || c == '_';
  };
  return !name.empty() && name.size() <= kLongestName && std::ranges::all_of(name, fits);
}

std::filesystem::path KeptFolder() {
  const std::string folder = ConfigurationFolder();
  if (folder.empty()) Fail("there is no configuration folder to keep presets in: HOME is not set");
  return ToNative(folder) / "norv" / "presets";
}

std::string AllNames() {
  std::vector<std::string> names = RestorePresetNames();
  for (const std::string& name : KeptNames()) names.push_back(name);
  std::string list;
  for (const std::string& name : names) list += (list.empty() ? "" : ", ") + name;
  return list;
}

bool Has(const std::vector<std::string>& words, const std::string& word) { return std::ranges::count(words, word) > 0; }

bool TakesNetwork(const KeptWay& way) { return way.method == "net" || way.method == "both"; }
bool Restores(const KeptWay& way) { return way.method == "both" || way.method == "restore"; }

bool MakesSense(const KeptWay& way) {
  return Has(kMethods, way.method) && TakesNetwork(way) == !way.model.empty() && (TakesNetwork(way) || !way.quick) &&
         Restores(way) == IsOwnPreset(way.preset) && (Restores(way) || way.preset.empty());
}

// "key = value" lines; nothing where there is one of another kind.
std::optional<std::map<std::string, std::string>> ReadLines(std::istream& file) {
  std::map<std::string, std::string> values;
  size_t lines = 0;
  for (std::string line; std::getline(file, line);) {
    if (++lines > kMostLines) return std::nullopt;
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (line.empty() || line[0] == '#') continue;
    const size_t middle = line.find(" = ");
    if (middle == std::string::npos || !values.try_emplace(line.substr(0, middle), line.substr(middle + 3)).second)
      return std::nullopt;
  }
  return values;
}

std::optional<KeptWay> ReadWay(std::istream& file) {
  std::optional<std::map<std::string, std::string>> values = ReadLines(file);
  if (!values) return std::nullopt;
  KeptWay way;
  for (const auto& [key, value] : *values) {
    if (key == "method")
      way.method = value;
    else if (key == "model")
      way.model = value;
    else if (key == "preset")
      way.preset = value;
    else if (key == "quick" && (value == "yes" || value == "no"))
      way.quick = value == "yes";
    else
      return std::nullopt;
  }
  return MakesSense(way) ? std::optional(way) : std::nullopt;
}

std::string AsText(const KeptWay& way, const std::string& note) {
  std::string text =
      "# A way of enlarging that norvkit rank kept; norvkit enlarge --preset takes it.\n# " + note + "\n";
  text += "method = " + way.method + "\n";
  if (!way.model.empty()) text += "model = " + way.model + "\nquick = " + (way.quick ? "yes" : "no") + "\n";
  if (!way.preset.empty()) text += "preset = " + way.preset + "\n";
  return text;
}

}  // namespace

std::string KeptWay::InWords() const {
  std::string words = method;
  if (!model.empty()) words += ", network " + model + (quick ? ", plain" : ", averaged");
  if (!preset.empty()) words += ", restored as " + preset;
  return words;
}

std::string KeptWay::AsOptions() const {
  std::string words = "--method " + method;
  if (!model.empty()) words += " --model " + model;
  if (quick) words += " --quick";
  if (!preset.empty()) words += " --preset " + preset;
  return words;
}

bool IsOwnPreset(const std::string& name) { return Has(RestorePresetNames(), name); }

std::string PathOfKept(const std::string& name) { return FromNative(KeptFolder() / (name + kEnding)); }

std::string PlaceToKeep(const std::string& name) {
  if (!IsName(name))
    throw WrongUsage("a preset's name is made of letters, digits, - and _, " + std::to_string(kLongestName) +
                     " at most: " + name + " is none");
  if (IsOwnPreset(name)) throw WrongUsage(name + " is a preset of norvkit's own: take another name");
  std::error_code error;
  std::filesystem::create_directories(KeptFolder(), error);
  if (error) Fail("cannot make the folder %s: %s", FromNative(KeptFolder()).c_str(), error.message().c_str());
  return PathOfKept(name);
}

void KeepWay(const std::string& name, const KeptWay& way, const std::string& note) {
  const std::string text = AsText(way, note);
  FileOut out(PlaceToKeep(name));
  out.Array(text.data(), text.size());
  if (!out.Commit()) throw SaidFailure();
}

KeptWay FindKept(const std::string& name) {
  std::error_code error;
  const bool kept =
      IsName(name) && !ConfigurationFolder().empty() && std::filesystem::exists(ToNative(PathOfKept(name)), error);
  if (!kept) throw WrongUsage("there is no preset " + name + "; there are " + AllNames());
  std::ifstream file(ToNative(PathOfKept(name)));
  const std::optional<KeptWay> way = ReadWay(file);
  if (!way || file.bad())
    Fail("%s is damaged: it is no way of enlarging; norvkit rank FOLDER --keep %s --overwrite makes it again",
         PathOfKept(name).c_str(), name.c_str());
  return *way;
}

std::vector<std::string> KeptNames() {
  std::vector<std::string> names;
  if (ConfigurationFolder().empty()) return names;
  std::error_code error;
  std::filesystem::directory_iterator entry = Listing(KeptFolder(), error);
  for (; !error && entry != std::filesystem::directory_iterator(); entry.increment(error))
    if (const std::string name = FromNative(entry->path().stem()); entry->path().extension() == kEnding && IsName(name))
      names.push_back(name);
  std::ranges::sort(names);
  return names;
}

}  // namespace norv
