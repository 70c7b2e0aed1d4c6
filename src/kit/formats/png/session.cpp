#include "kit/formats/png/session.h"

#include <cstdio>

namespace norv {
namespace {

// EXIF and texts are read by ourselves; the library would ask for the memory that an EXIF chunk's length claims before
// it looks whether the file has as much.
void PassOverMetadata(png_structp png) {
  static constexpr png_byte kChunks[] = "eXIf\0tEXt\0zTXt\0iTXt";
  png_set_keep_unknown_chunks(png, PNG_HANDLE_CHUNK_NEVER, kChunks, sizeof kChunks / 5);
}

}  // namespace

PngSession::PngSession(const ByteSource& from) : reading_(true), source_(from) {
  png = png_create_read_struct(PNG_LIBPNG_VER_STRING, this, OnError, OnWarning);
  if (!png) return;
  PassOverMetadata(png);
  png_set_read_fn(png, this, OnRead);
  info = png_create_info_struct(png);
}

PngSession::PngSession(const ByteSink& to) : reading_(false), sink_(to) {
  png = png_create_write_struct(PNG_LIBPNG_VER_STRING, this, OnError, OnWarning);
  if (!png) return;
  png_set_write_fn(png, this, OnWrite, OnFlush);
  info = png_create_info_struct(png);
}

PngSession::~PngSession() {
  if (reading_)
    png_destroy_read_struct(&png, &info, nullptr);
  else
    png_destroy_write_struct(&png, &info);
}

void PngSession::Write(const Bytes& bytes) {
  Run([&] { OnWrite(png, const_cast<png_bytep>(bytes.data()), bytes.size()); });
}

void PngSession::OnError(png_structp png, png_const_charp message) {
  PngSession& self = *static_cast<PngSession*>(png_get_error_ptr(png));
  std::snprintf(self.failure_, sizeof self.failure_, "%s", message);
  png_longjmp(png, 1);
}

void PngSession::OnRead(png_structp png, png_bytep target, size_t size) {
  PngSession& self = *static_cast<PngSession*>(png_get_io_ptr(png));
  if (self.source_.read(self.position_, target, size) != size) png_error(png, "the file ends early");
  self.position_ += static_cast<int64_t>(size);
}

void PngSession::OnWrite(png_structp png, png_bytep bytes, size_t size) {
  PngSession& self = *static_cast<PngSession*>(png_get_io_ptr(png));
  if (!self.sink_(self.position_, bytes, size)) png_error(png, "cannot be written");
  self.position_ += static_cast<int64_t>(size);
}

}  // namespace norv
