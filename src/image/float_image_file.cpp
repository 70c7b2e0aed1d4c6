#include "image/float_image_file.h"

#include <algorithm>

#include "platform/console.h"

namespace norv {

int32_t FloatImageHeader::Planes() const {
  const ColourModel* model = FindModel(format);
  return model ? model->planes : 0;
}

bool FloatImageHeader::SizesPossible() const { return IsCountable(width, height); }

int64_t FloatImageHeader::MaskWords() const { return mask != 0 ? (int64_t{width} * height + 31) / 32 : 0; }

int64_t FloatImageHeader::PlaceOf(int32_t k, int32_t row) const {
  return HeaderBytes<FloatImageHeader>() + 4 * (int64_t{width} * height * k + int64_t{width} * row);
}

int64_t FloatImageHeader::FileBytes() const { return PlaceOf(Planes(), 0) + 4 * MaskWords(); }

FloatImageReader::FloatImageReader(const std::string& path) : file_(path) {
  if (!IsOpen()) {
    Warn("cannot read %s: %s", file_.Path().c_str(), file_.Reason().c_str());
    return;
  }
  header_ = ReadHeader<FloatImageHeader>(file_);
  width = header_.width;
  height = header_.height;
  format = header_.format;
  planes_ = header_.Planes();
  if (!header_.SizesPossible()) {
    Complain("%s asks for an image of %d x %d pixels, which cannot be", file_.Path().c_str(), width, height);
    return;
  }
  // A device or a pipe has no size to compare with.
  if (file_.Size() > 0 && file_.Size() < header_.FileBytes()) {
    file_.WarnEndsEarly();
    warned_ = true;
  }
  if (planes_ == 0) Warn("%s has the unknown format %d", file_.Path().c_str(), format);
}

void FloatImageReader::Read(FloatImage& image, int32_t at, int32_t rows) {
  for (int32_t k = 0; k < planes_ && width > 0 && rows > 0; ++k) {
    file_.Seek(header_.PlaceOf(k, row_));
    file_.Array(image.plane[k].z[at], static_cast<size_t>(width) * static_cast<size_t>(rows));
  }
  row_ += rows;
}

ImageSource FloatImageReader::Rows() {
  return {{width, height, format}, [this](FloatImage& image, int32_t at, int32_t rows) { Read(image, at, rows); }};
}

void FloatImageReader::ReadMask(uint32_t* words, int64_t n) {
  file_.Seek(header_.PlaceOf(planes_, 0) + 4 * maskRead_);
  file_.Array(words, static_cast<size_t>(n));
  maskRead_ += n;
}

void FloatImageReader::WarnIfShort() {
  if (!warned_ && !file_.Complete()) file_.WarnEndsEarly();
  warned_ = true;
}

FloatImageWriter::FloatImageWriter(const std::string& path, int32_t width, int32_t height, int32_t format,
                                   int64_t maskWords)
    : file_(path), header_{width, height, format, static_cast<int32_t>(maskWords)}, planes_(header_.Planes()) {
  WriteHeader(file_, header_);
}

bool FloatImageWriter::WriteRows(const FloatImage& image) {
  const int64_t count = int64_t{header_.width} * image.height;
  for (int32_t k = 0; k < planes_ && !file_.Failed(); ++k) {
    const int64_t held = std::min<int64_t>(count, image.plane[k].mn);
    file_.Seek(header_.PlaceOf(k, row_));
    file_.Array(image.plane[k].x, static_cast<size_t>(held));
    for (int64_t i = held; i < count; ++i) file_.Field(0.0f);
  }
  row_ += image.height;
  return !file_.Failed();
}

void FloatImageWriter::WriteMask(const uint32_t* words, int64_t n) {
  if (file_.Failed()) return;
  file_.Seek(header_.PlaceOf(planes_, 0) + 4 * maskWritten_);
  file_.Array(words, static_cast<size_t>(n));
  maskWritten_ += n;
}

}  // namespace norv
