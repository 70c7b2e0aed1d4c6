// Key presses on a terminal.
#include "support/process.h"
#include "support/test.h"

TEST_CASE("three keys end the notice; they are not echoed and a fourth stays for the next reader") {
  TerminalRun run({.arguments = {"14"}});
  REQUIRE(run.WaitForEcho(false));
  run.Type("xy");
  CHECK(Contains(run.Shown(), "Press any key 3 times to exit."));
  run.Type("zq");
  CHECK(run.Wait() == 0);
  CHECK(run.Shown().find_first_of("yzq", run.Shown().find("to exit.")) == std::string::npos);
  CHECK((run.Settings().c_lflag & (ECHO | ICANON)) == (ECHO | ICANON));
  CHECK(run.Unread() == "q");
  TerminalRun typedAhead({.arguments = {"15"}});
  typedAhead.Type("abc");
  CHECK(typedAhead.Wait() == 0);
}

TEST_CASE("every way out puts the terminal back") {
  for (int signal : {SIGINT, SIGTERM, SIGHUP}) {
    TerminalRun run({.arguments = {"15"}});
    REQUIRE(run.WaitForEcho(false));
    if (signal == SIGINT)
      run.Type("\x03");
    else
      run.Signal(signal);
    CHECK(run.Wait() == 128 + signal);
    CHECK((run.Settings().c_lflag & (ECHO | ICANON)) == (ECHO | ICANON));
  }
}

TEST_CASE("a terminal that goes away does not hang the run") {
  TerminalRun run({.arguments = {"15"}});
  REQUIRE(run.WaitForEcho(false));
  run.HangUp();
  const int exitCode = run.Wait();
  CHECK((exitCode == 0 || exitCode == 128 + SIGHUP));
}
