#include "kit/guidance/usage.h"

#include <algorithm>

#include "kit/failure.h"
#include "kit/guidance/help.h"
#include "kit/guidance/text.h"

namespace norv {
namespace {

std::vector<std::string> NamesOf(const Option& row) {
  std::vector<std::string> names = SplitAt(',', row.aliases);
  names.insert(names.begin(), row.name);
  return names;
}

}  // namespace

const Option& RowNamed(const Command& command, const std::string& name) {
  std::vector<std::string> known;
  for (const Option& row : command.options)
    for (const std::string& each : NamesOf(row)) {
      if (each == name) return row;
      if (!row.HasPlace()) known.push_back(each);
    }
  const std::string nearest = NearestWord(name, known);
  throw WrongUsage(std::string(command.name) + " has no option " + name +
                   (nearest.empty() ? "" : "; did you mean " + nearest + "?"));
}

namespace {

// Option and value in one word or two; returns how many words more.
size_t RequireOption(const Option& row, const std::vector<std::string>& words, size_t at) {
  const size_t equals = words[at].find('=');
  const bool inOne = equals != std::string::npos;
  if (!row.TakesValue()) {
    if (inOne) throw WrongUsage(std::string(row.name) + " takes no value");
    return 0;
  }
  if (!inOne && (at + 1 == words.size() || words[at + 1].starts_with("--")))
    throw WrongUsage(std::string(row.name) + " needs a value: " + row.name + " " + row.unit);
  const std::string value = inOne ? words[at].substr(equals + 1) : words[at + 1];
  if (const std::string reason = WhyNotValue(row, value); !reason.empty()) throw WrongUsage(reason);
  return inOne ? 0 : 1;
}

void RequirePlaces(const Command& command, const std::vector<std::string>& placed) {
  std::vector<const Option*> places;
  bool anyNumber = false;
  for (const Option& row : command.options)
    if (row.HasPlace() && !row.lastOfSeveral) {
      places.push_back(&row);
      anyNumber |= row.TakesSeveral();
    }
  if (placed.size() < places.size() && !places[placed.size()]->mayBeLeftOut)
    throw WrongUsage(std::string(places[placed.size()]->name) + " is missing: " + UsageOf(command));
  if (placed.size() > places.size() && !anyNumber)
    throw WrongUsage(placed[places.size()] + " is one word too many: " + UsageOf(command));
}

// What people may call a command of ours.
struct Synonyms {
  const char* command;
  const char* words;
};
constexpr Synonyms kSynonyms[] = {
    {"enlarge", "upscale,upsize,upsample,resize,scale,rescale,zoom,bigger,larger,grow,superresolution,sr,magnify"},
    {"shrink", "downscale,downsize,downsample,reduce,smaller,thumbnail"},
    {"restore", "sharpen,deblur,unblur,enhance,sharper"},
    {"denoise", "clean,despeckle,degrain,dejpeg,deblock"},
    {"convert", "save,transform,reformat"},
    {"compare", "diff,cmp,psnr,ssim"},
    {"info", "identify,show,stat,file"},
    {"models", "list,networks,nets,model"},
    {"train", "learn"},
};

// The command that the word stands for or is nearest to; empty when none is.
std::string CommandMeantBy(const std::string& word) {
  std::vector<std::string> known;
  for (const Synonyms& row : kSynonyms)
    for (const std::string& synonym : SplitAt(',', row.words)) {
      if (synonym == word) return row.command;
      known.push_back(synonym);
    }
  std::vector<std::string> names;
  for (const CommandRow& row : CommandTable()) names.push_back(row.make().name);
  if (std::string name = NearestWord(word, names); !name.empty()) return name;
  const std::string nearest = NearestWord(word, known);
  for (const Synonyms& row : kSynonyms)
    for (const std::string& synonym : SplitAt(',', row.words))
      if (synonym == nearest) return row.command;
  return "";
}

}  // namespace

bool Excludes(const Option& row, const Option& other) {
  return std::ranges::count(SplitAt(',', row.excludes), other.name) > 0;
}

std::vector<const Option*> RequireUsable(const Command& command, const std::vector<std::string>& words) {
  std::vector<std::string> placed;
  std::vector<const Option*> said;
  for (size_t i = 0; i < words.size(); ++i) {
    if (!words[i].starts_with('-') || words[i].size() == 1) {
      placed.push_back(words[i]);
      continue;
    }
    said.push_back(&RowNamed(command, words[i].substr(0, words[i].find('='))));
    i += RequireOption(*said.back(), words, i);
  }
  for (const Option* row : said)
    for (const Option* other : said)
      if (Excludes(*row, *other))
        throw WrongUsage(std::string(row->name) + " and " + other->name + " exclude each other: leave one of them out");
  RequirePlaces(command, placed);
  return said;
}

void RefuseCommand(const std::string& word) {
  const std::string meant = CommandMeantBy(word);
  for (const CommandRow& row : CommandTable())
    if (const Command command = row.make(); command.name == meant)
      throw WrongUsage("there is no command " + word + "; type: " + UsageOf(command), meant);
  throw WrongUsage("there is no command " + word + ", nor a picture of that name");
}

}  // namespace norv
