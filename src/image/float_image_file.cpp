#include "image/float_image_file.h"

#include <algorithm>

#include "platform/console.h"

namespace norv {
namespace {

constexpr int64_t kHeaderBytes = 16;

int32_t PlanesOf(int32_t format) {
  const ColourModel* model = FindModel(format);
  return model ? model->planes : 0;
}

// Where row `row` of plane k stands in the file; k = planes: the mask.
int64_t PlaceOf(int32_t width, int32_t height, int32_t k, int32_t row) {
  return kHeaderBytes + 4 * (int64_t{width} * height * k + int64_t{width} * row);
}

}  // namespace

FloatImageReader::FloatImageReader(const std::string& path) : file_(path) {
  if (!IsOpen()) {
    Warn("cannot read %s: %s", file_.Path().c_str(), file_.Reason().c_str());
    return;
  }
  int32_t words = 0;
  for (int32_t* field : {&width, &height, &format, &words}) file_.Field(*field);
  planes_ = PlanesOf(format);
  masked_ = words != 0;
  const bool sensible = width >= 0 && height >= 0 && int64_t{width} * height <= INT32_MAX;
  if (!sensible)
    Complain("%s asks for an image of %d x %d pixels, which cannot be", file_.Path().c_str(), width, height);
  // A device or a pipe has no size to compare with.
  if (sensible && file_.Size() > 0 && file_.Size() < PlaceOf(width, height, planes_, 0) + 4 * MaskWords()) {
    file_.WarnEndsEarly();
    warned_ = true;
  }
  if (sensible && planes_ == 0) Warn("%s has the unknown format %d", file_.Path().c_str(), format);
}

int64_t FloatImageReader::MaskWords() const { return masked_ ? (int64_t{width} * height + 31) / 32 : 0; }

void FloatImageReader::Read(FloatImage& image, int32_t at, int32_t rows) {
  for (int32_t k = 0; k < planes_ && width > 0 && rows > 0; ++k) {
    file_.Seek(PlaceOf(width, height, k, row_));
    file_.Array(image.plane[k].z[at], static_cast<size_t>(width) * static_cast<size_t>(rows));
  }
  row_ += rows;
}

void FloatImageReader::ReadMask(uint32_t* words, int64_t n) {
  file_.Seek(PlaceOf(width, height, planes_, 0) + 4 * maskRead_);
  file_.Array(words, static_cast<size_t>(n));
  maskRead_ += n;
}

void FloatImageReader::WarnIfShort() {
  if (!warned_ && !file_.Complete()) file_.WarnEndsEarly();
  warned_ = true;
}

FloatImageWriter::FloatImageWriter(const std::string& path, int32_t width, int32_t height, int32_t format,
                                   int64_t maskWords)
    : file_(path), width_(width), height_(height), planes_(PlanesOf(format)) {
  for (const int32_t field : {width, height, format, static_cast<int32_t>(maskWords)}) file_.Field(field);
}

bool FloatImageWriter::WriteRows(const FloatImage& image) {
  const int64_t count = int64_t{width_} * image.height;
  for (int32_t k = 0; k < planes_ && !file_.Failed(); ++k) {
    const int64_t held = std::min<int64_t>(count, image.plane[k].mn);
    file_.Seek(PlaceOf(width_, height_, k, row_));
    file_.Array(image.plane[k].x, static_cast<size_t>(held));
    for (int64_t i = held; i < count; ++i) file_.Field(0.0f);
  }
  row_ += image.height;
  return !file_.Failed();
}

void FloatImageWriter::WriteMask(const uint32_t* words, int64_t n) {
  if (file_.Failed()) return;
  file_.Seek(PlaceOf(width_, height_, planes_, 0) + 4 * maskWritten_);
  file_.Array(words, static_cast<size_t>(n));
  maskWritten_ += n;
}

}  // namespace norv
