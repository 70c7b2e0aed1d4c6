// Ways of enlarging that people keep under names of their own, one small text file each in their configuration folder.
#pragma once

#include <string>
#include <vector>

namespace norv {

// A way of enlarging in the words of norvkit enlarge.
struct KeptWay {
  std::string method = "";  // nearest, cubic, lanczos, net, both or restore
  std::string model = "";   // the network's name; empty with other methods than net and both
  bool quick = false;       // the network in one plain pass
  std::string preset = "";  // of the restoration; empty with other methods than both and restore

  // "both, network x2-48, averaged, restored as clean".
  std::string InWords() const;
  // "--method both --model x2-48 --preset clean", or what norvkit restore takes.
  std::string AsOptions() const;

  friend bool operator==(const KeptWay&, const KeptWay&) = default;
};

// Where a way of this name is kept: NAME.txt in norv/presets below XDG_CONFIG_HOME, or ~/.config without it (APPDATA on
// Windows). Throws a Failure where the system names no such folder.
std::string PathOfKept(const std::string& name);

// The same of a way that is to be kept, its folder made where there was none. Throws a WrongUsage for a name that is
// none (letters, digits, - and _, 64 at most) or that a preset of norvkit's has.
std::string PlaceToKeep(const std::string& name);

// Writes the way, in place of one that was kept under the name before. note: for whoever reads the file. Throws a
// Failure or SaidFailure when it cannot be written.
void KeepWay(const std::string& name, const KeptWay& way, const std::string& note);

// Throws a WrongUsage that lists all presets there are where no way is kept under this name, a Failure for a file that
// is damaged.
KeptWay FindKept(const std::string& name);

// The names of all kept ways, sorted.
std::vector<std::string> KeptNames();

// Whether the name is that of a preset of norvkit's own.
bool IsOwnPreset(const std::string& name);

}  // namespace norv
