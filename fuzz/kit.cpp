// The command line of norvkit, every command, on small files of every kind. The lines are the words behind the
// program's name.
#include "kit/kit.h"

#include <unistd.h>

#include "fuzz.h"
#include "kit/formats/encoding.h"

using namespace norv;
using namespace norv::fuzz;

namespace {

// Commands whose numbers are work: these have at most two digits. A test card of the usual size is large.
bool IsLongWork(const std::vector<std::string>& words) {
  const bool works = std::any_of(words.begin(), words.end(), [](const std::string& word) {
    return word == "restore" || word == "enlarge" || word == "denoise" || word == "train" || word == "new-net" ||
           word == "testcard" || HasPictureName(word);
  });
  int digits = 0, longest = 0;
  for (const std::string& word : words)
    for (const char c : word) longest = std::max(longest, digits = c >= '0' && c <= '9' ? digits + 1 : 0);
  const auto has = [&](const char* word) { return std::find(words.begin(), words.end(), word) != words.end(); };
  return (works && longest > 2) || (has("testcard") && !has("--size"));
}

// Standard input and output belong to the fuzzer.
bool LeavesFolder(const std::string& word) {
  return word == "-" || word.find_first_of(std::string_view("/\0", 2)) != std::string::npos;
}

void PutFiles() {
  RunKit({"norvkit", "testcard", "card.png", "--size", "48x48"});
  RunKit({"norvkit", "shrink", "card.png", "a.png", "--factor", "4"});
  for (const char* name : {"a.jpg", "a.tif"}) RunKit({"norvkit", "shrink", "card.png", name, "--factor", "4"});
  for (const char* name : {"a.fdib", "a.mat", "a.bit"}) RunKit({"norvkit", "import", "a.png", name});
  RunKit({"norvkit", "new-net", "a.net", "--layout", "8", "--hidden", "3"});
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  std::vector<std::string> words = WordsOf(Input(data, size).Rest());
  if (IsLongWork(words) || std::any_of(words.begin(), words.end(), LeavesFolder)) return 0;
  static const bool there = chdir(Home().c_str()) == 0;
  Require(there, "the folder is there");
  static int runs = 0;
  if (runs++ % 64 == 0) {
    ClearHome();
    PutFiles();
  }
  words.insert(words.begin(), "norvkit");
  const int code = RunKit(words);
  Require(code >= 0 && code <= 2, "a run ends well, in a failure, or as wrong use");
  return 0;
}
