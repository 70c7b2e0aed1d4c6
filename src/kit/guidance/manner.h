// How a run speaks: options that every command has, and rows of figures for programs.
#pragma once

#include <cstdint>
#include <string>

namespace norv {

class JsonObject;

struct Manner {
  bool json = false;     // rows of figures on standard output, and nothing else there
  bool quiet = false;    // no progress, no word but errors
  bool verbose = false;  // more of what was chosen, and of how long its parts took
  int32_t threads = 0;   // that work, which no result depends on; 0: as many as the process may use processors
  std::string config;    // the file that settings come from
};

// Of this run. A command that prints figures looks at `json` and gives rows instead of text.
Manner& RunManner();

// A line on standard output, from any thread. `isError`: it says why something failed.
void SayRow(const JsonObject& row, bool isError = false);
// Throws a WrongUsage where both rows and a picture would go to standard output.
void RefuseRowsBesidePicture(const std::string& output);
// With --json: the file that a command has written, of that one; empty: of none. Otherwise nothing.
void SayWritten(const std::string& input, const std::string& output);
// The same of a picture.
void SayWritten(const std::string& input, const std::string& output, int32_t width, int32_t height);
// Whether a row has said so already.
bool ErrorWasSaid();

}  // namespace norv
