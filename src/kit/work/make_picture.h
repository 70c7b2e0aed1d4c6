// One picture made of another, in two steps, so that whoever runs many can look at the plan before.
#pragma once

#include "kit/work/made.h"
#include "kit/work/picture_work.h"

namespace norv {

// A picture that is open, nothing of it read but what says its shape.
struct OpenedPicture {
  std::string input;
  PictureSource source;
  WorkPlan plan;
  double since = 0;      // when it was opened: Seconds() of platform/clock.h
  bool alone = false;    // the run's only one: what was chosen for it is told
  bool replace = false;  // what stands at the output is given up
  std::function<void(int32_t rows, int32_t height)> advanced = nullptr;  // told of rows that were written, and of all
};

// Throws what opening and planning throw.
OpenedPicture OpenForWork(const WorkOrder& order, const std::string& input);

// Checks the destination, makes the picture, writes it and measures. Returns what was made; throws where it was not,
// and leaves nothing half-written then.
Made MakePicture(const WorkOrder& order, OpenedPicture picture, const std::string& output, int32_t threads);

// Another rank's part of the same picture, where the first one shares it out (row_share.h).
void HelpWithPicture(const WorkOrder& order, const std::string& input, int32_t threads);

}  // namespace norv
