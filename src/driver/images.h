// The float images that the graphical program leaves for a run and takes back.
#pragma once

#include <string>

#include "image/float_image.h"

namespace norv {

// On purpose neither fails, by the contract with the graphical program: a missing picture is an empty one, and the run
// ends as usual even when its result cannot be written. The reason is on standard error then.
inline FloatImage LoadInputImage(Folder folder = Folder::executable) {
  FloatImage image;
  static_cast<void>(image.Load("input.fdib", folder));
  return image;
}
inline void SaveResultImage(const FloatImage& image, const std::string& name) {
  static_cast<void>(image.Save(name, Folder::executable));
}

}  // namespace norv
