// A network looked into: units that do nothing, and what each one looks for.
#include <cmath>
#include <doctest/doctest.h>

#include "kit/look/weight_sheet.h"
#include "kit/pictures/picture.h"
#include "kit/pictures/picture_file.h"
#include "net/net_file.h"
#include "support/kit.h"
#include "support/nets.h"

using namespace norv;
using test::Contains;
using test::KitIn;

namespace {

// 8 - 6 - 4; of the first layer unit 2 is dead, 4 saturated, 5 no number; unit 3 of the second is a ramp never on.
NeuralNet AilingNet() {
  NeuralNet net = test::RandomRecord(8, {6, 4}, {12});
  std::vector<NetUnit>& first = net.layers[0].units;
  first[1].W.fill(0);
  first[3].ActivationKind = 1;
  BindActivation(first[3]);
  first[3].W.fill(0);
  first[3].W.x[0] = 1e7f;
  first[3].b = 1000;  // where nothing changes
  first[4].W.x[2] = NAN;
  NetUnit& ramp = net.layers[1].units[2];
  ramp.ActivationKind = 14;
  BindActivation(ramp);
  ramp.W.fill(0);
  ramp.W.x[0] = 1;
  ramp.b = -1000;
  // What is no number would spread.
  for (NetUnit& unit : net.layers[1].units) unit.W.x[4] = 0;
  return net;
}

size_t Count(const std::string& text, const std::string& part) {
  size_t count = 0;
  for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
  return count;
}

}  // namespace

TEST_CASE("dead, saturated and senseless units are found, and no others") {
  NeuralNet net = AilingNet();
  const NetHealth health = HealthOf(net, TestCardToLookAt());
  const LayerHealth& first = health.layers[0];
  CHECK(first.dead == std::vector<int32_t>{2});
  CHECK(first.saturated == std::vector<int32_t>{4});
  CHECK(first.notFinite == std::vector<int32_t>{5});
  CHECK(health.layers[1].notFinite.size() == 4);  // 0 times NaN is NaN
  CHECK(!health.IsGood());

  net.layers[0].units[4].W.x[2] = 1;
  const NetHealth mended = HealthOf(net, TestCardToLookAt());
  CHECK(mended.layers[0].notFinite.empty());
  CHECK(mended.layers[1].saturated == std::vector<int32_t>{3});
  CHECK(mended.layers[1].dead.empty());

  NeuralNet shapeless = test::RandomRecord(5, {3}, {1});
  CHECK(HealthOf(shapeless, TestCardToLookAt()).IsGood());
}

TEST_CASE("a sheet shows weights where their pixels are") {
  // A centred layout: the pixel to the right, and so the middle the other way round.
  NeuralNet net = test::RandomRecord(8, {2, 4}, {12});
  for (NetUnit& unit : net.layers[0].units) unit.W.fill(0);
  net.layers[0].units[0].W.x[4] = 2;  // pixels row by row without the middle: the one to its right
  net.layers[0].units[1].W.x[0] = NAN;
  const std::string sheet = DrawWeightSheet(net, HealthOf(net, TestCardToLookAt()));
  CHECK(Contains(sheet, "<rect x='20' y='10' width='10' height='10' fill='#b2182b'/>"));
  CHECK(Contains(sheet, "<rect x='10' y='10' width='10' height='10' fill='#2166ac'/>"));
  CHECK(Count(sheet, "fill='#000'") == 2);  // the pixel above to the left, and the middle
  CHECK(Count(sheet, "<g ") == Count(sheet, "</g>"));
  CHECK(Contains(sheet, "2 not finite"));
  // Without a layout, rows of cells as square as can be.
  const NeuralNet shapeless = test::RandomRecord(5, {1}, {12});
  const std::string rows = DrawWeightSheet(shapeless, NetHealth{{LayerHealth()}, std::string(500, '<') + "&", 0});
  CHECK(Count(rows, "&lt;") == 500);
  CHECK(Contains(rows, "&amp;.</text>"));
  CHECK(Count(rows, "width='10' height='10'") == 5);
  CHECK(Contains(rows, "<rect x='10' y='10'"));
}

TEST_CASE("info tells of pictures and networks, and writes a sheet where none is") {
  test::ScratchFolder folder;
  NeuralNet net = AilingNet();
  SaveNet(net, folder / "a.net", Folder::asGiven);
  Picture picture(20, 12, 3);
  for (int k = 0; k < 3; ++k) picture.plane[k].fill(static_cast<float>(40 * k));
  WritePicture(folder / "p.png", picture, {});
  WritePicture(folder / "p.jpg", picture, {});

  const std::string told = KitIn(folder, "info p.jpg p.png").output;
  for (const char* line : {"format: JPEG\n", "width: 20\n", "height: 12\n", "quality: about 95 of 100", "format: PNG\n",
                           "interlace: none\n", "alpha: no\n", "blue: 80 .. 80, mean 80"})
    CHECK_MESSAGE(Contains(told, line), line);
  const test::Outcome drawn = KitIn(folder, "info --on p.png a.net --sheet s.svg");
  CHECK(drawn.exitCode == 0);
  CHECK(Contains(drawn.output, "looked at: 240 pixels of p.png"));
  CHECK(Contains(drawn.output, "layer 1 dead: "));
  CHECK(Contains(test::ReadBytes(folder / "s.svg"), "</svg>"));

  const std::string rows = KitIn(folder, "info p.png a.net --json").output;
  CHECK(Count(rows, "\n") == 2);
  for (const char* member : {R"("format": "PNG")", R"("width": 20,)", R"("blue": {"least": 80, "greatest": 80)",
                             R"("layer 1 dead": [)", R"("kind": "network")"})
    CHECK_MESSAGE(Contains(rows, member), member);

  struct Refused {
    const char* line;
    int exitCode;
  };
  for (const Refused& refused : {Refused{"info a.net --sheet s.svg", 1},
                                 {"info a.net --sheet s.png", 2},
                                 {"info a.net a.net --sheet t.svg", 2},
                                 {"info p.png --sheet t.svg", 1},
                                 {"info p.png --on p.jpg", 1},
                                 {"info a.net --on missing.png", 1}}) {
    CAPTURE(refused.line);
    CHECK(KitIn(folder, refused.line).exitCode == refused.exitCode);
  }
  CHECK(KitIn(folder, "info a.net --sheet s.svg --overwrite").exitCode == 0);
  CHECK(!std::filesystem::exists(folder / "t.svg"));
}

TEST_CASE("a map of differences has the colours that are said, and replaces nothing unasked") {
  test::ScratchFolder folder;
  Picture a(20, 12, 3), b(20, 12, 3);
  for (int k = 0; k < 3; ++k) {
    a.plane[k].fill(0);
    b.plane[k].fill(0);
  }
  const float kDifferences[] = {0, 1, 4, 16, 64, 255, 40};
  for (int i = 0; i < 7; ++i) b.plane[i % 3].z[3][i] = kDifferences[i];
  WritePicture(folder / "a.png", a, {});
  WritePicture(folder / "b.png", b, {});
  const test::Outcome outcome = KitIn(folder, "compare a.png b.png --map m.png");
  CHECK(outcome.exitCode == 0);
  CHECK(Contains(outcome.output, "difference  at most 255 of 255, first at column 5, row 3; in 2.5 % of the pixels"));
  const Picture map = ReadPicture(folder / "m.png");
  const std::string row = KitIn(folder, "compare a.png b.png --json").output;
  CHECK(Contains(row, R"("difference": {"largest": 255, "column": 5, "row": 3, "share": 0.025}, "identical": false})"));
  CHECK(Count(row, "\n") == 1);
  CHECK(Contains(KitIn(folder, "compare a.png a.png --json").output, R"("red": {"psnr": null})"));
  const float kColours[][3] = {{0, 0, 0},      {30, 20, 110},   {130, 30, 130}, {230, 90, 40},
                               {255, 220, 70}, {255, 255, 255}, {243, 155, 55}};
  for (int i = 0; i < 7; ++i)
    for (int k = 0; k < 3; ++k) CHECK(map.plane[k].z[3][i] == doctest::Approx(kColours[i][k]).epsilon(0.01));
  CHECK(map.plane[0].z[4][4] == 0);
  CHECK(KitIn(folder, "compare a.png b.png --map m.png").exitCode == 1);
  CHECK(KitIn(folder, "compare a.png b.png --map a.png").exitCode == 1);
  CHECK(KitIn(folder, "compare a.png b.png --map m.png --overwrite").exitCode == 0);
}
