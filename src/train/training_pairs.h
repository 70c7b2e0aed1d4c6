// Training pairs from one picture: the network's inputs at every inner pixel of the shrunk picture, and the block of
// the full picture that the pixel stands for, each in all eight orientations.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "linear/matrix2.h"
#include "net/layouts.h"
#include "raster/orient.h"
#include "train/training_set.h"

namespace norv {

// Reduces width and height to the largest multiples of f not above them; the top left part stays. In place, without a
// second picture in memory.
void CropToMultiple(matrix& picture, int32_t f);

// What happens to a picture between its shrinking and its enlargement, in place: compression, noise.
using Degradation = std::function<void(matrix& small)>;

// Makes the pairs of a picture row by row. Pair order: shrunk rows from 3 on, their pixels from 3 on (three pixels are
// left out on every side), then orientations 0 to 7. A record is Nin inputs as the layout reads them, then Ny targets
// (picture - shrunk pixel) / 255 of the f x f block, f = 4 for 16 targets, else 2.
class PairMaker {
 public:
  // Crops the picture (0..255 scale), which must outlive this object. Throws the text that says why there are no pairs:
  // sizes that no layout has or other targets than 4 and 16; a shrink order without a filter; a picture below 7 f
  // pixels on a side; more pairs than 32 bits count.
  PairMaker(matrix& picture, int32_t Nin, int32_t Ny, int32_t shrinkOrder, const Degradation& degrade = {});

  int32_t Count() const { return Rows() * PairsInRow(); }
  int32_t Rows() const { return low_.n - 2 * kLargestRadius; }
  int32_t PairsInRow() const { return (low_.m - 2 * kLargestRadius) * kOrientations; }
  int64_t RecordFloats() const { return int64_t{layout_->inputs} + f_ * f_; }
  // The records of row 0 .. Rows() - 1: PairsInRow() * RecordFloats() floats.
  void MakeRow(int32_t row, float* records) const;

 private:
  const matrix& picture_;
  matrix low_;
  const InputLayout* layout_;
  int32_t f_;
  std::vector<TapOffsets> inputs_;               // one an orientation
  std::vector<std::vector<ptrdiff_t>> targets_;  // of the block's pixels, one list an orientation
};

// Empties the set and fills it with the picture's pairs. Throws as PairMaker and CreateTrainingSet do.
void BuildTrainingPairs(TrainingSet& set, matrix& picture, int32_t Nin, int32_t Ny, int32_t shrinkOrder);

// A new training-set file of the picture's pairs, written as they are made, the same by any number of threads. Throws
// as PairMaker does, and kTrainingFileProblem; the old file is kept then.
void WriteTrainingPairs(const std::string& path, matrix& picture, int32_t Nin, int32_t Ny, int32_t shrinkOrder,
                        const Degradation& degrade = {}, int threads = 1);

// The picture's pairs behind the counted records of the file, whose sizes they take; at its end, with a warning, when
// it holds fewer than it counts. The count is written when they are on the disk. Throws as WriteTrainingPairs; the file
// counts what it counted before then.
void AppendTrainingPairs(const std::string& path, matrix& picture, int32_t shrinkOrder, const Degradation& degrade = {},
                         int threads = 1);

}  // namespace norv
