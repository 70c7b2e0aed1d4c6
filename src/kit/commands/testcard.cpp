#include <cstdio>

#include "kit/commands/command.h"
#include "kit/pictures/conversions.h"
#include "kit/pictures/test_card.h"

namespace norv {
namespace {

struct TestCardOptions {
  std::string picture, size = "720x480";
  WriteChoice choice;
};

constexpr int kSmallest = 48, kLargest = 20000;

void Declare(CLI::App& command, TestCardOptions& options) {
  command.add_option("PICTURE", options.picture, "the picture to draw: .png, .jpg, .tif, .fdib, .mat or .bit")
      ->required();
  command.add_option("--size", options.size, "width and height in pixels, each 48 to 20000")->type_name("WxH");
  DeclareWriteChoice(command, options.choice);
}

void Run(const TestCardOptions& options) {
  int width = 0, height = 0, used = 0;
  const int fields = std::sscanf(options.size.c_str(), "%5dx%5d%n", &width, &height, &used);
  if (fields != 2 || options.size.c_str()[used] != '\0' || width < kSmallest || height < kSmallest ||
      width > kLargest || height > kLargest)
    RefuseUsage("--size has to be WIDTHxHEIGHT, each 48 to 20000: " + options.size);
  SaveImage(options.picture, DrawTestCard(width, height), options.choice);
}

}  // namespace

CLI::App& AddTestCard(CLI::App& kit) {
  return AddCommand<TestCardOptions>(kit, "testcard", "Draw a test card: edges, strokes, rings, discs, shading, bars",
                                     "norvkit testcard card.png --size 720x480", Declare, Run);
}

}  // namespace norv
