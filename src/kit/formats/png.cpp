// PNG through libpng. Its errors come back by longjmp, so whatever owns memory lives in a session outside the jump.
#include <algorithm>
#include <csetjmp>
#include <cstdio>
#include <cstring>
#include <png.h>

#include "kit/failure.h"
#include "kit/formats/codec.h"

namespace norv {
namespace {

struct PngSession {
  png_structp png = nullptr;
  png_infop info = nullptr;
  bool reading;
  ByteSource source;
  ByteSink sink;
  int64_t position = 0;
  char failure[200] = "out of memory";

  explicit PngSession(const ByteSource& from) : reading(true), source(from) {
    png = png_create_read_struct(PNG_LIBPNG_VER_STRING, this, OnError, OnWarning);
    if (png) info = png_create_info_struct(png);
  }
  explicit PngSession(const ByteSink& to) : reading(false), sink(to) {
    png = png_create_write_struct(PNG_LIBPNG_VER_STRING, this, OnError, OnWarning);
    if (png) info = png_create_info_struct(png);
  }
  ~PngSession() {
    if (reading)
      png_destroy_read_struct(&png, &info, nullptr);
    else
      png_destroy_write_struct(&png, &info);
  }
  PngSession(const PngSession&) = delete;
  PngSession& operator=(const PngSession&) = delete;

  // Runs one step of library calls; a Failure with the library's reason when it jumps out.
  template <typename Step>
  void Run(const Step& step) {
    if (!png || !info) Fail("PNG: out of memory");
    if (setjmp(png_jmpbuf(png))) Fail("PNG: %s", failure);
    step();
  }

  static void OnError(png_structp png, png_const_charp message) {
    PngSession& self = *static_cast<PngSession*>(png_get_error_ptr(png));
    std::snprintf(self.failure, sizeof self.failure, "%s", message);
    png_longjmp(png, 1);
  }
  static void OnWarning(png_structp, png_const_charp) {}
  static void OnRead(png_structp png, png_bytep target, size_t size) {
    PngSession& self = *static_cast<PngSession*>(png_get_io_ptr(png));
    if (self.source.read(self.position, target, size) != size) png_error(png, "the file ends early");
    self.position += static_cast<int64_t>(size);
  }
  static void OnWrite(png_structp png, png_bytep bytes, size_t size) {
    PngSession& self = *static_cast<PngSession*>(png_get_io_ptr(png));
    if (!self.sink(self.position, bytes, size)) png_error(png, "cannot be written");
    self.position += static_cast<int64_t>(size);
  }
  static void OnFlush(png_structp) {}
};

bool IsPng(std::span<const uint8_t> start) { return start.size() >= 8 && png_sig_cmp(start.data(), 0, 8) == 0; }

class PngReader {
 public:
  explicit PngReader(const ByteSource& source) : session_(source) {
    png_structp png = session_.png;
    png_infop info = session_.info;
    session_.Run([&] {
      png_set_read_fn(png, &session_, PngSession::OnRead);
      png_read_info(png, info);
      png_set_expand(png);  // palettes to RGB, transparency to alpha, fewer than 8 bits to 8
      png_set_swap(png);
      png_set_interlace_handling(png);
      png_read_update_info(png, info);
    });
    const uint32_t width = png_get_image_width(png, info), height = png_get_image_height(png, info);
    RequirePossible(width, height);
    shape = {static_cast<int32_t>(width), static_cast<int32_t>(height), png_get_channels(png, info),
             png_get_bit_depth(png, info)};
    if (png_get_rowbytes(png, info) != shape.RowBytes()) Fail("PNG: rows of an unknown layout");
  }
  bool IsInterlaced() const { return png_get_interlace_type(session_.png, session_.info) != PNG_INTERLACE_NONE; }

  void ReadRow(uint8_t* row) {
    session_.Run([&] {
      png_read_row(session_.png, row, nullptr);
      if (++next_ == shape.height) png_read_end(session_.png, nullptr);
    });
  }

  // Every row comes in several passes over the whole picture.
  Samples ReadInterlaced() {
    Samples samples(shape);
    std::vector<png_bytep> rows;
    rows.reserve(shape.height);
    for (int32_t r = 0; r < shape.height; ++r) rows.push_back(samples.Row(r));
    session_.Run([&] {
      png_read_image(session_.png, rows.data());
      png_read_end(session_.png, nullptr);
    });
    return samples;
  }

  PictureShape shape;

 private:
  PngSession session_;
  int32_t next_ = 0;
};

class PngWriter {
 public:
  PngWriter(const ByteSink& sink, const PictureShape& shape) : session_(sink) {
    constexpr int kColourTypes[] = {0, PNG_COLOR_TYPE_GRAY, PNG_COLOR_TYPE_GRAY_ALPHA, PNG_COLOR_TYPE_RGB,
                                    PNG_COLOR_TYPE_RGB_ALPHA};
    png_structp png = session_.png;
    session_.Run([&] {
      png_set_user_limits(png, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
      png_set_compression_level(png, 4);  // a third of the time of the usual 6 for files 5 % larger
      png_set_write_fn(png, &session_, PngSession::OnWrite, PngSession::OnFlush);
      png_set_IHDR(png, session_.info, shape.width, shape.height, shape.bits, kColourTypes[shape.channels],
                   PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
      png_write_info(png, session_.info);
      png_set_swap(png);
    });
  }
  void WriteRow(const uint8_t* row) {
    session_.Run([&] { png_write_row(session_.png, row); });
  }
  void Finish() {
    session_.Run([&] { png_write_end(session_.png, session_.info); });
  }

 private:
  PngSession session_;
};

SampleSource OpenPng(const ByteSource& source, const ReadChoice&) {
  const auto reader = std::make_shared<PngReader>(source);
  return reader->IsInterlaced() ? HeldSamples(reader->ReadInterlaced()) : RowByRow(reader);
}

SampleSink CreatePng(const ByteSink& sink, const PictureShape& shape, const EncodingChoice&) {
  return ToRowByRow(std::make_shared<PngWriter>(sink, shape));
}

}  // namespace

const Codec kPng = {"PNG", {"png"}, 16, true, INT32_MAX, IsPng, OpenPng, CreatePng};

}  // namespace norv
