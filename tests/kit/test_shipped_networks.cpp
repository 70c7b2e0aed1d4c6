// The networks of models/ are whole and worth having: nobody replaces one by a worse one unnoticed.
#include <doctest/doctest.h>
#include <string>

#include "kit/measure/quality.h"
#include "kit/pictures/picture.h"
#include "kit/pictures/picture_file.h"
#include "kit/pictures/test_card.h"
#include "kit/training/training_pictures.h"
#include "net/net_file.h"
#include "support/places.h"
#include "support/scratch.h"

using namespace norv;

namespace {

struct Shipped {
  const char* name;
  int32_t inputs, factor;
  double gain;  // at least, in decibels
};

// On the drawn card, shrunk and rounded as the held-out picture of a training is.
double GainOverLanczos(const NeuralNet& net, int32_t factor) {
  test::ScratchFolder folder;
  for (const char* name : {"card.png", "other.png"}) WritePicture(folder / name, AllRows(DrawTestCard(384, 256)), {});
  const TrainingPictures pictures({.folder = folder.Path(), .valid = "card.png", .factor = factor});
  return ValidationPsnr(net, pictures.Validation(), 1) - pictures.Validation()[0].lanczos;
}

}  // namespace

TEST_CASE("shipped networks fit their names and beat Lanczos") {
  for (const Shipped& shipped :
       {Shipped{"x2-8.net", 8, 2, 1.9}, Shipped{"x2-24.net", 24, 2, 2.5}, Shipped{"x2-48.net", 48, 2, 2.8},
        Shipped{"x2-48-wide.net", 48, 2, 2.65}, Shipped{"x2-48-best.net", 48, 2, 2.7},
        Shipped{"x2-48-drawn.net", 48, 2, 1.9}, Shipped{"x4-48.net", 48, 4, 0.3}}) {
    CAPTURE(std::string(shipped.name));
    NeuralNet net;
    LoadNet(net, test::SourceFolder() + "/models/" + shipped.name, Folder::asGiven);
    CHECK(net.N0 == shipped.inputs);
    CHECK(net.LastNi() == shipped.factor * shipped.factor);
    CHECK(GainOverLanczos(net, shipped.factor) > shipped.gain);
  }
}
