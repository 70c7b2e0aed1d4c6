#include "driver/tool.h"
#include "platform/console.h"
#include "platform/paths.h"

// Asks hybrid-graphics drivers to run the process on the discrete graphics processor.
extern "C" {
#ifdef _WIN32
__declspec(dllexport) unsigned long NvOptimusEnablementCuda = 1;
#else
[[gnu::used]] unsigned long NvOptimusEnablementCuda = 1;
#endif
}

int main(int argc, char** argv) {
  norv::PrepareConsole();
  return norv::RunTool(norv::CommandLine(argc, argv));
}
