#include "kit/work/reported.h"

#include "kit/failure.h"
#include "kit/formats/streams.h"
#include "kit/proof/report.h"
#include "kit/ranks/ranks.h"
#include "kit/work/run_work.h"
#include "platform/file.h"

namespace norv {

void RunReported(WorkOrder order) {
  if (order.choice.report.empty()) return RunWork(order);
  if (!World().IsFirst()) {
    order.page = std::make_shared<Report>();
    return RunWork(order);
  }
  order.page = std::make_shared<Report>(order.choice.report, order.choice.write.overwrite);
  try {
    RunWork(order);
  } catch (const SomeFailed&) {
    order.page->Write();
    throw;
  }
  order.page->Write();
}

void RequireShowable(const WorkOrder& order, const std::string& input, const std::string& output) {
  if (!order.page) return;
  if (IsStandard(output)) throw WrongUsage("--report shows the result: name a file instead of -");
  if (!IsStandard(input) && IsSameFile(input, output))
    Fail("--report shows %s as it was before too: name another file for the result", input.c_str());
}

void ReportPicture(const WorkOrder& order, const Made& made, const matrix& map) {
  if (!order.page) return;
  std::vector<std::string> again = {"norvkit", order.settings[0], made.input, made.output};
  again.insert(again.end(), order.settings.begin() + 1, order.settings.end());
  order.page->Add(made, again, order.choice.read, map);
}

}  // namespace norv
