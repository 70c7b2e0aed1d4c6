// Colour models: the ways back, far values, and what the contract with the graphical program fixes to the bit.
#include "colour/models.h"
#include "linear/random.h"
#include "support/levels.h"
#include "support/test.h"

namespace {

const ColourModel& Named(int32_t code) {
  const ColourModel* model = FindModel(code);
  REQUIRE(model);
  return *model;
}

}  // namespace

TEST_CASE("every colour model returns display colours") {
  CHECK(ColourModels().size() == 21);
  std::vector<float> levels = {0.0f, 1e-4f, 0.002f, 0.3f, 1.0f, 127.5f, 128.0f, 254.0f, 254.999f, 255.0f};
  for (int v = 7; v < 255; v += 16) levels.push_back(static_cast<float>(v));
  std::vector<std::array<float, 3>> colours;
  for (float r : levels)
    for (float g : levels)
      for (float b : levels) colours.push_back({r, g, b});
  RandomGenerator random;
  const auto channel = [&] { return static_cast<float>(random.Next()) * 0.0255f; };
  for (int i = 0; i < 20000; ++i) colours.push_back({channel(), channel(), channel()});
  for (float v = 0; v <= 255; v += 0.1f)
    for (float blue : {v, std::nextafter(v, 255.0f)}) colours.push_back({v, v, blue});
  for (const ColourModel& model : ColourModels()) {
    double worst = 0;
    for (const auto& colour : colours) {
      float there[4], back[4];
      model.fromModel(back, model.toModel(there, colour.data()));
      for (size_t k = 0; k < 3; ++k) {
        const double error = std::abs(static_cast<double>(back[k]) - colour[k]);
        worst = std::isnan(error) ? std::numeric_limits<double>::infinity() : std::max(worst, error);
      }
    }
    CHECK_MESSAGE(worst < 0.01, std::string(model.name));
  }
}

TEST_CASE("no finite pixel becomes infinite or NaN") {
  const float far[] = {0.0f,   -0.0f,  1e-30f,  -1e-30f, -0.001f, 1.0f,  127.5f,
                       255.0f, 400.0f, -255.0f, 1e30f,   -1e30f,  360.0f};
  for (const ColourModel& model : ColourModels()) {
    CAPTURE(std::string(model.name));
    int bad = 0;
    for (float a : far)
      for (float b : far)
        for (float c : far)
          for (float d : {0.0f, 255.0f, -1e30f}) {
            const float source[4] = {a, b, c, d};
            float there[4], back[4];
            model.toModel(there, source);
            model.fromModel(back, source);
            for (int k = 0; k < model.planes; ++k) bad += !std::isfinite(there[k]);
            for (int k = 0; k < 3; ++k) bad += !std::isfinite(back[k]);
          }
    CHECK(bad == 0);
  }
}

TEST_CASE("colour formulas of the contract hold to the bit") {
  const ColourModel &luminance = Named(131072 | 7), &again = Named(2097152);
  const ColourModel &inversion = Named(4096), &fourth = Named(8192), &grey = Named(64);
  CHECK(fourth.planes == 4);
  RandomGenerator random;
  int wrong = 0;
  for (int i = 0; i < 50000; ++i) {
    float v[3], out[4];
    for (float& channel : v) channel = static_cast<float>(random.Next() - 1000) * 0.0377f;
    const double r = v[0], g = v[1], b = v[2];
    const float expected[3] = {static_cast<float>(0.299 * r + 0.587 * g + 0.114 * b),
                               static_cast<float>(0.5 * b - (0.1687 * r + 0.3313 * g)),
                               static_cast<float>(0.5 * r - 0.4187 * g - 0.0813 * b)};
    wrong += luminance.toModel(out, v) != out || std::memcmp(out, expected, sizeof expected) != 0;
    wrong += std::memcmp(again.toModel(out, v), expected, sizeof expected) != 0;
    inversion.toModel(out, v);
    wrong += out[0] != 255.0f - v[0] || out[1] != 255.0f - v[1] || out[2] != 255.0f - v[2];
    grey.toModel(out, v);
    wrong += out[0] != static_cast<float>((r + g + b) * 0.57735026);
    fourth.toModel(out, v);
    wrong += std::memcmp(out, v, sizeof v) != 0 || out[3] != 255.0f;
  }
  CHECK(wrong == 0);
}

TEST_CASE("planes of any length come out as single pixels do, at every level") {
  constexpr int32_t kLongest = 37;
  RandomGenerator random;
  float from[4][kLongest], to[4][kLongest];
  for (auto& plane : from)
    for (float& value : plane) value = static_cast<float>(random.Next() - 2000) * 0.03f;
  const float* const source[4] = {from[0], from[1], from[2], from[3]};
  float* const target[4] = {to[0], to[1], to[2], to[3]};
  for (const VectorLevel level : AvailableLevels())
    for (const ColourModel& model : ColourModels())
      for (const bool there : {true, false}) {
        const ForcedLevel forced(level);
        CAPTURE(std::string(model.name));
        int wrong = 0;
        for (int32_t n = 0; n <= kLongest; ++n) {
          for (auto& plane : to) std::fill_n(plane, kLongest, -7.0f);
          (there ? model.runToModel : model.runFromModel)(target, source, n);
          for (int32_t i = 0; i < kLongest; ++i) {
            const float pixel[4] = {from[0][i], from[1][i], from[2][i], from[3][i]};
            float single[4] = {-7, -7, -7, -7};
            if (i < n) (there ? model.toModel : model.fromModel)(single, pixel);
            for (int32_t k = 0; k < (there ? model.planes : 3); ++k)
              wrong += std::memcmp(&single[k], &to[k][i], sizeof(float)) != 0;
          }
        }
        CHECK(wrong == 0);
      }
}

TEST_CASE("landmarks of the models") {
  struct {
    int32_t code;
    float rgb[3];
    std::vector<float> model;
  } const landmarks[] = {
      {0x20, {100, 100, 100}, {100, 0, 127.5f, 255}},    // grey: hue 0
      {0x20, {90, 0, 0}, {30, 255, 127.5f, 255}},        // red
      {0x40, {255, 255, 255}, {441.67296f, 0, 0, 0}},    // white: 255 times the root of 3
      {0x80, {200, 100, 50}, {0, 100, 150, 55}},         // black is what the inks share
      {0x200, {0, 200, 200}, {240, 1, 200}},             // cyan lies between green (180) and blue (300)
      {0x200, {255, 0, 0}, {60, 1, 255}},                //
      {0x400, {255, 127.5f, 127.5f}, {60, 1, 191.25f}},  // the lighter half
      {0x400, {0, 0, 100}, {300, 1, 50}},                // the darker half
      {0x800, {0, 0, 90}, {240, 1, 30}},                 //
      {0x4000, {254.999f, 0.999f, 0}, {255, 0, -317.8839f}},
      {0x8000, {255, 255, 255}, {100, 0, 0}},   //
      {0x10000, {255, 255, 255}, {255, 0, 0}},  //
      {0x40000, {0.999f, 0, 255}, {0, -6.9077554f, 5.5412674f}},
      {0x400000, {10, 20, 60}, {30, -20, 30}},            //
      {0x800000, {0, 0, 100}, {11.4f, 43.6f, -10.001f}},  //
      {0x4000000, {50, 50, 50}, {3.912043f, 0, 0}},
  };
  for (const auto& [code, rgb, model] : landmarks) {
    CAPTURE(code);
    float out[4];
    Named(code).toModel(out, rgb);
    REQUIRE(model.size() == static_cast<size_t>(Named(code).planes));
    for (size_t k = 0; k < model.size(); ++k) CHECK(std::abs(out[k] - model[k]) < 2e-3);
  }
  for (int32_t code : {0x200, 0x400, 0x800}) {  // hues go round
    const float hues[] = {-60.0f, 300.0f, 1020.0f};
    float rgb[3][3];
    for (int i = 0; i < 3; ++i) {
      const float pixel[3] = {hues[i], 0.5f, 100.0f};
      Named(code).fromModel(rgb[i], pixel);
    }
    CHECK(std::memcmp(rgb[0], rgb[1], sizeof rgb[0]) == 0);
    CHECK(std::memcmp(rgb[2], rgb[1], sizeof rgb[0]) == 0);
  }
  CHECK(FindModel(0) == nullptr);
  CHECK(FindModel(0x30) == nullptr);
  CHECK(FindModel(-16) == nullptr);
}
