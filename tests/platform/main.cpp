// The only room below the vector levels, whose tests therefore run at none.
#define DOCTEST_CONFIG_IMPLEMENT
#include <csignal>
#include <doctest/doctest.h>

int main(int argc, char** argv) {
  std::signal(SIGHUP, SIG_DFL);  // nohup and the like have it ignored, which the files' handlers would respect
  return doctest::Context(argc, argv).run();
}
