// The words of the command line and what they mean as numbers.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "restore/parameters.h"

namespace norv {

// Leading blanks, an optional sign, decimal digits; anything else ends the number, none at all is 0. What does not fit
// becomes the nearest value that does.
int32_t DecodeInteger(const std::string& text);

// As the C library's atof, rounded to single precision; never depends on the locale.
float DecodeFloat(const std::string& text);

// The command line by position: 0 the executable's name, 1 the mode, from 2 on the mode's parameters. Asking for a
// position that it lacks throws std::out_of_range; the modes are only entered with all that they need.
class Arguments {
 public:
  explicit Arguments(const std::vector<std::string>& words) : words_(words) {}

  int32_t Count() const { return static_cast<int32_t>(words_.size()); }
  const std::string& Text(int32_t position) const { return words_.at(position); }
  int32_t Integer(int32_t position) const { return DecodeInteger(Text(position)); }
  float Float(int32_t position) const { return DecodeFloat(Text(position)); }
  bool Flag(int32_t position) const { return Integer(position) != 0; }

 private:
  const std::vector<std::string>& words_;
};

// Whether a mode is one of the restoration. Negative ones, which do nothing, need its parameters too.
constexpr bool IsRestoration(int32_t mode) { return mode < 6; }

// The restoration needs the positions 2 to 22. Position 21 is never read, and 16 is read twice, as the orientation
// scale and as the edge threshold: the graphical program counts on both.
inline constexpr int32_t kUnreadPosition = 21, kThreadsPosition = 22;
inline constexpr int32_t kRestoreArguments = kThreadsPosition - 1;

RestoreParameters DefaultRestoreParameters();
RestoreParameters DecodeRestoreParameters(const Arguments& arguments);

// The names of the positions 2 to 22, separated by blanks.
std::string RestoreArgumentNames();

}  // namespace norv
