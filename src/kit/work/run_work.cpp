#include "kit/work/run_work.h"

#include <filesystem>

#include "kit/failure.h"
#include "kit/formats/streams.h"
#include "kit/guidance/json.h"
#include "kit/guidance/manner.h"
#include "kit/work/make_picture.h"
#include "kit/work/result_name.h"
#include "platform/console.h"
#include "platform/team.h"

namespace norv {
namespace {

namespace fs = std::filesystem;

// photo_2x.png beside photo.jpg.
std::string NameBeside(const WorkChoice& choice, const std::string& picture, const WorkPlan& plan) {
  const fs::path path = picture;
  return (path.parent_path() / ResultName(choice.ownName + "{ext}", path.stem().string(), ".png", plan)).string();
}

void RequireRoomForRows(const std::string& output) {
  if (RunManner().json && IsStandard(output))
    throw WrongUsage("--json and a picture cannot both go to standard output: name a file");
}

Made MakeOne(const WorkOrder& order, const std::string& input, std::string& output) {
  RequireRoomForRows(output);
  OpenedPicture picture = OpenForWork(order, input);
  picture.alone = true;
  const bool named = !output.empty();
  if (!named) output = NameBeside(order.choice, input, picture.plan);
  const Made made = MakePicture(order, std::move(picture), output,
                                order.choice.threads > 0 ? order.choice.threads : ProcessorCount());
  if (!named) Tell("%s", output.c_str());
  return made;
}

}  // namespace

void RunWork(const WorkOrder& order) {
  const std::vector<std::string>& places = order.choice.places;
  const std::string name = order.settings[0];
  if (places.size() < 2 && !order.choice.mayLeaveOut)
    throw WrongUsage("OUT is missing: norvkit " + name + " PICTURE OUT");
  if (places.size() > 2) throw WrongUsage(places[2] + " is one word too many: norvkit " + name + " PICTURE OUT");
  const std::string input = places[0];
  std::string output = places.size() > 1 ? places[1] : "";
  try {
    const Made made = MakeOne(order, input, output);
    if (RunManner().json) SayRow(RowOf(made));
  } catch (...) {
    if (RunManner().json) SayRow(RowOf(Made{.input = input, .output = output, .error = FailureInWords()}), true);
    throw;
  }
}

}  // namespace norv
