#include "kit/pictures/picture.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "kit/failure.h"
#include "platform/console.h"
#include "platform/memory.h"

namespace norv {
namespace {

// Sample values of one step on the 0..255 scale.
constexpr double StepsOf(int32_t bits) { return bits == 16 ? 257 : 1; }

template <typename T>
void Unpack(const uint8_t* row, int32_t r, Picture& picture) {
  const T* source = reinterpret_cast<const T*>(row);
  constexpr double kSteps = StepsOf(8 * sizeof(T));
  for (int32_t k = 0; k < picture.channels; ++k) {
    float* target = picture.plane[k].z[r];
    for (int32_t x = 0; x < picture.Width(); ++x)
      target[x] = static_cast<float>(source[size_t(x) * picture.channels + k] / kSteps);
  }
}

void UnpackRow(const uint8_t* row, int32_t bits, int32_t r, Picture& picture) {
  (bits == 16 ? Unpack<uint16_t> : Unpack<uint8_t>)(row, r, picture);
}

// The first `channels` planes.
template <typename T>
int64_t Pack(const Picture& picture, int32_t r, int32_t channels, uint8_t* row) {
  T* target = reinterpret_cast<T*>(row);
  constexpr double kSteps = StepsOf(8 * sizeof(T)), kMost = 255 * kSteps;
  int64_t moved = 0;
  for (int32_t k = 0; k < channels; ++k) {
    const float* source = picture.plane[k].z[r];
    for (int32_t x = 0; x < picture.Width(); ++x) {
      const double value = std::floor(source[x] * kSteps + 0.5);
      const bool inside = value >= 0 && value <= kMost;  // false for a NaN
      moved += !inside;
      target[size_t(x) * channels + k] = static_cast<T>(inside ? value : value > 0 ? kMost : 0);
    }
  }
  return moved;
}

// Into samples of this shape; returns how many had to be moved inside.
int64_t PackRow(const Picture& picture, int32_t r, const SampleShape& shape, uint8_t* row) {
  return (shape.bits == 16 ? Pack<uint16_t> : Pack<uint8_t>)(picture, r, shape.channels, row);
}

// Does something with a picture file; a Failure then names it.
template <typename Action>
auto Naming(const std::string& path, const Action& action) {
  try {
    return action();
  } catch (const Failure& failure) {
    Fail("%s: %s", path.c_str(), failure.what());
  }
}

class FilePictureReader : public PictureReader {
 public:
  explicit FilePictureReader(const std::string& path) : path_(path), source_(path) {
    Naming(path_, [&] { Open(); });
    const SampleShape& shape = rows_->Shape();
    shape_ = {shape.width, shape.height, shape.channels, shape.bits};
    row_.resize(shape.RowBytes());
  }
  void Read(Picture& part, int32_t at, int32_t rows) override {
    Naming(path_, [&] {
      for (int32_t r = at; r < at + rows; ++r) {
        rows_->Read(row_.data());
        UnpackRow(row_.data(), shape_.bits, r, part);
      }
    });
  }

 private:
  void Open() {
    uint8_t start[64];
    const Codec* codec = CodecOfContents({start, source_.Read(0, start, sizeof start)});
    if (!codec) Fail("no picture of a known format (%s)", KnownFormats().c_str());
    rows_ = codec->open(source_);
    if (rows_->Shape().turn != 0) rows_ = norv::ReadHeld(Upright(norv::ReadAll(*rows_)));
  }

  std::string path_;
  FileSource source_;
  std::unique_ptr<SampleReader> rows_;
  Bytes row_;
};

class FilePictureWriter : public PictureWriter {
 public:
  FilePictureWriter(const std::string& path, const Codec& codec, const SampleShape& shape, const EncodingChoice& choice)
      : path_(path), shape_(shape), sink_(path), row_(shape.RowBytes()) {
    Guarded([&] { rows_ = codec.create(sink_, shape, choice); });
  }
  void Write(Picture part) override {
    Guarded([&] {
      for (int32_t r = 0; r < part.Height(); ++r) {
        moved_ += PackRow(part, r, shape_, row_.data());
        rows_->Write(row_.data());
      }
    });
    StopWhenLost();
  }
  int64_t Finish() override {
    Guarded([&] { rows_->Finish(); });
    if (!sink_.Commit()) throw SaidFailure();
    return moved_;
  }

 private:
  // What the format's library says of a destination that fails is less than what the destination knows.
  template <typename Action>
  void Guarded(const Action& action) {
    try {
      Naming(path_, action);
    } catch (const Failure&) {
      StopWhenLost();
      throw;
    }
  }
  void StopWhenLost() {
    if (sink_.Failed() && !sink_.Commit()) throw SaidFailure();
  }

  std::string path_;
  SampleShape shape_;
  FileSink sink_;
  std::unique_ptr<SampleWriter> rows_;
  Bytes row_;
  int64_t moved_ = 0;
};

// Rows a group when a picture is passed on.
int32_t RowsOfGroup(const PictureShape& shape) {
  constexpr int64_t kGroupBytes = int64_t{16} << 20;
  return static_cast<int32_t>(
      std::clamp<int64_t>(kGroupBytes / (int64_t{4} * shape.width * shape.channels + 1), 1, std::max(shape.height, 1)));
}

}  // namespace

Picture::Picture(int32_t width, int32_t height, int32_t newChannels) : channels(newChannels) {
  for (int32_t k = 0; k < channels; ++k) plane[k].dim(width, height);
}

PictureShape Picture::Shape() const { return {Width(), Height(), channels, bits}; }

Picture ReadAll(PictureReader& reader) {
  const PictureShape& shape = reader.Shape();
  if (sizeof(float) * shape.channels * shape.width * static_cast<size_t>(shape.height) > AvailableMemory())
    Fail("the picture of %d x %d pixels does not fit into memory", shape.width, shape.height);
  Picture picture(shape.width, shape.height, shape.channels);
  picture.bits = shape.bits;
  reader.Read(picture, 0, shape.height);
  return picture;
}

int64_t CopyRows(PictureReader& from, PictureWriter& to) {
  const PictureShape& shape = from.Shape();
  const int32_t group = RowsOfGroup(shape);
  for (int32_t first = 0, rows; first < shape.height; first += rows) {
    rows = std::min(group, shape.height - first);
    Picture part(shape.width, rows, shape.channels);
    part.bits = shape.bits;
    from.Read(part, 0, rows);
    to.Write(std::move(part));
  }
  return to.Finish();
}

std::unique_ptr<PictureReader> ReadHeld(Picture picture) {
  class Held : public PictureReader {
   public:
    explicit Held(Picture picture) : picture_(std::move(picture)) { shape_ = picture_.Shape(); }
    void Read(Picture& part, int32_t at, int32_t rows) override {
      const int64_t width = shape_.width;
      for (int32_t k = 0; k < shape_.channels; ++k)
        std::copy_n(picture_.plane[k].x + width * next_, width * rows, part.plane[k].x + width * at);
      next_ += rows;
    }

   private:
    Picture picture_;
    int32_t next_ = 0;
  };
  return std::make_unique<Held>(std::move(picture));
}

Picture ToPicture(const Samples& samples) {
  if (samples.turn != 0) return ToPicture(Upright(samples));
  Picture picture(samples.width, samples.height, samples.channels);
  picture.bits = samples.bits;
  for (int32_t r = 0; r < samples.height; ++r) UnpackRow(samples.Row(r), samples.bits, r, picture);
  return picture;
}

Samples ToSamples(const Picture& picture, int32_t bits, int64_t& moved) {
  Samples samples;
  samples.Allocate(picture.Width(), picture.Height(), picture.channels, bits);
  for (int32_t r = 0; r < samples.height; ++r) moved += PackRow(picture, r, samples, samples.Row(r));
  return samples;
}

std::unique_ptr<PictureReader> OpenPicture(const std::string& path) {
  return std::make_unique<FilePictureReader>(path);
}

Picture ReadPicture(const std::string& path) { return ReadAll(*OpenPicture(path)); }

std::unique_ptr<PictureWriter> CreatePicture(const std::string& path, const PictureShape& shape,
                                             const WriteChoice& choice) {
  const Codec* codec = CodecOfName(path);
  if (!codec) Fail("%s: no picture format for this name (%s)", path.c_str(), KnownFormats().c_str());
  if (choice.bits == 16 && !codec->sixteenBits) Fail("%s: %s holds 8 bits a sample only", path.c_str(), codec->name);
  const bool alpha = shape.channels % 2 == 0, drop = alpha && !codec->alpha;
  if (drop) Warn("%s has no place for the alpha plane, which is left out", codec->name);
  SampleShape samples;
  Naming(path, [&] {
    samples.Require(shape.width, shape.height, shape.channels - drop,
                    choice.bits          ? choice.bits
                    : codec->sixteenBits ? shape.bits
                                         : 8);
  });
  return std::make_unique<FilePictureWriter>(path, *codec, samples, choice.encoding);
}

int64_t WritePicture(const std::string& path, const Picture& picture, const WriteChoice& choice) {
  const std::unique_ptr<PictureWriter> writer = CreatePicture(path, picture.Shape(), choice);
  writer->Write(picture);
  return writer->Finish();
}

}  // namespace norv
