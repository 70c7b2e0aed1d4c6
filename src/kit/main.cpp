#include "kit/ranks/entry/join.h"
#include "platform/console.h"
#include "platform/paths.h"

int main(int argc, char** argv) {
  norv::PrepareConsole();
  return norv::RunInWorld(norv::CommandLine(argc, argv));
}
