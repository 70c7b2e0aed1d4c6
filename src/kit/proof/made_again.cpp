#include "kit/proof/made_again.h"

#include <algorithm>
#include <filesystem>
#include <random>

#include "kit/failure.h"
#include "kit/models/catalogue.h"
#include "kit/proof/same_bytes.h"
#include "kit/proof/sha256.h"
#include "kit/proof/stored_receipt.h"
#include "platform/file.h"
#include "platform/paths.h"

namespace norv {
namespace {

namespace fs = std::filesystem;

// Whose results have receipts.
constexpr const char* kCommands[] = {"enlarge", "restore", "denoise"};

std::string NewName(const std::string& ending) {
  std::random_device random;
  std::string name = "norvkit-verify-";
  for (int i = 0; i < 16; ++i) name += "0123456789abcdef"[random() % 16];
  return FromNative(fs::temp_directory_path() / (name + "." + ending));
}

bool IsThere(const std::string& path) {
  std::error_code ignored;
  return fs::is_regular_file(ToNative(path), ignored);
}

const Option* RowOf(const Command& command, const std::string& name) {
  const auto row = std::ranges::find_if(command.options, [&](const Option& option) { return option.name == name; });
  return row == command.options.end() || row->HasPlace() || row->aside ? nullptr : &*row;
}

std::optional<Command> CommandOf(const Receipt& receipt) {
  if (receipt.settings.empty() || std::ranges::count(kCommands, receipt.settings[0]) == 0) return {};
  for (const CommandRow& row : CommandTable())
    if (Command command = row.make(); command.name == receipt.settings[0]) return command;
  return {};
}

// The file of a network that a receipt names: of the catalogue, which has the last word on where that is, or the one
// that was given. Empty where there is none; `wrong` says why, also of one with other bytes.
std::string FileOf(const NamedFile& network, bool fromCatalogue, const std::string& net,
                   std::vector<std::string>& wrong) {
  std::string path = fromCatalogue ? "" : net;
  if (fromCatalogue)
    for (const Model& model : FindModels())
      if (FromNative(ToNative(model.path).filename()) == network.name) path = model.path;
  if (path.empty())
    wrong.push_back("the network " + network.name + " is missing" +
                    (fromCatalogue ? " (norvkit models)" : ": name it by --net FILE"));
  else if (Sha256OfFile(path) != network.sha256)
    wrong.push_back("the network " + path + " is not the one that made it");
  return path;
}

std::string InputOf(const Receipt& receipt, const std::string& result, const std::string& given) {
  if (!given.empty()) return given;
  if (receipt.input.name.empty()) Fail("%s was made of standard input: name the file by --input FILE", result.c_str());
  const fs::path folder = ToNative(result).parent_path();
  return FromNative((folder.empty() ? fs::path(".") : folder) / ToNative(receipt.input.name));
}

}  // namespace

PassingFile::PassingFile(const std::string& ending) : path_(NewName(ending)), guard_(path_) {}

PassingFile::~PassingFile() { RemoveFile(path_); }

std::vector<std::string> CheckedSettings(const Receipt& receipt, const Command& command, const std::string& net) {
  std::vector<std::string> words;
  for (size_t i = 1; i < receipt.settings.size(); ++i) {
    const std::string& word = receipt.settings[i];
    const std::string name = word.substr(0, word.find('='));
    const Option* row = RowOf(command, name);
    if (!row || (name.size() < word.size() && !row->TakesValue()))
      Fail("the receipt is damaged: %s is no setting of norvkit %s", word.c_str(), command.name);
    words.push_back(word);
    if (!row->TakesValue() || name.size() < word.size()) continue;
    if (++i == receipt.settings.size() || receipt.settings[i].starts_with("-"))
      Fail("the receipt is damaged: %s has no value", name.c_str());
    words.push_back(name == "--net" ? net : receipt.settings[i]);
  }
  return words;
}

std::vector<std::string> WhatDiffers(const std::string& result, const Sources& sources,
                                     const std::function<void(const std::vector<std::string>& words)>& run) {
  const StoredReceipt stored = FindReceipt(result);
  const Receipt receipt = ReceiptOfText(stored.text);
  const std::optional<Command> command = CommandOf(receipt);
  if (!command) Fail("the receipt is damaged: it names no command that makes pictures again");
  const bool ownNet = std::ranges::count(receipt.settings, "--net") > 0;
  if (std::ranges::any_of(receipt.settings, [](const std::string& word) { return word.starts_with("--net="); }))
    Fail("the receipt is damaged: --net has no value");
  const std::string input = InputOf(receipt, result, sources.input);
  std::vector<std::string> wrong;
  if (receipt.version != OwnVersion())
    wrong.push_back("it was made by norvkit " + receipt.version + ", this is " + OwnVersion());
  for (const NamedFile& network : receipt.networks) FileOf(network, !ownNet, sources.net, wrong);
  const std::vector<std::string> settings = CheckedSettings(receipt, *command, sources.net);
  if (!IsThere(input))
    wrong.push_back("the input " + input + " is missing: name it by --input FILE");
  else if (Sha256OfFile(input) != receipt.input.sha256)
    wrong.push_back("the input " + input + " is not the one that it was made of");
  if (!wrong.empty()) return wrong;

  const PassingFile again(receipt.format);
  std::vector<std::string> words = {command->name, input.starts_with("-") ? "./" + input : input, again.Path()};
  words.insert(words.end(), settings.begin(), settings.end());
  words.insert(words.end(), {"--to", receipt.format, "--no-receipt", "--quiet"});
  run(words);
  if (!SameBytes(result, {stored.chunk, stored.chunkBytes}, again.Path()))
    wrong.push_back(DifferenceInWords(result, again.Path()));
  return wrong;
}

}  // namespace norv
