#include <tuple>

#include "raster/filters.h"
#include "raster/orient.h"
#include "raster/separable.h"
#include "support/plain_enlarge.h"
#include "support/samples.h"
#include "support/test.h"
#include "train/training_pairs.h"

namespace {

constexpr float kScale = 0.003921569f;

std::vector<float> PairsTheLongWay(const matrix& picture, int32_t Nin, int32_t Ny, int32_t shrinkOrder) {
  const int32_t f = Ny == 16 ? 4 : 2, w = picture.m / f, h = picture.n / f;
  matrix cropped(w * f, h * f), low(w, h), filter, block(f, f);
  for (int32_t r = 0; r < h * f; ++r) std::copy_n(picture.z[r], w * f, cropped.z[r]);
  ShrinkKernel(filter, f, shrinkOrder);
  ShrinkMatrix(low, cropped, filter);
  std::vector<float> records;
  matrix around(7, 7), turned;
  for (int32_t r = 3; r <= h - 4; ++r)
    for (int32_t c = 3; c <= w - 4; ++c) {
      for (int32_t i = 0; i < 7; ++i) std::copy_n(low.z[r - 3 + i] + c - 3, 7, around.z[i]);
      for (int32_t i = 0; i < f; ++i)
        for (int32_t j = 0; j < f; ++j) block.z[i][j] = (cropped.z[f * r + i][f * c + j] - low.z[r][c]) * kScale;
      for (int32_t k = 0; k < 8; ++k) {
        OrientMatrix(turned, around, k);
        const matrix input = PlainInput(turned, 3, 3, Nin);
        records.insert(records.end(), input.x, input.x + Nin);
        OrientMatrix(turned, block, k);
        records.insert(records.end(), turned.x, turned.x + Ny);
      }
    }
  return records;
}

}  // namespace

TEST_CASE("training pairs: all layouts and filters, every pixel in eight orientations, in the set and in the file") {
  const ScratchFolder folder;
  for (const int32_t Nin : {8, 24, 48, 49, 72})
    for (const auto& [Ny, w, h] : {std::tuple(4, 19, 17), std::tuple(16, 39, 34)})
      for (const int32_t order : {-1, 0, 3}) {
        INFO(Nin, " ", order);
        const matrix original = RandomPlane(w, h, 3);
        const std::vector<float> expected = PairsTheLongWay(original, Nin, Ny, order);
        matrix picture = original;
        TrainingSet set;
        BuildTrainingPairs(set, picture, Nin, Ny, order);
        CHECK(picture.m == w / (Ny == 16 ? 4 : 2) * (Ny == 16 ? 4 : 2));  // cropped in place
        CHECK(picture.z[picture.n - 1][1] == original.z[picture.n - 1][1]);
        const std::string bytes = FileBytes(set);
        CHECK(bytes.substr(12) == BytesOf(expected.data(), expected.size()));
        picture = original;
        WriteTrainingPairs(folder / "set", picture, Nin, Ny, order, {}, 3);
        CHECK(ReadBytes(folder / "set") == bytes);
      }
}

TEST_CASE("training pairs: added behind the counted records, or at the end of a file short of them, with a warning") {
  const ScratchFolder folder;
  matrix picture = RandomPlane(20, 18, 3);
  TrainingSet added;
  BuildTrainingPairs(added, picture, 8, 4, -2);
  CHECK(added.N == 4 * 3 * 8);
  // Nothing but the header, half a record, and all of them before what an interrupted append left.
  const std::string old = FileBytes(MakeSamples(5, 8, 4)), left(1000000, 'x');
  for (const size_t kept : {size_t{12}, size_t{36}, old.size()}) {
    WriteBytes(folder / "set", old.substr(0, kept) + (kept == old.size() ? left : ""));
    const std::string warning = ErrorsOf([&] { AppendTrainingPairs(folder / "set", picture, -2); });
    CHECK(Contains(warning, "fewer records than its header counts") == (kept < old.size()));
    const std::string all = Int32Bytes({5 + added.N, 8, 4}) + old.substr(12, kept - 12) + FileBytes(added).substr(12);
    CHECK(ReadBytes(folder / "set").substr(0, all.size()) == all);
  }
}

TEST_CASE("training pairs: what gives none is refused with its reason and the file is kept") {
  const ScratchFolder folder;
  matrix good = RandomPlane(20, 18, 3);
  WriteTrainingPairs(folder / "set", good, 8, 4, 0);
  const std::string before = ReadBytes(folder / "set");
  const auto refused = [&](int32_t w, int32_t h, int32_t Nin, int32_t Ny, int32_t order, const char* reason) {
    matrix picture = RandomPlane(w, h, 3);
    CHECK_THROWS_WITH_AS(WriteTrainingPairs(folder / "set", picture, Nin, Ny, order), doctest::Contains(reason),
                         const char*);
    CHECK(ReadBytes(folder / "set") == before);
  };
  for (const auto& [w, h, Ny] : {std::tuple(13, 20, 4), {20, 27, 16}, {0, 0, 4}}) refused(w, h, 8, Ny, 0, "too small");
  for (const auto& [Nin, Ny] : {std::pair(9, 4), {8, 9}})
    refused(20, 20, Nin, Ny, 0, "Training pairs have 8, 24, 48, 49 or 72 inputs and 4 or 16 outputs.");
  for (const int32_t order : {-6, 65}) refused(20, 20, 8, 4, order, "filter");
  CHECK_THROWS_WITH_AS(AppendTrainingPairs(folder / "missing", good, 0), "PROBLEM OPENING FILE!", const char*);
  matrix tiny = RandomPlane(8, 8, 3);
  CHECK_THROWS_AS(AppendTrainingPairs(folder / "set", tiny, 0), const char*);
  CHECK(ReadBytes(folder / "set") == before);
}
