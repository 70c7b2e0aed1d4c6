// The tool's own image files as pictures, in groups of rows both ways.
#include <algorithm>
#include <utility>

#include "image/float_image_file.h"
#include "kit/failure.h"
#include "kit/pictures/conversions.h"

namespace norv {
namespace {

// Rows of one picture into another's.
void PlaceRows(const Picture& rows, Picture& part, int32_t at) {
  for (int32_t k = 0; k < part.channels; ++k)
    std::copy_n(rows.plane[k].x, rows.plane[k].mn, part.plane[k].x + int64_t{part.Width()} * at);
}

// An image without pixels has no sizes either.
void ForgetEmptySides(PictureShape& shape) {
  if (shape.width == 0 || shape.height == 0) shape.width = shape.height = 0;
}

class FloatImageRows : public PictureReader {
 public:
  explicit FloatImageRows(const std::string& path) : file_(path) {
    if (!file_.IsOpen()) throw SaidFailure();
    if (file_.Planes() == 0) Fail("the image has the unknown format %d", file_.format);
    shape_ = {file_.width, file_.height, ModelOf(file_.format) == kWithFourth ? 4 : 3, 8};
    ForgetEmptySides(shape_);
  }
  void Read(Picture& part, int32_t at, int32_t rows) override {
    if (rows == 0) return;
    FloatImage image(shape_.width, rows, file_.format);
    file_.Read(image, 0, rows);
    PlaceRows(ToPicture(std::move(image)), part, at);
  }

 private:
  FloatImageReader file_;
};

class FloatImageSink : public PictureWriter {
 public:
  FloatImageSink(const std::string& path, const PictureShape& shape)
      : file_(path, shape.width, shape.height, FloatFormatOf(shape), 0) {}
  void Write(Picture part) override {
    if (!file_.WriteRows(ToFloatImage(std::move(part)))) Finish();
  }
  int64_t Finish() override {
    if (!file_.Commit()) throw SaidFailure();
    return 0;
  }

 private:
  FloatImageWriter file_;
};

// .mat and .bit files: a header and the rows one behind the other.
class MatrixRows : public PictureReader {
 public:
  explicit MatrixRows(const std::string& path) : file_(path) {
    int32_t count = 0;
    for (int32_t* field : {&shape_.width, &shape_.height, &count}) file_.Field(*field);
    shape_.channels = 1;
    ForgetEmptySides(shape_);
  }
  void Read(Picture& part, int32_t at, int32_t rows) override {
    for (int32_t r = at; r < at + rows; ++r) file_.Array(part.plane[0].z[r], static_cast<size_t>(shape_.width));
  }

 private:
  FileIn file_;
};

class BitImageRows : public PictureReader {
 public:
  explicit BitImageRows(const std::string& path) : file_(path) {
    file_.Field(shape_.width);
    file_.Field(shape_.height);
    shape_.channels = 3;
    ForgetEmptySides(shape_);
  }
  void Read(Picture& part, int32_t at, int32_t rows) override {
    BitImage image(shape_.width, rows);
    file_.Array(image.pixels.get(), static_cast<size_t>(image.size));
    PlaceRows(ToPicture(image), part, at);
  }

 private:
  FileIn file_;
};

// What both have in common when they are written.
class RowsFile : public PictureWriter {
 public:
  explicit RowsFile(const std::string& path) : file_(path) {}
  int64_t Finish() override {
    if (!file_.Commit()) throw SaidFailure();
    return 0;
  }

 protected:
  void StopWhenLost() {
    if (file_.Failed()) Finish();
  }
  FileOut file_;
};

class MatrixSink : public RowsFile {
 public:
  MatrixSink(const std::string& path, const PictureShape& shape) : RowsFile(path) {
    for (const int32_t field : {shape.width, shape.height, shape.width * shape.height}) file_.Field(field);
  }
  void Write(Picture part) override {
    const matrix luminance = LuminanceOf(part);
    file_.Array(luminance.x, static_cast<size_t>(luminance.mn));
    StopWhenLost();
  }
};

class BitImageSink : public RowsFile {
 public:
  BitImageSink(const std::string& path, const PictureShape& shape) : RowsFile(path) {
    file_.Field(shape.width);
    file_.Field(shape.height);
  }
  void Write(Picture part) override {
    const BitImage image = ToBitImage(ToFloatImage(std::move(part)));
    file_.Array(image.pixels.get(), static_cast<size_t>(image.size));
    StopWhenLost();
  }
};

}  // namespace

std::unique_ptr<PictureReader> OpenImage(const std::string& path) {
  switch (const FileKind kind = RecogniseWholeFile(path)) {
    case FileKind::picture:
      return OpenPicture(path);
    case FileKind::floatImage:
      return std::make_unique<FloatImageRows>(path);
    case FileKind::matrix:
      return std::make_unique<MatrixRows>(path);
    case FileKind::bitImage:
      return std::make_unique<BitImageRows>(path);
    default:
      Fail("%s is a %s, no image", path.c_str(), NameOf(kind));
  }
}

std::unique_ptr<PictureWriter> CreateImage(const std::string& path, const PictureShape& shape,
                                           const WriteChoice& choice) {
  const std::string extension = ExtensionOf(path);
  const int64_t pixels = int64_t{shape.width} * shape.height;
  const int64_t most = extension == "bit" ? (INT32_MAX - int64_t{3} * shape.height) / 3 : INT32_MAX;
  if (pixels > most) Fail("%s cannot hold %d x %d pixels", path.c_str(), shape.width, shape.height);
  if (extension == "fdib") return std::make_unique<FloatImageSink>(path, shape);
  if (extension == "mat") return std::make_unique<MatrixSink>(path, shape);
  if (extension == "bit") return std::make_unique<BitImageSink>(path, shape);
  return CreatePicture(path, shape, choice);
}

}  // namespace norv
