#include "kit/formats/bytes.h"

#include "kit/failure.h"
#include "platform/file.h"
#include "platform/memory.h"

namespace norv {

Bytes ReadBytes(const std::string& path) {
  FileIn in(path);
  if (!in.IsOpen()) Fail("cannot open %s: %s", path.c_str(), in.Reason().c_str());
  if (static_cast<size_t>(in.Size()) > AvailableMemory()) Fail("%s does not fit into memory", path.c_str());
  Bytes bytes(static_cast<size_t>(in.Size()));
  in.Array(bytes.data(), bytes.size());
  if (!in.Complete()) Fail("%s cannot be read to its end", path.c_str());
  return bytes;
}

void WriteBytes(const std::string& path, const Bytes& bytes) {
  FileOut out(path);
  out.Array(bytes.data(), bytes.size());
  if (!out.Commit()) throw SaidFailure();
}

}  // namespace norv
