#include "kit/models/catalogue.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>

#include "kit/failure.h"
#include "kit/guidance/text.h"
#include "net/layouts.h"
#include "net/net_header.h"
#include "platform/console.h"
#include "platform/file.h"
#include "platform/native/places.h"
#include "platform/paths.h"

namespace norv {
namespace {

constexpr char kCatalogue[] = "catalogue.txt";
constexpr char kEnding[] = ".net";

std::optional<double> DecibelsOf(const std::string& word) {
  double value = 0;
  const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), value);
  return error == std::errc() && end == word.data() + word.size() ? std::optional(value) : std::nullopt;
}

std::map<std::string, ModelFacts> ReadCatalogue(const std::string& path) {
  std::map<std::string, ModelFacts> rows;
  std::ifstream file(ToNative(path));
  for (std::string line; std::getline(file, line);) {
    std::stringstream words(line.substr(0, line.find('#')));
    std::string name, madeFor, ways, plain, averaged;
    if (!(words >> name)) continue;
    if (!(words >> madeFor >> ways >> plain >> averaged)) {
      Warn("%s: a line about %s with too few words is left out", path.c_str(), name.c_str());
      continue;
    }
    const std::vector<std::string> taking = SplitAt(',', ways);
    rows[name] = {madeFor, std::ranges::count(taking, "best") > 0, std::ranges::count(taking, "quick") > 0,
                  DecibelsOf(plain), DecibelsOf(averaged)};
  }
  return rows;
}

// Of the network in a file; 0 when there is none that enlarges.
int32_t FactorOfFile(const std::string& path) {
  FileIn in(path);
  if (!in.IsOpen()) return 0;
  const auto header = ReadHeader<NetHeader>(in);
  if (!header.Possible() || header.FileBytes() > in.Size()) return 0;
  const auto end = std::ranges::find_if(header.N, [](int32_t units) { return units <= 0; });
  const int32_t outputs = end == header.N.begin() ? 0 : *(end - 1);
  return !FindEnlargement(header.N0, outputs) ? 0 : outputs == 4 ? 2 : 4;
}

void AddModelsOf(const std::string& folder, std::map<std::string, Model>& models) {
  std::error_code error;
  const auto rows = ReadCatalogue(folder + "/" + kCatalogue);
  std::filesystem::directory_iterator entry = Listing(ToNative(folder), error);
  for (; !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
    const std::filesystem::path& path = entry->path();
    const std::string name = FromNative(path.stem());
    if (path.extension() != kEnding || models.contains(name)) continue;
    const auto row = rows.find(name);
    if (const int32_t factor = FactorOfFile(FromNative(path)))
      models[name] = {name, FromNative(path), factor, row == rows.end() ? ModelFacts() : row->second};
  }
}

// Whether a purpose of the table, such as jpeg:30-95, is the picture's.
bool Fits(const std::string& purpose, const PictureNature& nature) {
  int low = 0, high = 0;
  if (std::sscanf(purpose.c_str(), "jpeg:%d-%d", &low, &high) == 2)
    return nature.jpegQuality >= low && nature.jpegQuality <= high;
  return purpose == "drawings" && nature.drawn;
}

}  // namespace

std::string ModelFacts::PurposeFor(const PictureNature& nature) const {
  const std::vector<std::string> purposes = SplitAt(',', madeFor);
  for (const std::string& purpose : purposes)
    if (Fits(purpose, nature)) return purpose;
  return std::ranges::count(purposes, "photographs") > 0 ? "photographs" : "";
}

std::vector<std::string> ModelFolders() {
  std::vector<std::string> folders = SplitAt(ListSeparator(), EnvironmentVariable("NORV_MODELS"));
  folders.push_back(OwnDirectory() + "models");
  folders.push_back(FromNative((ToNative(OwnDirectory()) / "../share/norv").lexically_normal()));
  return folders;
}

std::vector<Model> FindModels() {
  std::map<std::string, Model> models;
  for (const std::string& folder : ModelFolders()) AddModelsOf(folder, models);
  std::vector<Model> list;
  for (auto& [name, model] : models) list.push_back(std::move(model));
  return list;
}

std::string NoNetworks() {
  std::string text;
  for (const std::string& folder : ModelFolders()) text += (text.empty() ? "there are no networks in " : ", ") + folder;
  return text;
}

Model FindModel(const std::string& name) {
  std::string names;
  for (const Model& model : FindModels()) {
    if (model.name == name || model.name + kEnding == name) return model;
    names += (names.empty() ? "" : ", ") + model.name;
  }
  if (names.empty()) Fail("%s; --net FILE takes one from elsewhere", NoNetworks().c_str());
  Fail("there is no network %s; there are %s (norvkit models), and --net FILE takes one from elsewhere", name.c_str(),
       names.c_str());
}

}  // namespace norv
