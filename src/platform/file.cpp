#include "platform/file.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <optional>
#include <utility>
#include <vector>

#include "platform/console.h"
#include "platform/native/before_rename.h"
#include "platform/native/native_file.h"

namespace norv {
namespace {

// One system call moves about this much; larger arrays pass by the buffer. Small files get by with a small one.
constexpr size_t kBufferSize = size_t{1} << 20, kSmallBuffer = size_t{1} << 16;
constexpr size_t kBytesBehind = size_t{8} << 20;  // until the system is told to write them

}  // namespace

// ---------------------------------------------------------------------------------------------------- reading

struct FileIn::State {
  std::string path;
  std::string reason;
  NativeFile file;
  int64_t size = 0;
  std::vector<char> buffer;
  size_t begin = 0, end = 0;  // the unread part of the buffer
  int64_t position = 0;       // of the next byte that is asked for
  bool ended = false;         // nothing more comes from here on
  bool complete = true;
};

FileIn::FileIn(const std::string& path) : state_(std::make_unique<State>()) {
  state_->path = path;
  state_->file = NativeFile::OpenForReading(path);
  if (state_->file.IsOpen())
    state_->size = state_->file.Size();
  else
    state_->reason = LastSystemError();
}

FileIn::~FileIn() = default;

bool FileIn::IsOpen() const { return state_->file.IsOpen(); }
int64_t FileIn::Size() const { return state_->size; }
const std::string& FileIn::Path() const { return state_->path; }
const std::string& FileIn::Reason() const { return state_->reason; }
bool FileIn::Complete() const { return state_->complete; }

void FileIn::Read(void* bytes, size_t size) {
  State& s = *state_;
  char* target = static_cast<char*>(bytes);
  s.position += static_cast<int64_t>(size);
  while (size > 0) {
    if (s.begin == s.end && size >= kBufferSize) {
      s.begin = s.end = 0;
      const int64_t got = s.ended ? 0 : s.file.Read(target, size);
      if (got <= 0) break;
      target += got;
      size -= static_cast<size_t>(got);
      continue;
    }
    if (s.begin == s.end) {
      s.buffer.resize(s.size < static_cast<int64_t>(kSmallBuffer) ? kSmallBuffer : kBufferSize);
      const int64_t got = s.ended ? 0 : s.file.Read(s.buffer.data(), s.buffer.size());
      if (got <= 0) break;
      s.begin = 0;
      s.end = static_cast<size_t>(got);
    }
    const size_t part = std::min(size, s.end - s.begin);
    std::memcpy(target, s.buffer.data() + s.begin, part);
    s.begin += part;
    target += part;
    size -= part;
  }
  if (size > 0) {
    s.ended = true;
    s.complete = false;
    std::memset(target, 0, size);
  }
}

void FileIn::Skip(int64_t bytes) {
  State& s = *state_;
  const int64_t buffered = std::min<int64_t>(bytes, static_cast<int64_t>(s.end - s.begin));
  s.begin += static_cast<size_t>(buffered);
  s.position += bytes;
  if (bytes <= buffered) return;
  s.begin = s.end = 0;
  if (s.file.Skip(bytes - buffered)) return;
  s.ended = true;
  s.complete = false;
}

void FileIn::Seek(int64_t position) {
  State& s = *state_;
  if (position == s.position) return;
  const int64_t start = s.position - static_cast<int64_t>(s.begin);  // of what is buffered
  const bool buffered = !s.ended && position >= start && position < start + static_cast<int64_t>(s.end);
  s.position = position;
  s.begin = buffered ? static_cast<size_t>(position - start) : 0;
  if (buffered) return;
  s.end = 0;
  s.ended = !s.file.Seek(position);
}

bool FileIn::CanSeek() const { return state_->file.CanSeek(); }

void FileIn::WarnIfShort() const {
  if (!Complete()) WarnEndsEarly();
}

void FileIn::WarnEndsEarly() const { Warn("%s ends early; what is missing is read as zeros", Path().c_str()); }

// ---------------------------------------------------------------------------------------------------- writing

namespace {

thread_local const BeforeRename::Note* noteOfThread = nullptr;
thread_local std::string lastTemporary;

}  // namespace

const std::string& LastTemporary() { return lastTemporary; }

BeforeRename::BeforeRename(Note note) : note_(std::move(note)) { noteOfThread = &note_; }
BeforeRename::~BeforeRename() { noteOfThread = nullptr; }

struct FileOut::State {
  std::string destination;
  std::string temporary;  // empty: the destination is written directly
  std::optional<ScratchGuard> guard;
  NativeFile file;
  Durability durability = Durability::durable;
  std::vector<char> buffer;
  int64_t position = 0;  // where the next byte goes, the buffer counted as written
  std::string failure;
  size_t sent = 0;  // bytes since the system was told to write them to the disk

  void Fail() {
    if (failure.empty()) failure = LastSystemError();
  }
  void Send(const char* bytes, size_t size) {
    while (size > 0 && failure.empty()) {
      const int64_t written = file.Write(bytes, size);
      if (written <= 0) return Fail();
      bytes += written;
      size -= static_cast<size_t>(written);
      sent += static_cast<size_t>(written);
    }
    WriteBehind();
  }
  // What has to be on the disk at the end is on its way there while the rest is made.
  void WriteBehind() {
    if (durability != Durability::durable || sent < kBytesBehind) return;
    file.BeginFlush();
    sent = 0;
  }
  void Flush() {
    Send(buffer.data(), buffer.size());
    buffer.clear();
  }
};

FileOut::FileOut(const std::string& path, Durability durability) : state_(std::make_unique<State>()) {
  State& s = *state_;
  s.destination = FinalTarget(path);
  s.durability = durability;
  if (IsSpecialFile(s.destination)) {
    s.file = NativeFile::OpenForWriting(s.destination);
  } else {
    RemoveAbandonedFiles(s.destination);
    s.file = NativeFile::CreateTemporary(s.destination, s.temporary, s.guard);
  }
  if (!s.file.IsOpen()) s.Fail();
  lastTemporary = s.temporary;
}

FileOut::~FileOut() {
  if (state_->temporary.empty() || !state_->file.IsOpen()) return;
  state_->file.Close();
  RemoveFile(state_->temporary);
}

bool FileOut::IsOpen() const { return state_->file.IsOpen(); }
bool FileOut::CanSeek() const { return state_->file.CanSeek(); }
bool FileOut::Failed() const { return !state_->failure.empty(); }

void FileOut::Seek(int64_t position) {
  State& s = *state_;
  if (position == s.position) return;
  s.Flush();
  s.position = position;
  if (!Failed() && !s.file.Seek(position)) s.Fail();
}

void FileOut::Write(const void* bytes, size_t size) {
  State& s = *state_;
  s.position += static_cast<int64_t>(size);
  if (s.buffer.size() + size > kBufferSize) s.Flush();
  const char* source = static_cast<const char*>(bytes);
  if (size >= kBufferSize)
    s.Send(source, size);
  else
    s.buffer.insert(s.buffer.end(), source, source + size);
}

void FileOut::WriteFloats(const float* floats, size_t n) {
  int undefined = 0;
  for (size_t i = 0; i < n; ++i) undefined |= floats[i] != floats[i];
  if (!undefined) return Write(floats, n * sizeof(float));
  for (size_t i = 0; i < n; ++i) {
    const float one = std::isnan(floats[i]) ? std::numeric_limits<float>::quiet_NaN() : floats[i];
    Write(&one, sizeof one);
  }
}

bool FileOut::Commit() {
  State& s = *state_;
  s.Flush();
  const bool durable = s.durability == Durability::durable;
  if (s.failure.empty() && durable && !s.temporary.empty() && !s.file.Flush()) s.Fail();
  if (s.failure.empty() && !s.temporary.empty() && noteOfThread) (*noteOfThread)(s.temporary, s.destination);
  if (s.failure.empty()) {
    const bool moved = s.temporary.empty() ? s.file.Close() : s.file.Rename(s.temporary, s.destination, durable);
    if (!moved) s.Fail();
  }
  if (s.failure.empty()) {
    s.temporary.clear();
    s.guard.reset();
    return true;
  }
  Complain("cannot write %s: %s", s.destination.c_str(), s.failure.c_str());
  if (s.file.IsOpen()) s.file.Close();
  if (!s.temporary.empty()) RemoveFile(s.temporary);
  s.temporary.clear();
  return false;
}

}  // namespace norv
