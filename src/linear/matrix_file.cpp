#include "linear/matrix_file.h"

#include "linear/matrix2.h"
#include "platform/console.h"
#include "platform/paths.h"

namespace norv {
namespace {

constexpr char kProblemOpening[] = "PROBLEM OPENING FILE!";

void SaveTo(const std::string& path, const matrix& a) {
  FileOut file(path);
  WriteHeader(file, MatrixHeader{a.m, a.n, a.mn});
  file.Array(a.x, static_cast<size_t>(a.mn));
  if (!file.Commit()) throw kProblemOpening;
}

}  // namespace

bool MatrixHeader::Possible() const { return IsCountable(rows, columns); }

int64_t MatrixHeader::FileBytes() const {
  return HeaderBytes<MatrixHeader>() + int64_t{rows} * columns * static_cast<int64_t>(sizeof(float));
}

void matrix::save(const std::string& name, Folder folder) const { SaveTo(PathOf(name, folder), *this); }

void matrix::savenumbered(const std::string& base, int32_t k) const {
  SaveTo(PathOf(base + std::to_string(k) + ".mat", Folder::executable), *this);
}

void matrix::load(const std::string& name, bool remove, Folder folder) {
  {
    FileIn file(PathOf(name, folder));
    if (!file.IsOpen()) {
      Complain("cannot read %s: %s", file.Path().c_str(), file.Reason().c_str());
      throw kProblemOpening;
    }
    const auto header = ReadHeader<MatrixHeader>(file);
    dim(header.rows, header.columns);
    file.Array(x, static_cast<size_t>(mn));
    file.WarnIfShort();
  }
  // The executable's directory even for a full path, on purpose: only files that were handed over there are consumed.
  if (remove) RemoveFile(PathOf(name, Folder::executable));
}

}  // namespace norv
