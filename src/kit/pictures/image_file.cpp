#include "kit/pictures/image_file.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <utility>

#include "image/bit_image.h"
#include "image/float_image_file.h"
#include "kit/failure.h"
#include "kit/formats/streams.h"
#include "kit/metadata/carry.h"
#include "kit/pictures/conversions.h"
#include "kit/pictures/destination.h"
#include "kit/pictures/file_kind.h"
#include "kit/pictures/luminance.h"
#include "kit/pictures/picture.h"
#include "linear/matrix_file.h"

namespace norv {
namespace {

// An image without pixels has no sizes either.
PictureShape ShapeOf(int32_t width, int32_t height, int32_t channels) {
  if (width == 0 || height == 0) return {0, 0, channels};
  return {width, height, channels};
}

PictureSource OpenFloatImage(const std::string& path) {
  const auto file = std::make_shared<FloatImageReader>(path);
  if (!file->IsOpen()) throw SaidFailure();
  const ImageSource image = file->Rows();
  const int32_t format = image.shape.format;
  if (file->Planes() == 0) Fail("the image has the unknown format %d", format);
  const PictureShape shape = ShapeOf(image.shape.width, image.shape.height, ModelOf(format) == kWithFourth ? 4 : 3);
  return {shape,
          [file, image](Picture& rows, int32_t at, int32_t count) {
            if (count == 0) return;
            FloatImage part(image.shape.width, count, image.shape.format);
            image.read(part, 0, count);
            CopyPart(ToPicture(std::move(part)), 0, count, rows, at);
          },
          [file](int32_t first, int32_t) { file->SkipTo(first); }};
}

// .mat and .bit files: a header and the rows one behind the other.
PictureSource OpenMatrix(const std::string& path) {
  const auto file = std::make_shared<FileIn>(path);
  const auto header = ReadHeader<MatrixHeader>(*file);
  return {ShapeOf(header.rows, header.columns, 1),
          [file](Picture& rows, int32_t at, int32_t n) {
            for (int32_t r = at; r < at + n; ++r) file->Array(rows.plane[0].z[r], static_cast<size_t>(rows.Width()));
          },
          [file, header](int32_t first, int32_t) {
            file->Seek(HeaderBytes<MatrixHeader>() + int64_t{4} * header.rows * first);
          }};
}

PictureSource OpenBitImage(const std::string& path) {
  const auto file = std::make_shared<FileIn>(path);
  const auto header = ReadHeader<BitImageHeader>(*file);
  return {ShapeOf(header.width, header.height, 3), [file](Picture& rows, int32_t at, int32_t count) {
            BitImage image(rows.Width(), count);
            file->Array(image.pixels.get(), static_cast<size_t>(image.size));
            CopyPart(ToPicture(image), 0, count, rows, at);
          }};
}

template <typename File>
int64_t Commit(File& file) {
  if (!file.Commit()) throw SaidFailure();
  return 0;
}

PictureSink CreateFloatImage(const std::string& path, const PictureShape& shape) {
  const auto file = std::make_shared<FloatImageWriter>(path, shape.width, shape.height, FloatFormatOf(shape), 0);
  const auto write = [file](Picture rows) {
    if (!file->WriteRows(ToFloatImage(std::move(rows)))) Commit(*file);
  };
  return {write, [file] { return Commit(*file); }};
}

// What a .mat or .bit file has behind its header: `put` writes a group of rows.
template <typename Put>
PictureSink AfterHeader(const std::shared_ptr<FileOut>& file, const Put& put) {
  const auto write = [file, put](Picture rows) {
    put(*file, std::move(rows));
    if (file->Failed()) Commit(*file);
  };
  return {write, [file] { return Commit(*file); }};
}

PictureSink CreateMatrix(const std::string& path, const PictureShape& shape) {
  const auto file = std::make_shared<FileOut>(path);
  WriteHeader(*file, MatrixHeader{shape.width, shape.height, shape.width * shape.height});
  return AfterHeader(file, [](FileOut& out, const Picture& rows) {
    const matrix luminance = LuminanceOf(rows);
    out.Array(luminance.x, static_cast<size_t>(luminance.mn));
  });
}

PictureSink CreateBitImage(const std::string& path, const PictureShape& shape) {
  const auto file = std::make_shared<FileOut>(path);
  WriteHeader(*file, BitImageHeader{shape.width, shape.height});
  return AfterHeader(file, [](FileOut& out, Picture rows) {
    const BitImage image = ToBitImage(ToFloatImage(std::move(rows)));
    out.Array(image.pixels.get(), static_cast<size_t>(image.size));
  });
}

struct ImageFormat {
  FileKind kind;
  const char* name;
  int32_t mostBits;  // of a sample: 8, or 32 for floats
  bool alpha;        // whether it can hold that
  PictureSource (*open)(const std::string& path);
  PictureSink (*create)(const std::string& path, const PictureShape& shape);
};

constexpr ImageFormat kFormats[] = {
    {FileKind::floatImage, ".fdib", 32, true, OpenFloatImage, CreateFloatImage},
    {FileKind::matrix, ".mat", 32, false, OpenMatrix, CreateMatrix},
    {FileKind::bitImage, ".bit", 8, false, OpenBitImage, CreateBitImage},
};

// Null for what is no image of the tool's own.
const ImageFormat* FormatOf(std::optional<FileKind> kind) {
  for (const ImageFormat& format : kFormats)
    if (kind == format.kind) return &format;
  return nullptr;
}

// The 32-bit sizes of a .bit file count bytes, three a pixel and at most three more a row.
int64_t MostPixels(const ImageFormat* format, int32_t height) {
  const bool bytes = format && format->kind == FileKind::bitImage;
  return bytes ? (INT32_MAX - int64_t{3} * height) / 3 : INT32_MAX;
}

}  // namespace

PictureSource OpenImage(const std::string& path, const ReadChoice& choice) {
  const FileKind kind = RecogniseWholeFile(path);
  if (kind == FileKind::picture) return OpenPicture(path, choice);
  const ImageFormat* format = FormatOf(kind);
  if (!format) Fail("%s is a %s, no image", path.c_str(), NameOf(kind));
  if (choice.Page() > 1) Fail("%s: there is only one picture in the file", path.c_str());
  return format->open(path);
}

InFile ImageInFile(const std::string& path, const PictureShape& shape, const WriteChoice& choice) {
  const ImageFormat* format = FormatOf(KindOfExtension(FormatWord(path, choice)));
  if (format && IsStandard(path)) Fail("%s goes into files only, not to standard output", format->name);
  if (int64_t{shape.width} * shape.height > MostPixels(format, shape.height))
    Fail("%s cannot hold %d x %d pixels", path.c_str(), shape.width, shape.height);
  if (!format) return PictureInFile(path, shape, choice);
  if (choice.dither) throw WrongUsage("--dither is for pictures of 8 bits a sample, not for " + path);
  if (choice.encoding.quality != 0)
    throw WrongUsage("--quality does nothing in a file of ours, which keeps every sample: leave it out");
  if (!choice.encoding.compression.empty())
    throw WrongUsage("--compression is for PNG and TIFF and does nothing in a file of ours: leave it out");
  InFile in{format->name, shape};
  if (shape.HasAlpha() && !format->alpha) --in.shape.channels;
  in.shape.bits = format->mostBits;
  return in;
}

PictureSink ReplaceImage(const std::string& path, const PictureShape& shape, const WriteChoice& choice) {
  ImageInFile(path, shape, choice);
  const ImageFormat* format = FormatOf(KindOfExtension(FormatWord(path, choice)));
  if (!format) return CreatePicture(path, shape, choice);
  CarriedInto(shape, 0, format->name, choice.encoding.strip);  // which says what is lost
  return format->create(path, shape);
}

PlaceOfRows PlacesOfRows(const std::string& path, const PictureShape& shape, const WriteChoice& choice) {
  const std::optional<FileKind> kind = KindOfExtension(FormatWord(path, choice));
  if (!kind) return PlacesInPicture(path, shape, choice);
  if (kind != FileKind::floatImage) return nullptr;
  const FloatImageHeader header{shape.width, shape.height, FloatFormatOf(shape)};
  return [header](Picture rows, int64_t first, const PutBytes& put) {
    const FloatImage image = ToFloatImage(std::move(rows));
    for (int32_t k = 0; k < header.Planes(); ++k)
      put(header.PlaceOf(k, static_cast<int32_t>(first)), image.plane[k].x,
          sizeof(float) * static_cast<size_t>(image.plane[k].mn));
  };
}

PictureSink CreateImage(const std::string& path, const PictureShape& shape, const WriteChoice& choice) {
  return Destination(path, shape, choice).Create(shape);
}

bool HasImageName(const std::string& path) { return FormatOf(KindOfName(path)); }

Picture LoadImage(const std::string& path, const ReadChoice& choice) { return AllRows(OpenImage(path, choice)); }

int64_t SaveImage(const std::string& path, Picture picture, const WriteChoice& choice) {
  const Destination out(path, picture.Shape(), choice);
  return out.Save(std::move(picture));
}

FloatImage LoadFloatImage(const std::string& path) {
  FloatImage image;
  if (image.Load(path, Folder::asGiven)) throw SaidFailure();
  return image;
}

void SaveFloatImage(const std::string& path, const FloatImage& image) {
  if (image.Save(path, Folder::asGiven)) throw SaidFailure();
}

}  // namespace norv
