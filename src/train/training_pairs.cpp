#include "train/training_pairs.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "platform/console.h"
#include "platform/file_lock.h"
#include "platform/file_update.h"
#include "platform/progress.h"
#include "platform/team.h"
#include "raster/filters.h"
#include "raster/separable.h"

namespace norv {
namespace {

// The margin of the largest layout is that of all, so that every layout sees the same pixels.
constexpr int32_t kMargin = kLargestRadius;

const InputLayout* LayoutOrThrow(int32_t Nin, int32_t Ny) {
  const InputLayout* layout = FindLayout(Nin);
  static const std::string sizes = "Training pairs have " + LayoutInputs() + " inputs and 4 or 16 outputs.";
  if (!layout || !IsOutputCount(Ny)) throw sizes.c_str();
  return layout;
}

matrix Shrunk(matrix& picture, int32_t f, int32_t shrinkOrder) {
  matrix filter;
  ShrinkKernel(filter, f, shrinkOrder);
  if (filter.mn == 0) throw "The shrink order has no filter.";
  const int32_t smallest = 2 * kMargin + 1;
  if (picture.m / f < smallest || picture.n / f < smallest) throw "The picture is too small for training pairs.";
  if ((picture.m / f - 2 * kMargin) * (picture.n / f - 2 * kMargin) > std::numeric_limits<int32_t>::max() / 8)
    throw "The picture has too many training pairs.";
  CropToMultiple(picture, f);
  matrix low(picture.m / f, picture.n / f);
  ShrinkMatrix(low, picture, filter);
  return low;
}

// Calls write(floats, count) with the records of some rows after others, made by a team.
template <typename Write>
void ForRows(const PairMaker& maker, int threads, const Write& write) {
  const size_t floats = static_cast<size_t>(maker.PairsInRow() * maker.RecordFloats());
  const int32_t atOnce = std::min(threads, maker.Rows());
  const auto rows = MakeAligned<float>(floats * static_cast<size_t>(atOnce));
  Progress progress("Making training pairs", maker.Rows());
  for (int32_t first = 0; first < maker.Rows(); first += atOnce) {
    const int32_t count = std::min(atOnce, maker.Rows() - first);
    ParallelFor(threads, count,
                [&](int64_t i) { maker.MakeRow(first + static_cast<int32_t>(i), rows.get() + floats * i); });
    write(rows.get(), floats * static_cast<size_t>(count));
    progress.Advance(count);
  }
}

}  // namespace

void CropToMultiple(matrix& picture, int32_t f) {
  const int32_t w = picture.m / f * f, h = picture.n / f * f;
  if (w == picture.m && h == picture.n) return;
  for (int32_t r = 1; r < h; ++r) std::memmove(picture.x + int64_t{w} * r, picture.z[r], sizeof(float) * w);
  picture.m = w;
  picture.n = h;
  picture.mn = w * h;
  for (int32_t r = 0; r < h; ++r) picture.z[r] = picture.x + int64_t{w} * r;
}

PairMaker::PairMaker(matrix& picture, int32_t Nin, int32_t Ny, int32_t shrinkOrder, const Degradation& degrade)
    : picture_(picture), layout_(LayoutOrThrow(Nin, Ny)), f_(Ny == 16 ? 4 : 2) {
  low_ = Shrunk(picture, f_, shrinkOrder);
  if (degrade) degrade(low_);
  for (int32_t k = 0; k < kOrientations; ++k) {
    inputs_.push_back(OrientedOffsets(*layout_, k, low_.m));
    std::vector<ptrdiff_t>& block = targets_.emplace_back();
    for (const int32_t element : OrientationPermutation(f_, k))
      block.push_back(ptrdiff_t{element / f_} * picture.m + element % f_);
  }
}

void PairMaker::MakeRow(int32_t row, float* records) const {
  const int32_t r = row + kMargin;
  for (int32_t c = kMargin; c < low_.m - kMargin; ++c) {
    const float* centre = low_.z[r] + c;
    const float* block = picture_.z[f_ * r] + f_ * c;
    for (int32_t k = 0; k < kOrientations; ++k) {
      GatherInputs(*layout_, inputs_[k], centre, records);
      records += layout_->inputs;
      for (const ptrdiff_t pixel : targets_[k]) *records++ = (block[pixel] - *centre) * kInputScale;
    }
  }
}

void BuildTrainingPairs(TrainingSet& set, matrix& picture, int32_t Nin, int32_t Ny, int32_t shrinkOrder) {
  ClearTrainingSet(set);
  const PairMaker maker(picture, Nin, Ny, shrinkOrder);
  CreateTrainingSet(set, maker.Count(), Nin, Ny);
  for (int32_t r = 0; r < maker.Rows(); ++r) maker.MakeRow(r, set.Record(int64_t{r} * maker.PairsInRow()));
}

void WriteTrainingPairs(const std::string& path, matrix& picture, int32_t Nin, int32_t Ny, int32_t shrinkOrder,
                        const Degradation& degrade, int threads) {
  const PairMaker maker(picture, Nin, Ny, shrinkOrder, degrade);
  const FileLock lock(path);
  FileOut file(path);
  WriteHeader(file, TrainingHeader{maker.Count(), Nin, Ny});
  if (file.IsOpen()) ForRows(maker, threads, [&](const float* records, size_t count) { file.Array(records, count); });
  if (!file.Commit()) throw kTrainingFileProblem;
}

void AppendTrainingPairs(const std::string& path, matrix& picture, int32_t shrinkOrder, const Degradation& degrade,
                         int threads) {
  const FileLock lock(path);
  FileIn old(path);
  const TrainingHeader header = ReadTrainingHeader(old);
  RequireSizes(old, header);
  const PairMaker maker(picture, header.Nin, header.Ny, shrinkOrder, degrade);
  if (maker.Count() > std::numeric_limits<int32_t>::max() - header.N) throw "The training set would be too large.";
  const int64_t end = std::min(header.FileBytes(), old.Size());
  if (end < header.FileBytes()) Warn("%s holds fewer records than its header counts", path.c_str());
  FileUpdate file(path);
  if (file.IsOpen()) {
    file.Seek(end);
    ForRows(maker, threads, [&](const float* records, size_t count) {
      if (!file.Failed()) file.Write(records, count * sizeof(float));
    });
    // The count may only stand for records that are on the disk.
    file.Flush();
    file.CutBack(end);
    const int32_t total = header.N + maker.Count();
    file.Seek(0);
    file.Write(&total, sizeof total);
    file.Flush();
  }
  if (!file.Finish()) throw kTrainingFileProblem;
}

}  // namespace norv
