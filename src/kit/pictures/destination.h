// Where a result goes, looked at before any work is done for it, so that nobody waits for what cannot be written and
// nothing is lost that was not given up.
#pragma once

#include <memory>
#include <string>

#include "kit/formats/encoding.h"
#include "kit/pictures/picture_rows.h"

namespace norv {

// Throws a Failure, or a SaidFailure, unless a file of that name can be written now: one that is there already must be
// given up by `overwrite`, one without the right to write it (by its permission bits, for root too) stays, and so does
// a folder. Behind a symbolic link the file that it points to counts. `input`: what is read meanwhile, for the reason.
void RequireFree(const std::string& path, bool overwrite, const std::string& input = "");

// What a file does to a picture's samples: to the nearest step, inside 0..255.
struct Rounding {
  int32_t bits = 8;  // 8 or 16; 32: floats, nothing
  bool dither = false;
};

// Values of a picture that passes, and how many of its colours are no finite numbers.
struct Finiteness {
  int64_t colours = 0, colourless = 0, values = 0, infinite = 0;

  void Count(const Picture& rows);
  void Add(const Finiteness& other);
  // Throws a Failure for colours without a finite value, warns of some that are none.
  void Judge(const std::string& path) const;
};

// A picture's. Commands that work for long make theirs first and save at the end; CreateImage() and SaveImage() make
// one on the way.
class Destination {
 public:
  // The shape that the picture will have. Throws as RequireFree() does, and a Failure where the name's format cannot
  // hold it; warns, once, of what the format loses: alpha, bits.
  Destination(const std::string& path, const PictureShape& shape, const WriteChoice& choice,
              const std::string& input = "");

  // What the file does to the samples of such a picture.
  Rounding RoundingOf(const PictureShape& shape) const;

  // A picture without a single finite value is a Failure instead of a file, one with some is warned of.
  // seen: of what has passed; what is added to it counts.
  PictureSink Create(const PictureShape& shape,
                     const std::shared_ptr<Finiteness>& seen = std::make_shared<Finiteness>()) const;
  // Returns what the sink's finish() returns.
  int64_t Save(Picture picture) const;

 private:
  std::string path_;
  WriteChoice choice_;
};

}  // namespace norv
