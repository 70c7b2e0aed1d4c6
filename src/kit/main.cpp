#include "kit/kit.h"
#include "platform/console.h"
#include "platform/interrupt.h"
#include "platform/paths.h"

int main(int argc, char** argv) {
  norv::PrepareConsole();
  norv::NameProgram("norvkit");
  norv::EndInterruptsInWords("norvkit: interrupted\n");
  return norv::RunKit(norv::CommandLine(argc, argv));
}
