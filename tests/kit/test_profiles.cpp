// Four inks and L*a*b*, with and without a profile.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <doctest/doctest.h>
#include <functional>
#include <jpeglib.h>
#include <tiffio.h>
#include <vector>
#ifdef NORV_LCMS
#include <lcms2.h>
#endif

#include "kit/pictures/picture.h"
#include "kit/pictures/picture_file.h"
#include "support/kit.h"
#include "support/scratch.h"

using namespace norv;
using test::Contains;
using test::KitIn;

namespace {

using Colour = std::array<double, 3>;
using Pixels = std::vector<uint16_t>;  // of one row, sample by sample, in 16 bits whatever the file has

struct Tiff {
  int channels, bits, photometric;
  std::vector<uint16_t> extra = {};  // kinds of samples beyond the colours
  bool inverted = false;
  std::string profile = "";
};

// A picture of one row.
void WriteTiff(const std::string& path, const Tiff& kind, const Pixels& pixels) {
  TIFF* tiff = TIFFOpen(path.c_str(), "w");
  TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, static_cast<int>(pixels.size()) / kind.channels);
  TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, 1);
  TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, kind.channels);
  TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, kind.bits);
  TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, kind.photometric);
  TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
  if (!kind.extra.empty()) TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, int(kind.extra.size()), kind.extra.data());
  if (kind.inverted) TIFFSetField(tiff, TIFFTAG_DOTRANGE, 255, 0);
  if (!kind.profile.empty())
    TIFFSetField(tiff, TIFFTAG_ICCPROFILE, static_cast<uint32_t>(kind.profile.size()), kind.profile.data());
  Pixels row = pixels;
  if (kind.bits == 8)
    for (size_t i = 0; i < row.size(); ++i)
      reinterpret_cast<uint8_t*>(row.data())[i] = static_cast<uint8_t>(row[i] >> 8);
  TIFFWriteScanline(tiff, row.data(), 0, 0);
  TIFFClose(tiff);
}

// 8 rows of 8 equal pixels of inks as the library stores them.
[[maybe_unused]] void WriteJpeg(const std::string& path, J_COLOR_SPACE stored, const std::vector<uint8_t>& inks,
                                const std::string& profile) {
  jpeg_compress_struct jpeg;
  jpeg_error_mgr errors;
  jpeg.err = jpeg_std_error(&errors);
  jpeg_create_compress(&jpeg);
  FILE* file = std::fopen(path.c_str(), "wb");
  jpeg_stdio_dest(&jpeg, file);
  jpeg.image_width = jpeg.image_height = 8;
  jpeg.input_components = 4;
  jpeg.in_color_space = JCS_CMYK;
  jpeg_set_defaults(&jpeg);
  jpeg_set_colorspace(&jpeg, stored);
  jpeg_set_quality(&jpeg, 100, TRUE);
  jpeg_start_compress(&jpeg, TRUE);
  if (!profile.empty())
    jpeg_write_icc_profile(&jpeg, reinterpret_cast<const JOCTET*>(profile.data()),
                           static_cast<unsigned>(profile.size()));
  std::vector<uint8_t> row;
  for (int x = 0; x < 8; ++x) row.insert(row.end(), inks.begin(), inks.end());
  for (int r = 0; r < 8; ++r) {
    JSAMPROW pointer = row.data();
    jpeg_write_scanlines(&jpeg, &pointer, 1);
  }
  jpeg_finish_compress(&jpeg);
  jpeg_destroy_compress(&jpeg);
  std::fclose(file);
}

// What the file is seen as, by norvkit; what it said.
struct Seen {
  Picture picture;
  std::string errors;
};
Seen See(const test::ScratchFolder& folder, const std::string& name) {
  const test::Outcome outcome = KitIn(folder, "export " + name + " " + name + ".png");
  CAPTURE(outcome.errors);
  REQUIRE(outcome.exitCode == 0);
  Seen seen = {ReadPicture(folder / (name + ".png")), outcome.errors};
  std::filesystem::remove(folder / (name + ".png"));
  return seen;
}

double Difference(const Picture& picture, int32_t x, const Colour& wanted) {
  double most = 0;
  for (int k = 0; k < 3; ++k) most = std::max(most, std::abs(picture.Colour(k).x[x] - wanted[k]));
  return most;
}

constexpr double kD50[] = {0.96422, 1, 0.82521};

// X, Y, Z of L*a*b* for D50.
Colour XyzOf(const Colour& lab) {
  const double y = (lab[0] + 16) / 116, t[] = {y + lab[1] / 500, y, y - lab[2] / 200};
  Colour xyz;
  for (int k = 0; k < 3; ++k) xyz[k] = kD50[k] * (t[k] > 6.0 / 29 ? t[k] * t[k] * t[k] : (t[k] - 4.0 / 29) * 108 / 841);
  return xyz;
}

// Display values 0..255 by the matrix that is published for D50.
Colour RgbOf(const Colour& xyz) {
  constexpr double m[3][3] = {
      {3.1338561, -1.6168667, -0.4906146}, {-0.9787684, 1.9161415, 0.0334540}, {0.0719453, -0.2289914, 1.4052427}};
  Colour rgb;
  for (int k = 0; k < 3; ++k) {
    const double v = std::clamp(m[k][0] * xyz[0] + m[k][1] * xyz[1] + m[k][2] * xyz[2], 0.0, 1.0);
    rgb[k] = 255 * (v <= 0.0031308 ? 12.92 * v : 1.055 * std::pow(v, 1 / 2.4) - 0.055);
  }
  return rgb;
}

}  // namespace

TEST_CASE("inks without a profile let through what inks and black leave") {
  test::ScratchFolder folder;
  const Pixels inks = {0,      0,      0, 0, 65535, 0,     0,      0, 0x4040, 0x8080,
                       0xC0C0, 0x2020, 0, 0, 0,     65535, 0x1111, 0, 0x2222, 0};
  for (const int bits : {8, 16})
    for (const bool inverted : {false, true})
      for (const std::vector<uint16_t>& extra :
           {std::vector<uint16_t>{}, {EXTRASAMPLE_UNASSALPHA}, {EXTRASAMPLE_ASSOCALPHA}, {EXTRASAMPLE_UNSPECIFIED}}) {
        Pixels pixels;
        for (size_t x = 0; x < 5; ++x) {
          // Half the light, and half the ink where it is multiplied.
          const uint16_t alpha = 0x8080;
          for (size_t k = 0; k < 4; ++k) {
            const uint16_t value = inverted ? static_cast<uint16_t>(65535 - inks[4 * x + k]) : inks[4 * x + k];
            const bool multiplied = !extra.empty() && extra[0] == EXTRASAMPLE_ASSOCALPHA;
            pixels.push_back(multiplied ? static_cast<uint16_t>(value * 128 / 255) : value);
          }
          if (!extra.empty()) pixels.push_back(alpha);
        }
        WriteTiff(folder / "inks.tif", {4 + int(extra.size()), bits, PHOTOMETRIC_SEPARATED, extra, inverted}, pixels);
        const Seen seen = See(folder, "inks.tif");
        CAPTURE(bits);
        CAPTURE(inverted);
        const bool alpha = !extra.empty() && extra[0] != EXTRASAMPLE_UNSPECIFIED;
        CHECK((seen.picture.channels == (alpha ? 4 : 3) && seen.picture.bits == bits));
        for (int32_t x = 0; x < 5; ++x) {
          Colour wanted;
          for (int k = 0; k < 3; ++k)
            wanted[k] = 255 * (1 - inks[4 * x + k] / 65535.0) * (1 - inks[4 * x + 3] / 65535.0);
          CHECK(Difference(seen.picture, x, wanted) <= (alpha && extra[0] == EXTRASAMPLE_ASSOCALPHA ? 1.6 : 0.5));
          if (alpha) CHECK(seen.picture.Alpha().x[x] == 128);
        }
        CHECK(Contains(seen.errors, "CMYK is converted to sRGB without a profile"));
      }
}

TEST_CASE("L*a*b* in all three encodings is the colour that it names") {
  test::ScratchFolder folder;
  const Colour colours[] = {{100, 0, 0},   {0, 0, 0},    {53.585, 0, 0}, {54.2917, 80.8125, 69.8851},
                            {60, -40, 30}, {70, 20, -50}};
  struct Encoding {
    int photometric;
    std::function<Colour(const Colour&, int)> samples;  // of 16 bits
  };
  const auto unit = [](int bits) { return bits == 16 ? 1.0 : 256.0; };
  const Encoding encodings[] = {
      {PHOTOMETRIC_CIELAB,
       [&](const Colour& c, int bits) {
         return Colour{c[0] * (bits == 16 ? 655.35 : 2.55 * 256), c[1] * 256, c[2] * 256};
       }},
      {PHOTOMETRIC_ICCLAB,
       [&](const Colour& c, int bits) {
         return Colour{c[0] * (bits == 16 ? 652.8 : 2.55 * 256), (c[1] + 128) * 256, (c[2] + 128) * 256};
       }},
      {PHOTOMETRIC_ITULAB, [&](const Colour& c, int bits) {
         const double most = bits == 16 ? 65535 : 255 * 256;
         return Colour{c[0] / 100 * most, (c[1] * 255 + 21760) / 170 / 255 * most,
                       (c[2] * 255 + 19200) / 200 / 255 * most};
       }}};
  for (const Encoding& encoding : encodings)
    for (const int bits : {8, 16}) {
      Pixels pixels;
      for (const Colour& colour : colours)
        for (const double value : encoding.samples(colour, bits))
          pixels.push_back(static_cast<uint16_t>(std::lround(value / unit(bits)) * long(unit(bits))));
      WriteTiff(folder / "lab.tif", {3, bits, encoding.photometric}, pixels);
      const Seen seen = See(folder, "lab.tif");
      CAPTURE(encoding.photometric);
      CAPTURE(bits);
      CHECK(seen.picture.bits == bits);
      for (int32_t x = 0; x < 6; ++x)
        CHECK(Difference(seen.picture, x, RgbOf(XyzOf(colours[x]))) < (bits == 16 ? 0.12 : 3.5));
      CHECK(Difference(seen.picture, 0, {255, 255, 255}) == 0);
      CHECK(Difference(seen.picture, 1, {0, 0, 0}) == 0);
      CHECK(Contains(seen.errors, "L*a*b* is converted to sRGB without a profile"));
    }
}

#ifdef NORV_LCMS

namespace {

// And the profile is gone.
std::string BytesOf(cmsHPROFILE profile) {
  cmsUInt32Number size = 0;
  cmsSaveProfileToMem(profile, nullptr, &size);
  std::string bytes(size, 0);
  cmsSaveProfileToMem(profile, bytes.data(), &size);
  cmsCloseProfile(profile);
  return bytes;
}

// L*a*b* that inks (0..1) make in the profile below.
Colour LabOfInks(const double* inks) {
  const auto [c, m, y, k] = std::array{inks[0], inks[1], inks[2], inks[3]};
  return {100 - 60 * k - 10 * (c + m + y), 30 * (m - c), 30 * y - 15 * (c + m)};
}

// A profile of four inks on white paper whose darkest is grey: a table of two points a side between which it is linear.
std::string InkProfile() {
  const cmsHPROFILE profile = cmsCreateProfilePlaceholder(nullptr);
  cmsSetProfileVersion(profile, 4.3);
  cmsSetDeviceClass(profile, cmsSigInputClass);
  cmsSetColorSpace(profile, cmsSigCmykData);
  cmsSetPCS(profile, cmsSigLabData);
  cmsPipeline* pipeline = cmsPipelineAlloc(nullptr, 4, 3);
  cmsStage* table = cmsStageAllocCLut16bit(nullptr, 2, 4, 3, nullptr);
  const auto fill = [](const cmsUInt16Number in[], cmsUInt16Number out[], void*) -> cmsInt32Number {
    const double inks[] = {in[0] / 65535.0, in[1] / 65535.0, in[2] / 65535.0, in[3] / 65535.0};
    const auto [lightness, a, b] = LabOfInks(inks);
    out[0] = static_cast<uint16_t>(std::lround(lightness * 655.35));
    out[1] = static_cast<uint16_t>(std::lround((a + 128) * 257));
    out[2] = static_cast<uint16_t>(std::lround((b + 128) * 257));
    return TRUE;
  };
  cmsStageSampleCLut16bit(table, fill, nullptr, 0);
  cmsPipelineInsertStage(pipeline, cmsAT_END, cmsStageAllocToneCurves(nullptr, 4, nullptr));
  cmsPipelineInsertStage(pipeline, cmsAT_END, table);
  cmsPipelineInsertStage(pipeline, cmsAT_END, cmsStageAllocToneCurves(nullptr, 3, nullptr));
  for (const cmsTagSignature tag : {cmsSigAToB0Tag, cmsSigAToB1Tag}) cmsWriteTag(profile, tag, pipeline);
  cmsPipelineFree(pipeline);
  // Floats that say that all is black: such tables are not taken.
  const double black[12] = {};
  cmsPipeline* floats = cmsPipelineAlloc(nullptr, 4, 3);
  cmsPipelineInsertStage(floats, cmsAT_END, cmsStageAllocMatrix(nullptr, 3, 4, black, nullptr));
  REQUIRE(cmsWriteTag(profile, cmsSigDToB1Tag, floats));
  cmsPipelineFree(floats);
  return BytesOf(profile);
}

// What is seen of these inks: the darkest that there is becomes black.
Colour SeenOfInks(const double* inks) {
  const double all[] = {1, 1, 1, 1};
  Colour xyz = XyzOf(LabOfInks(inks));
  const Colour black = XyzOf({LabOfInks(all)[0], 0, 0});
  for (int k = 0; k < 3; ++k) xyz[k] = (xyz[k] - black[k]) / (kD50[k] - black[k]) * kD50[k];
  return RgbOf(xyz);
}

}  // namespace

TEST_CASE("inks are seen by their profile: paper white, the darkest black") {
  test::ScratchFolder folder;
  const std::string profile = InkProfile();
  const double inks[][4] = {{0, 0, 0, 0},         {1, 1, 1, 1},     {0, 0, 0, 0.4},
                            {0.6, 0.2, 0.4, 0.2}, {0, 0.8, 0.6, 0}, {0.2, 0.2, 0.2, 1}};
  Pixels pixels;
  for (const double* pixel : inks)
    for (int k = 0; k < 4; ++k) pixels.push_back(static_cast<uint16_t>(std::lround(65535 * pixel[k])));
  for (const int bits : {8, 16}) {
    WriteTiff(folder / "inks.tif", {4, bits, PHOTOMETRIC_SEPARATED, {}, false, profile}, pixels);
    const Seen seen = See(folder, "inks.tif");
    CHECK(Contains(seen.errors, "CMYK is converted to sRGB by its profile"));
    CHECK(seen.picture.bits == bits);
    for (int32_t x = 0; x < 6; ++x) {
      CAPTURE(x);
      CHECK(Difference(seen.picture, x, SeenOfInks(inks[x])) < 1.5);
    }
  }
  // Of JPEGs the library's own mark says that the inks are inverted, in either way to store them.
  for (const J_COLOR_SPACE stored : {JCS_CMYK, JCS_YCCK})
    for (const double* pixel : inks) {
      if (stored == JCS_YCCK && pixel != inks[3]) continue;
      std::vector<uint8_t> values;
      for (int k = 0; k < 4; ++k) values.push_back(static_cast<uint8_t>(255 - std::lround(255 * pixel[k])));
      WriteJpeg(folder / "inks.jpg", stored, values, profile);
      CHECK(Difference(See(folder, "inks.jpg").picture, 0, SeenOfInks(pixel)) < 4);
    }
}

TEST_CASE("L*a*b* with a profile of its own is the same colour") {
  test::ScratchFolder folder;
  const Tiff kind = {3, 16, PHOTOMETRIC_CIELAB, {}, false, BytesOf(cmsCreateLab4Profile(nullptr))};
  WriteTiff(folder / "lab.tif", kind, {39322, uint16_t(-40 * 256), 30 * 256, 32768, 20 * 256, uint16_t(-30 * 256)});
  const Seen seen = See(folder, "lab.tif");
  CHECK(Contains(seen.errors, "L*a*b* is converted to sRGB by its profile"));
  CHECK(Difference(seen.picture, 0, RgbOf(XyzOf({60, -40, 30}))) < 0.3);
  CHECK(Difference(seen.picture, 1, RgbOf(XyzOf({50, 20, -30}))) < 0.3);
}

TEST_CASE("a profile that does not fit is left out with a warning") {
  test::ScratchFolder folder;
  const std::string good = InkProfile();
  std::string huge = good;
  // The table claims 255 points on each of four sides.
  for (size_t at = huge.find("mAB "); at != std::string::npos; at = huge.find("mAB ", at + 4))
    if (const size_t table = huge.find(std::string("\2\2\2\2\0\0\0\0", 8), at); table != std::string::npos)
      std::fill_n(huge.begin() + static_cast<ptrdiff_t>(table), 4, '\xFF');
  REQUIRE(huge != good);
  std::string broken = good;
  broken.replace(128, 4, "\x7F\xFF\xFF\xFF");
  const Pixels pixels = {0x4040, 0x8080, 0xC0C0, 0x2020};
  for (const std::string& bad : {BytesOf(cmsCreate_sRGBProfile()), good.substr(0, 100), good.substr(0, 200), huge,
                                 broken, std::string(5000, 'x')}) {
    WriteTiff(folder / "inks.tif", {4, 8, PHOTOMETRIC_SEPARATED, {}, false, bad}, pixels);
    const Seen seen = See(folder, "inks.tif");
    CAPTURE(seen.errors);
    CHECK(Contains(seen.errors, "the colour profile is left out"));
    CHECK(Difference(seen.picture, 0, {167, 111, 55}) <= 1);
  }
}

#endif
