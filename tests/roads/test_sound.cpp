// The notification sound: played by a program found on the path, never waited for.
#include <chrono>
#include <fcntl.h>
#include <sys/stat.h>

#include "support/process.h"
#include "support/test.h"

namespace {

// Waits up to 20 seconds for a file.
bool Appears(const std::string& path) {
  for (int i = 0; i < 2000 && !fs::exists(path); ++i) std::this_thread::sleep_for(std::chrono::milliseconds(10));
  return fs::exists(path);
}

}  // namespace

TEST_CASE("the sound of the current directory plays on when the run has ended") {
  const ScratchFolder folder;
  REQUIRE(mkfifo((folder / "gate").c_str(), 0600) == 0);
  // Says what it was given, but not before the gate opens.
  WriteBytes(folder / "paplay",
             "#!/bin/sh\nread go <gate\necho \"$* $(readlink /proc/$$/fd/0 /proc/$$/fd/1 /proc/$$/fd/2)\" >part\nmv "
             "part heard\n");
  fs::permissions(folder / "paplay", fs::perms::owner_all);
  WriteBytes(folder / "norv.wav", "sound");
  const Command command{
      .arguments = {"14"}, .environment = {"PATH=" + folder.Path() + ":/bin:/usr/bin"}, .directory = folder.Path()};
  CheckEnded(Run(command), 0);
  CHECK(!fs::exists(folder / "heard"));
  // Open for both directions, so that a player that never came cannot block the test.
  const int gate = open((folder / "gate").c_str(), O_RDWR);
  REQUIRE(write(gate, "go\n", 3) == 3);
  REQUIRE(Appears(folder / "heard"));
  CHECK(ReadBytes(folder / "heard") == "norv.wav /dev/null\n/dev/null\n/dev/null\n");
  close(gate);
}

TEST_CASE("without a sound or a player the run is silent") {
  const ScratchFolder folder;
  const Command command{.arguments = {"15"}, .environment = {"PATH=" + folder.Path()}, .directory = folder.Path()};
  for (const char* missing : {"sound", "player"}) {
    CAPTURE(missing);
    CheckEnded(Run(command), 0);
    WriteBytes(folder / "norv.wav", "sound");
  }
}
