// The receipt that a picture gets on its way into the world.
#pragma once

#include <optional>
#include <string>

#include "kit/proof/receipt.h"

namespace norv {

struct WorkOrder;
struct WriteChoice;
struct WorkPlan;

class IssuedReceipt {
 public:
  // Reads the input once more, for its sum, where there is to be a receipt. Throws where a file beside the output is
  // wanted and may not be written.
  IssuedReceipt(const WorkOrder& order, const WriteChoice& write, const WorkPlan& plan, const std::string& input,
                const std::string& output);

  // What the picture's file carries; empty: nothing.
  const std::string& Inside() const { return inside_; }
  // Once the picture stands: the file beside it, if it is to have one.
  void LayBeside() const;

 private:
  std::string inside_, beside_, path_;  // the texts; where the second goes
};

}  // namespace norv
