#include "kit/commands/command.h"
#include "kit/commands/shared_rows.h"
#include "kit/failure.h"
#include "kit/pictures/image_file.h"
#include "kit/pictures/picture.h"
#include "kit/scale/scale.h"

namespace norv {
namespace {

struct Settings {
  std::string picture, out;
  int32_t factor = 2, order = -1;
  WriteChoice choice;
};

Options Rows(Settings& settings) {
  return Joined(
      {{PictureRow(settings.picture),
        OutRow(settings.out, "the smaller one"),
        {.name = "--factor",
         .target = &settings.factor,
         .unit = "N",
         .check = Between{2, 64},
         .help = "how many times smaller, 2 to 64"},
        {.name = "--order", .target = &settings.order, .unit = "K", .help = std::string("filter: ") + kShrinkOrders}},
       WriteRows(settings.choice)});
}

void Run(const Settings& settings) {
  SaveImage(settings.out, ShrinkPicture(LoadImage(settings.picture), settings.factor, settings.order), settings.choice);
}

}  // namespace

Command ShrinkCommand() {
  return MakeCommand<Settings>({.name = "shrink",
                                .purpose = "Make a picture smaller as training pictures are",
                                .examples = "norvkit shrink original.png small.png --factor 2 --order -1"},
                               Rows, Run);
}

}  // namespace norv
