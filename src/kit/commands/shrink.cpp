#include <cmath>

#include "kit/commands/command.h"
#include "kit/commands/shared_rows.h"
#include "kit/failure.h"
#include "kit/pictures/destination.h"
#include "kit/pictures/image_file.h"
#include "kit/pictures/picture.h"
#include "kit/scale/resize.h"
#include "kit/scale/scale.h"

namespace norv {
namespace {

struct Settings {
  std::string picture, out;
  WantedSize size;
  std::optional<double> order;
  ReadChoice read;
  WriteChoice choice;
};

Options Rows(Settings& settings) {
  return Joined({{PictureRow(settings.picture), OutRow(settings.out, "the smaller one")},
                 SizeRows(settings.size, "smaller", "2"),
                 {{.name = "--filter",
                   .target = &settings.order,
                   .unit = "K",
                   .check = Between{-22, 64, true},
                   .help = std::string("of whole factors: ") + kShrinkOrders,
                   .byDefault = "-1",
                   .aliases = "--order"}},
                 {PageRow(settings.read)},
                 WriteRows(settings.choice)});
}

// The factor by which pairs for training are made, cropped to a multiple of it; 0: another size.
int32_t WholeFactor(const WantedSize& size) {
  if (!size.Said()) return 2;
  return size.by == std::floor(size.by) ? static_cast<int32_t>(size.by) : 0;
}

void Run(const Settings& settings) {
  PictureSource picture = OpenImage(settings.picture, settings.read);
  PictureShape shape = picture.shape;
  if (const int32_t factor = WholeFactor(settings.size)) {
    shape.width /= factor;
    shape.height /= factor;
    const Destination out(settings.out, shape, settings.choice, settings.picture);
    const int32_t order = static_cast<int32_t>(settings.order.value_or(-1));
    out.Save(ShrinkPicture(AllRows(picture), factor, order));
    return;
  }
  if (settings.order) throw WrongUsage("--filter goes with whole factors: leave it out, or --by 2");
  const PictureSize size = SizeOf(shape, settings.size, Direction::smaller);
  shape.width = size.width;
  shape.height = size.height;
  const Destination out(settings.out, shape, settings.choice, settings.picture);
  picture = Resized(std::move(picture), size, ResizeFilter::lanczos, 0);
  CopyRows(picture, out.Create(picture.shape));
}

}  // namespace

Command ShrinkCommand() {
  return MakeCommand<Settings>(
      {.name = "shrink",
       .purpose = "Make a picture smaller, without aliasing",
       .examples = "norvkit shrink photo.jpg small.jpg --longest 1600\n"
                   "norvkit shrink original.png small.png --by 2 --filter 0",
       .notes = "By a whole factor the picture is made smaller as training pictures are, cropped at the right and\n"
                "below to a multiple of it; to any other size by a stretched Lanczos-3."},
      Rows, Run);
}

}  // namespace norv
