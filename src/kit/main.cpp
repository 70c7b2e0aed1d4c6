#include "kit/kit.h"
#include "platform/console.h"
#include "platform/paths.h"

int main(int argc, char** argv) {
  norv::PrepareConsole();
  norv::NameProgram("norvkit");
  return norv::RunKit(norv::CommandLine(argc, argv));
}
