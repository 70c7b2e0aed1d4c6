// The parameters of a mode by name: the usage text, their number and where each stands all come from one list.
#pragma once

#include <algorithm>
#include <cstdint>
#include <string_view>

namespace norv {

// Names in the order of the command line, separated by one blank.
class ParameterNames {
 public:
  consteval ParameterNames(const char* names) : names_(names) {}

  constexpr std::string_view Text() const { return names_; }
  constexpr int32_t Count() const { return names_.empty() ? 0 : BlanksBefore(names_.size()) + 1; }

  // The parameter's position among the words of the command line, of which the first parameter is word 2. A name that
  // is not in the list does not compile.
  consteval int32_t operator[](std::string_view name) const {
    for (size_t begin = 0; begin < names_.size();) {
      const size_t end = std::min(names_.find(' ', begin), names_.size());
      if (names_.substr(begin, end - begin) == name) return 2 + BlanksBefore(begin);
      begin = end + 1;
    }
    throw "no such parameter";
  }

 private:
  constexpr int32_t BlanksBefore(size_t end) const {
    return static_cast<int32_t>(std::count(names_.begin(), names_.begin() + static_cast<std::ptrdiff_t>(end), ' '));
  }

  std::string_view names_;
};

// The modes' own parameters; those of the restoration are in arguments.h.
inline constexpr ParameterNames kComponentParameters =
    "SIGMA SIDE COMPONENTS HARD LUMINANCE THREADS VARIANT FILE FINISH";
inline constexpr ParameterNames kGroupParameters =
    "ITERATIONS SIDE SIGMA STRENGTH FEEDBACK PARALLEL LUMINANCE RANKED TWO_STEP FILE FINISH";
inline constexpr ParameterNames kTrainingParameters =
    "ITERS NU0 NUF COST_SELECTION ALTERNATE CLIP MOMENTUM THREADS SOUND";
inline constexpr ParameterNames kEnlargementParameters = "AVERAGE THREADS SHORTCUT";
inline constexpr ParameterNames kPairsParameters = "INDEX TOTAL INPUTS OUTPUTS SHRINK_ORDER";
inline constexpr ParameterNames kNoParameters = "";

}  // namespace norv
