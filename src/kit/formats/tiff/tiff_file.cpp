#include "kit/formats/tiff/tiff_file.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>

#include "kit/failure.h"
#include "kit/formats/samples.h"
#include "platform/memory.h"

namespace norv {
namespace {

int OnError(TIFF*, void* handle, const char*, const char* format, va_list arguments) {
  TiffFile& self = *static_cast<TiffFile*>(handle);
  std::vsnprintf(self.failure, sizeof self.failure, format, arguments);
  return 1;
}
int OnWarning(TIFF*, void*, const char*, const char*, va_list) { return 1; }
tmsize_t Read(thandle_t handle, void* target, tmsize_t size) {
  TiffFile& self = *static_cast<TiffFile*>(handle);
  if (!self.source.read || size < 0) return 0;
  const size_t got = self.source.read(self.position, target, static_cast<size_t>(size));
  self.position += static_cast<int64_t>(got);
  return static_cast<tmsize_t>(got);
}
tmsize_t Write(thandle_t handle, void* bytes, tmsize_t size) {
  TiffFile& self = *static_cast<TiffFile*>(handle);
  if (!self.sink || !self.sink(self.position, bytes, static_cast<size_t>(size))) return -1;
  self.position += size;
  self.written = std::max(self.written, self.position);
  return size;
}
toff_t Size(thandle_t handle) {
  const TiffFile& self = *static_cast<TiffFile*>(handle);
  return static_cast<toff_t>(self.source.read ? self.source.size : self.written);
}
toff_t Seek(thandle_t handle, toff_t offset, int whence) {
  TiffFile& self = *static_cast<TiffFile*>(handle);
  const toff_t origin = whence == SEEK_SET ? 0 : whence == SEEK_CUR ? static_cast<toff_t>(self.position) : Size(handle);
  self.position = static_cast<int64_t>(std::min<toff_t>(origin + offset, INT64_MAX));
  return static_cast<toff_t>(self.position);
}
int Close(thandle_t) { return 0; }
int Map(thandle_t, void**, toff_t*) { return 0; }
void Unmap(thandle_t, void*, toff_t) {}

}  // namespace

TiffFile::TiffFile(const ByteSource& from, const ByteSink& to, const char* mode) : source(from), sink(to) {
  TIFFOpenOptions* options = TIFFOpenOptionsAlloc();
  if (!options) Fail("TIFF: out of memory");
  TIFFOpenOptionsSetErrorHandlerExtR(options, OnError, this);
  TIFFOpenOptionsSetWarningHandlerExtR(options, OnWarning, this);
  // What a small file claims is no reason to take much memory.
  const int64_t likely = source.read ? MostLikelyBytes(source.size) : int64_t{1} << 40;
  const size_t most = std::min(AvailableMemory(), static_cast<size_t>(likely));
  TIFFOpenOptionsSetMaxSingleMemAlloc(options, static_cast<tmsize_t>(most));
  tiff = TIFFClientOpenExt("picture", mode, this, Read, Write, Seek, Close, Size, Map, Unmap, options);
  TIFFOpenOptionsFree(options);
  if (!tiff) Fail("TIFF: %s", failure);
}

TiffFile::~TiffFile() {
  if (tiff) TIFFClose(tiff);
}

void TiffFile::Require(bool fine) const {
  if (!fine) Fail("TIFF: %s", failure);
}

}  // namespace norv
