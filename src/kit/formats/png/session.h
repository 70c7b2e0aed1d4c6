// libpng's state. Its errors come back by longjmp, so whatever owns memory lives in a session outside the jump.
#pragma once

#include <csetjmp>
#include <png.h>

#include "kit/failure.h"
#include "kit/formats/byte_stream.h"

namespace norv {

struct PngSession {
  png_structp png = nullptr;
  png_infop info = nullptr;

  explicit PngSession(const ByteSource& from);
  explicit PngSession(const ByteSink& to);
  ~PngSession();
  PngSession(const PngSession&) = delete;
  PngSession& operator=(const PngSession&) = delete;

  // Runs one step of library calls; a Failure with the library's reason when it jumps out.
  template <typename Step>
  void Run(const Step& step) {
    if (!png || !info) Fail("PNG: out of memory");
    if (setjmp(png_jmpbuf(png))) Fail("PNG: %s", failure_);
    step();
  }

  // Whole chunks between those that the library writes. Throws a Failure.
  void Write(const Bytes& bytes);

 private:
  static void OnError(png_structp png, png_const_charp message);
  static void OnWarning(png_structp, png_const_charp) {}
  static void OnRead(png_structp png, png_bytep target, size_t size);
  static void OnWrite(png_structp png, png_bytep bytes, size_t size);
  static void OnFlush(png_structp) {}

  bool reading_;
  ByteSource source_;
  ByteSink sink_;
  int64_t position_ = 0;
  char failure_[200] = "out of memory";
};

}  // namespace norv
