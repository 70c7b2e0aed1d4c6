// A picture made again from its receipt, which is believed in nothing.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "kit/commands/command.h"
#include "kit/proof/receipt.h"
#include "platform/interrupt.h"

namespace norv {

// A file of this run only, in the folder for those (TMPDIR): it need not be there yet, and goes with the object and
// with every end of the run that can be seen coming.
class PassingFile {
 public:
  explicit PassingFile(const std::string& ending);
  ~PassingFile();
  PassingFile(const PassingFile&) = delete;
  PassingFile& operator=(const PassingFile&) = delete;

  const std::string& Path() const { return path_; }

 private:
  std::string path_;
  ScratchGuard guard_;
};

// What a receipt's settings may say: options of the command's rows that are settings of a result, with values. Throws a
// Failure for anything else. The network of --net, if any, becomes `net`.
std::vector<std::string> CheckedSettings(const Receipt& receipt, const Command& command, const std::string& net);

// Where to find what a receipt names.
struct Sources {
  std::string input, net;  // files; empty: beside the result, and in the catalogue
};

// Makes the picture again by `run`, which is given the words of a command line, and compares. Returns what differs or
// is missing, a line each; none: the same bits. Throws a Failure for a receipt that is none.
std::vector<std::string> WhatDiffers(const std::string& result, const Sources& sources,
                                     const std::function<void(const std::vector<std::string>& words)>& run);

}  // namespace norv
