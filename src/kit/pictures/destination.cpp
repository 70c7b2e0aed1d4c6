#include "kit/pictures/destination.h"

#include <bit>
#include <filesystem>
#include <memory>
#include <utility>

#include "kit/failure.h"
#include "kit/formats/codec.h"
#include "kit/formats/streams.h"
#include "kit/pictures/file_kind.h"
#include "kit/pictures/image_file.h"
#include "kit/pictures/picture.h"
#include "platform/console.h"
#include "platform/file.h"
#include "platform/paths.h"

namespace norv {
namespace {

namespace fs = std::filesystem;

// A name with the ending of another format than the one that is written.
void WarnOfName(const std::string& path, const WriteChoice& choice, const char* format) {
  const std::string word = FormatWord(path, choice), ending = ExtensionOf(path);
  if (!CodecOfWord(ending) && !KindOfExtension(ending)) return;
  if (CodecOfWord(word) != CodecOfWord(ending) || KindOfExtension(word) != KindOfExtension(ending))
    Warn("%s is written as %s, as --to says, whatever its name says", path.c_str(), format);
}

void RequireGivenUp(const std::string& path, bool overwrite, const std::string& input) {
  if (IsStandard(path)) return;
  std::error_code ignored;
  const fs::file_status status = fs::status(ToNative(path), ignored);
  if (!fs::exists(status)) return;
  if (fs::is_directory(status)) Fail("%s is a folder", path.c_str());
  if (IsReadOnly(path)) Fail("%s is read-only and stays as it is", path.c_str());
  if (overwrite || !fs::is_regular_file(status)) return;
  if (!input.empty() && IsSameFile(path, input))
    Fail("%s is the very file that is read: name another one, or give it up by --overwrite", path.c_str());
  Fail("%s is there already: name another file, or replace it by --overwrite", path.c_str());
}

int64_t Infinite(const matrix& plane) {
  constexpr uint32_t kExponent = 0x7F800000;
  int32_t count = 0;
  for (int32_t i = 0; i < plane.mn; ++i) count += (std::bit_cast<uint32_t>(plane.x[i]) & kExponent) == kExponent;
  return count;
}

}  // namespace

void Finiteness::Count(const Picture& rows) {
  for (int32_t k = 0; k < rows.channels; ++k) {
    const int64_t none = Infinite(rows.plane[k]);
    values += rows.plane[k].mn;
    infinite += none;
    if (k >= rows.Colours()) continue;
    colours += rows.plane[k].mn;
    colourless += none;
  }
}

void Finiteness::Add(const Finiteness& other) {
  colours += other.colours;
  colourless += other.colourless;
  values += other.values;
  infinite += other.infinite;
}

void Finiteness::Judge(const std::string& path) const {
  if (colours > 0 && colourless == colours)
    Fail("the result is no number in any pixel, so %s is not written", path.c_str());
  if (infinite > 0)
    Warn("%s: %lld of %lld values are no finite numbers", path.c_str(), static_cast<long long>(infinite),
         static_cast<long long>(values));
}

void RequireFree(const std::string& path, bool overwrite, const std::string& input) {
  if (IsStandard(path)) Fail("this goes into files only; one that is really named - is ./-");
  RequireGivenUp(path, overwrite, input);
  if (IsSpecialFile(path)) return;  // which opening might change
  FileOut probe(path, Durability::scratch);
  if (!probe.IsOpen() && !probe.Commit()) throw SaidFailure();
}

Destination::Destination(const std::string& path, const PictureShape& shape, const WriteChoice& choice,
                         const std::string& input)
    : path_(path), choice_(choice) {
  const InFile in = ImageInFile(path, shape, choice);
  if (!IsStandard(path))
    RequireFree(path, choice.overwrite, input);
  else if (OutputIsTerminal())
    Fail(
        "standard output is a terminal, which shows no pictures: send it into a file or a program, norvkit ... > FILE");
  WarnOfName(path, choice, in.format);
  if (in.shape.channels < shape.channels)
    Warn(KindOfExtension(FormatWord(path, choice))
             ? "%s has no place for the alpha plane, which is left out"
             : "%s has no place for the alpha plane: the picture is laid on white",
         in.format);
  if (choice.bits == 0 && in.shape.bits < shape.bits && !choice.dither)
    Warn("%s holds %d bits a sample: the picture's %d are rounded", in.format, in.shape.bits, shape.bits);
}

Rounding Destination::RoundingOf(const PictureShape& shape) const {
  return {ImageInFile(path_, shape, choice_).shape.bits, choice_.dither};
}

PictureSink Destination::Create(const PictureShape& shape, const std::shared_ptr<Finiteness>& finiteness) const {
  const PictureSink file = ReplaceImage(path_, shape, choice_);
  const auto write = [file, finiteness](Picture rows) {
    finiteness->Count(rows);
    file.write(std::move(rows));
  };
  const auto finish = [file, finiteness, path = path_, overwrite = choice_.overwrite] {
    finiteness->Judge(OutputName(path));
    RequireGivenUp(path, overwrite, "");  // what has appeared meanwhile is another's work
    return file.finish();
  };
  return {write, finish};
}

int64_t Destination::Save(Picture picture) const {
  const PictureShape shape = picture.Shape();
  return CopyRows(HeldPicture(std::move(picture)), Create(shape));
}

}  // namespace norv
