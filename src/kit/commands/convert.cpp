#include "kit/commands/command.h"
#include "kit/commands/shared_rows.h"
#include "kit/work/run_work.h"

namespace norv {
namespace {

struct Settings {
  WorkChoice choice;
};

Options Rows(Settings& settings) {
  return Joined({PlaceRows(settings.choice.places, "the same picture"), WorkRows(settings.choice)});
}

PictureWork WorkOf(Settings&) {
  return {[](const PictureShape& shape) {
    return WorkPlan{shape, "converted", 1, [](PictureSource picture, int32_t) { return picture; }};
  }};
}

}  // namespace

Command ConvertCommand() {
  return MakeWorkCommand<Settings>(
      {.name = "convert",
       .purpose = "Write a picture in another format, bits or quality; metadata are kept",
       .examples = "norvkit convert photo.heic photo.jpg\nnorvkit convert scan.tif scan.png --bits 8 --dither"},
      Rows, WorkOf);
}

}  // namespace norv
