#include "kit/formats/streams.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <map>
#include <new>

#include "kit/failure.h"
#include "kit/formats/codec.h"
#include "platform/console.h"
#include "platform/memory.h"
#include "platform/paths.h"

namespace norv {
namespace {

constexpr size_t kBlock = size_t{1} << 20;

struct CloseFile {
  void operator()(FILE* file) const {
    if (file != stdin) std::fclose(file);
  }
};
using OpenFile = std::unique_ptr<FILE, CloseFile>;

OpenFile Open(const std::string& path) {
  if (!IsStandard(path)) return OpenFile(OpenStream(path, "rb"));
  if (InputIsTerminal()) Fail("standard input is a terminal: send a picture into it, norvkit ... - < photo.jpg");
  return OpenFile(stdin);
}

Bytes ReadToEnd(FILE* file, const std::string& name) {
  Bytes bytes;
  size_t used = 0;
  do {
    const size_t room = std::max(kBlock, 2 * bytes.size());
    if (room > AvailableMemory()) Fail("%s brings more than memory holds", name.c_str());
    bytes.resize(room);
    used += std::fread(bytes.data() + used, 1, room - used, file);
    if (room == kBlock && used > 0 && !CodecOfContents({bytes.data(), used}))
      Fail("%s brings no picture (%s)", name.c_str(), ReadFormats().c_str());
  } while (used == bytes.size());
  if (std::ferror(file)) Fail("cannot read %s: %s", name.c_str(), std::strerror(errno));
  if (used == 0) Fail("%s brings nothing", name.c_str());
  bytes.resize(used);
  return bytes;
}

}  // namespace

bool IsStandard(const std::string& path) { return path == "-"; }

std::string InputName(const std::string& path) { return IsStandard(path) ? "standard input" : path; }

std::string OutputName(const std::string& path) { return IsStandard(path) ? "standard output" : path; }

// Not opened to find out: whoever writes into a pipe would take that for a reader that has gone away.
bool IsStream(const std::string& path) { return IsStandard(path) || IsSpecialFile(path); }

const Bytes& AllOfStream(const std::string& path) {
  static std::map<std::string, Bytes> known;
  if (const auto held = known.find(path); held != known.end()) return held->second;
  const OpenFile file = Open(path);
  if (!file) Fail("cannot open %s: %s", path.c_str(), std::strerror(errno));
  return known[path] = ReadToEnd(file.get(), InputName(path));
}

OutputBytes::OutputBytes(const std::string& path) {
  if (!IsStandard(path)) file_.emplace(path);
}

ByteSink OutputBytes::Sink() {
  if (file_) return ToFile(*file_);
  return [this](int64_t position, const void* source, size_t bytes) {
    return Keep(position, static_cast<const uint8_t*>(source), bytes);
  };
}

bool OutputBytes::Keep(int64_t position, const uint8_t* source, size_t bytes) {
  const int64_t end = position + static_cast<int64_t>(bytes);
  while (!full_ && static_cast<int64_t>(blocks_.size() * kBlock) < end) {
    full_ = kBlock > AvailableMemory();
    if (!full_) blocks_.push_back(std::make_unique<uint8_t[]>(kBlock));
  }
  if (full_) return false;
  for (size_t at = static_cast<size_t>(position); bytes > 0;) {
    const size_t part = std::min(bytes, kBlock - at % kBlock);
    std::memcpy(blocks_[at / kBlock].get() + at % kBlock, source, part);
    at += part;
    source += part;
    bytes -= part;
  }
  size_ = std::max(size_, end);
  return true;
}

bool OutputBytes::Failed() const { return file_ ? file_->Failed() : full_; }

bool OutputBytes::Commit() {
  if (file_) return file_->Commit();
  if (full_) Complain("the picture for standard output does not fit into memory");
  for (int64_t sent = 0; !full_ && sent < size_; sent += kBlock)
    if (!SendOutput(blocks_[sent / kBlock].get(), static_cast<size_t>(std::min<int64_t>(kBlock, size_ - sent))))
      return false;
  return !full_;
}

}  // namespace norv
