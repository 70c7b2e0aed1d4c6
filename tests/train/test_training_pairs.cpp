#include <algorithm>
#include <doctest/doctest.h>
#include <string>
#include <tuple>
#include <vector>

#include "raster/filters.h"
#include "raster/orient.h"
#include "raster/separable.h"
#include "support/captured_output.h"
#include "support/plain_enlarge.h"
#include "support/samples.h"
#include "support/scratch.h"
#include "train/training_pairs.h"

using namespace norv;
using namespace norv::test;

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
        CAPTURE(Nin);
        CAPTURE(Ny);
        CAPTURE(order);
        const matrix original = MakePicture(w, h);
        const std::vector<float> expected = PairsTheLongWay(original, Nin, Ny, order);
        matrix picture = original;
        TrainingSet set;
        BuildTrainingPairs(set, picture, Nin, Ny, order);
        CHECK(picture.m == w / (Ny == 16 ? 4 : 2) * (Ny == 16 ? 4 : 2));  // cropped in place
        CHECK(picture.z[picture.n - 1][1] == original.z[picture.n - 1][1]);
        const std::string bytes = FileBytes(set);
        CHECK(bytes.substr(12) == BytesOf(expected.data(), expected.size()));
        picture = original;
        WriteTrainingPairs(folder / "set", picture, Nin, Ny, order);
        CHECK(ReadBytes(folder / "set") == bytes);
      }
}

TEST_CASE("training pairs: more pictures are added behind the counted records") {
  const ScratchFolder folder;
  matrix first = MakePicture(20, 18), second = MakePicture(26, 17, 4);
  WriteTrainingPairs(folder / "set", first, 24, 4, 0);
  const std::string before = ReadBytes(folder / "set");
  // What an interrupted append left, longer than what comes now.
  WriteBytes(folder / "set", before + std::string(1000000, 'x'));
  AppendTrainingPairs(folder / "set", second, -2);
  TrainingSet set, added;
  LoadTrainingSet(set, folder / "set", Folder::asGiven);
  BuildTrainingPairs(added, second, 24, 4, -2);
  CHECK(set.N == 4 * 3 * 8 + 7 * 2 * 8);
  CHECK(FileBytes(set).substr(12) == before.substr(12) + FileBytes(added).substr(12));
}

TEST_CASE("training pairs: a file that is short of records is continued at its end, with a warning") {
  const ScratchFolder folder;
  matrix picture = MakePicture(20, 18);
  TrainingSet added;
  BuildTrainingPairs(added, picture, 8, 4, 0);
  // Nothing but the header, and half a record.
  const std::string old = FileBytes(MakeSamples(5, 8, 4));
  for (const size_t left : {size_t{12}, size_t{36}}) {
    WriteBytes(folder / "set", old.substr(0, left));
    const std::string warning = ErrorsOf([&] { AppendTrainingPairs(folder / "set", picture, 0); });
    CHECK(warning.find("fewer records than its header counts") != std::string::npos);
    const int32_t header[] = {5 + added.N, 8, 4};
    CHECK(ReadBytes(folder / "set") == BytesOf(header, 3) + old.substr(12, left - 12) + FileBytes(added).substr(12));
  }
}

TEST_CASE("training pairs: what gives none is refused with its reason and the file is kept") {
  const ScratchFolder folder;
  matrix good = MakePicture(20, 18);
  WriteTrainingPairs(folder / "set", good, 8, 4, 0);
  const std::string before = ReadBytes(folder / "set");
  const auto refused = [&](int32_t w, int32_t h, int32_t Nin, int32_t Ny, int32_t order, const char* reason) {
    matrix picture = MakePicture(w, h);
    CHECK_THROWS_WITH_AS(WriteTrainingPairs(folder / "set", picture, Nin, Ny, order), doctest::Contains(reason),
                         const char*);
    CHECK(ReadBytes(folder / "set") == before);
  };
  refused(13, 20, 8, 4, 0, "too small");
  refused(20, 27, 8, 16, 0, "too small");
  refused(0, 0, 8, 4, 0, "too small");
  refused(20, 20, 9, 4, 0, "Training pairs have 8, 24, 48, 49 or 72 inputs and 4 or 16 outputs.");
  refused(20, 20, 8, 9, 0, "outputs");
  refused(20, 20, 8, 4, -6, "filter");
  refused(20, 20, 8, 4, 65, "filter");
  CHECK_THROWS_WITH_AS(AppendTrainingPairs(folder / "missing", good, 0), "PROBLEM OPENING FILE!", const char*);
  matrix tiny = MakePicture(8, 8);
  CHECK_THROWS_AS(AppendTrainingPairs(folder / "set", tiny, 0), const char*);
  CHECK(ReadBytes(folder / "set") == before);
}
