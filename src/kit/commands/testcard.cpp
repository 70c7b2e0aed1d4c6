#include <cstdio>

#include "kit/commands/command.h"
#include "kit/commands/shared_rows.h"
#include "kit/failure.h"
#include "kit/guidance/manner.h"
#include "kit/pictures/image_file.h"
#include "kit/pictures/test_card.h"

namespace norv {
namespace {

struct Settings {
  std::string picture, size = "720x480";
  WriteChoice choice;
};

constexpr int kSmallest = 48, kLargest = 20000;

Options Rows(Settings& settings) {
  return Joined({{{.name = "PICTURE",
                   .target = &settings.picture,
                   .help = "the picture to draw: " + WrittenExtensions() + ", .fdib, .mat or .bit"},
                  {.name = "--size",
                   .target = &settings.size,
                   .unit = "WxH",
                   .help = "width and height in pixels, each 48 to 20000"}},
                 WriteRows(settings.choice)});
}

void Run(const Settings& settings) {
  int width = 0, height = 0, used = 0;
  const int fields = std::sscanf(settings.size.c_str(), "%5dx%5d%n", &width, &height, &used);
  if (fields != 2 || settings.size.c_str()[used] != '\0' || width < kSmallest || height < kSmallest ||
      width > kLargest || height > kLargest)
    throw WrongUsage("--size has to be WIDTHxHEIGHT, each 48 to 20000: " + settings.size);
  const PictureSource card = DrawTestCard(width, height);
  RefuseRowsBesidePicture(settings.picture);
  CopyRows(card, CreateImage(settings.picture, card.shape, settings.choice));
  SayWritten("", settings.picture, width, height);
}

}  // namespace

Command TestCardCommand() {
  return MakeCommand<Settings>({.name = "testcard",
                                .purpose = "Draw a test card: edges, strokes, rings, discs, shading, bars",
                                .examples = "norvkit testcard card.png --size 720x480"},
                               Rows, Run);
}

}  // namespace norv
