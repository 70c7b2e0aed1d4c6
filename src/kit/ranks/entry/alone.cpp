#include "kit/kit.h"
#include "kit/ranks/entry/join.h"
#include "platform/console.h"
#include "platform/interrupt.h"

namespace norv {

int RunInWorld(const std::vector<std::string>& arguments) {
  NameProgram("norvkit");
  EndInterruptsInWords("norvkit: interrupted\n");
  return RunKit(arguments);
}

}  // namespace norv
