#include "kit/pictures/picture_file.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <utility>

#include "kit/failure.h"
#include "kit/formats/codec.h"
#include "kit/formats/streams.h"
#include "kit/metadata/carry.h"
#include "kit/metadata/containers.h"
#include "kit/pictures/conversions.h"
#include "kit/pictures/picture.h"
#include "kit/pictures/picture_samples.h"
#include "platform/console.h"

namespace norv {
namespace {

// Does something with a picture file; a Failure then names it.
template <typename Action>
auto Naming(const std::string& path, const Action& action) {
  try {
    return action();
  } catch (const Failure& failure) {
    Fail("%s: %s", path.c_str(), failure.what());
  }
}

// Room for one of the picture's rows.
Samples RowOf(PictureShape shape) {
  shape.height = 1;
  return Samples(shape);
}

SampleSource OpenUpright(const std::string& path, const ByteSource& bytes, const ReadChoice& choice) {
  uint8_t start[64];
  const Codec* codec = CodecOfContents({start, bytes.read(0, start, sizeof start)});
  if (!codec) Fail("no picture of a known format (%s)", ReadFormats().c_str());
  SampleSource samples = codec->open(bytes, choice);
  const int32_t pages = samples.shape.pages;
  if (choice.Page() > (codec->several ? pages : 1))
    Fail(pages == 1 ? "there is only one picture in the file" : "of its %d frames only the first can be read", pages);
  if (pages > 1 && choice.page == 0)
    Warn("%s: %d %s, the first taken%s", path.c_str(), pages, codec->several ? codec->several : "frames",
         codec->several ? "; --page N takes another" : "");
  if (samples.shape.turn != 0) samples = HeldSamples(Upright(AllSamples(samples)));
  return samples;
}

void RequireCompressing(const Codec& codec, const EncodingChoice& choice) {
  if (codec.compressing == Compressing::unasked)
    throw WrongUsage("--compression is for PNG and TIFF and does nothing in a " + std::string(codec.name) +
                     ": leave it out");
  if (codec.compressing == Compressing::orNot && !choice.Uncompressed())
    throw WrongUsage("--compression " + choice.compression + " is for PNG: a " + codec.name +
                     " takes none, or no word");
}

// Samples of more than a byte in the other byte order.
void Swap(Samples& row) {
  const size_t size = static_cast<size_t>(row.bits) / 8;
  for (size_t i = 0; i + size <= row.bytes.size(); i += size)
    std::reverse(row.bytes.begin() + static_cast<int64_t>(i), row.bytes.begin() + static_cast<int64_t>(i + size));
}

// The same with the receipt that was chosen.
SharedMetadata WithReceipt(SharedMetadata metadata, const Codec& codec, const std::string& receipt) {
  if (receipt.empty() || !(codec.carries & kCarriesReceipt)) return metadata;
  Metadata with = metadata ? *metadata : Metadata();
  const bool latin = std::ranges::all_of(receipt, [](char c) { return static_cast<unsigned char>(c) < 0x80; });
  with.text.push_back({kReceiptKeyword, receipt, latin});
  return std::make_shared<const Metadata>(std::move(with));
}

// A picture file that is being written, a row at a time.
class PictureFile {
 public:
  PictureFile(const std::string& path, const Codec& codec, const PictureShape& shape, const WriteChoice& choice)
      : path_(OutputName(path)), file_(path), row_(RowOf(shape)), dither_(choice.dither) {
    Guarded([&] { samples_ = codec.create(file_.Sink(), shape, choice.encoding); });
  }
  void Write(const Picture& rows) {
    Guarded([&] {
      for (int32_t r = 0; r < rows.Height(); ++r) {
        moved_ += dither_ ? PackRowDithered(rows, r, next_++, row_) : PackRow(rows, r, row_);
        samples_.write(row_);
      }
    });
    StopWhenLost();
  }
  int64_t Finish() {
    Guarded([&] { samples_.finish(); });
    if (!file_.Commit()) throw SaidFailure();
    return moved_;
  }

 private:
  // What the format's library says of a destination that fails is less than what the destination knows.
  template <typename Action>
  void Guarded(const Action& action) {
    try {
      Naming(path_, action);
    } catch (const Failure&) {
      StopWhenLost();
      throw;
    }
  }
  void StopWhenLost() {
    if (file_.Failed() && !file_.Commit()) throw SaidFailure();
  }

  std::string path_;
  OutputBytes file_;
  Samples row_;
  SampleSink samples_;
  bool dither_;
  int32_t next_ = 0;
  int64_t moved_ = 0;
};

}  // namespace

PictureSource OpenPicture(const std::string& path, const ReadChoice& choice) {
  struct State {
    std::string path;
    SampleSource samples;
    Samples row;
    int32_t next = 0;
  };
  const ByteSource bytes = FromFile(path);
  SampleSource samples = Naming(InputName(path), [&] { return OpenUpright(InputName(path), bytes, choice); });
  const PictureShape shape = samples.shape;
  const auto state = std::make_shared<State>(State{InputName(path), std::move(samples), RowOf(shape)});
  return {shape,
          [state](Picture& rows, int32_t at, int32_t count) {
            Naming(state->path, [&] {
              for (int32_t r = at; r < at + count; ++r) {
                state->samples.read(state->row, 0, 1);
                UnpackRow(state->row, r, rows);
              }
              state->next += count;
            });
          },
          [state](int32_t first, int32_t) {  // rows of compressed files are known by those before them
            Naming(state->path, [&] {
              for (; state->next < first; ++state->next) state->samples.read(state->row, 0, 1);
            });
          }};
}

Picture ReadPicture(const std::string& path, const ReadChoice& choice) { return AllRows(OpenPicture(path, choice)); }

InFile PictureInFile(const std::string& path, const PictureShape& shape, const WriteChoice& choice) {
  const std::string name = OutputName(path);
  const Codec* codec = CodecOfWord(FormatWord(path, choice));
  if (!codec) Fail("%s: no picture format for this name (%s)", name.c_str(), WrittenExtensions().c_str());
  if (!codec->create)
    Fail("%s: %s is read only; what is written: %s", name.c_str(), codec->name, WrittenExtensions().c_str());
  if (choice.bits != 0 && (choice.bits < codec->leastBits || choice.bits > codec->mostBits))
    Fail("%s: %s holds %d bits a sample only", name.c_str(), codec->name,
         choice.bits > codec->mostBits ? codec->mostBits : codec->leastBits);
  if (choice.encoding.quality != 0 && codec->loss == Loss::never)
    throw WrongUsage(std::string("--quality does nothing in ") + codec->name +
                     ", which keeps every sample: leave it out");
  if (!choice.encoding.compression.empty()) RequireCompressing(*codec, choice.encoding);
  if (choice.encoding.lossless && codec->loss == Loss::always)
    Fail("%s: %s always loses something: leave out --lossless, or write %s", name.c_str(), codec->name,
         LosslessExtensions("or").c_str());
  PictureShape written = shape;
  if (shape.HasAlpha() && !codec->alpha) --written.channels;
  written.bits = std::clamp(written.bits, codec->leastBits, codec->mostBits);
  if (choice.bits != 0) written.bits = choice.bits;
  if (choice.dither && written.bits != 8)
    throw WrongUsage("--dither is for 8 bits a sample, " + name + " gets " + std::to_string(written.bits));
  Naming(name, [&] { RequirePossible(written.width, written.height); });
  if (std::max(written.width, written.height) > codec->mostSide)
    Fail("%s: %s holds at most %d pixels a side, not %d x %d", name.c_str(), codec->name, codec->mostSide,
         written.width, written.height);
  return {codec->name, written};
}

bool HoldsReceipt(const std::string& path, const WriteChoice& choice) {
  const Codec* codec = CodecOfWord(FormatWord(path, choice));
  return codec && (codec->carries & kCarriesReceipt) && !choice.encoding.strip;
}

PictureSink CreatePicture(const std::string& path, const PictureShape& shape, const WriteChoice& choice) {
  InFile in = PictureInFile(path, shape, choice);
  const Codec& codec = *CodecOfWord(FormatWord(path, choice));
  in.shape.metadata = WithReceipt(CarriedInto(in.shape, codec.carries, codec.name, choice.encoding.strip), codec,
                                  choice.encoding.receipt);
  const auto file = std::make_shared<PictureFile>(path, codec, in.shape, choice);
  const bool onWhite = shape.HasAlpha() && !in.shape.HasAlpha();
  const auto write = [file, onWhite](Picture rows) {
    if (onWhite) LayOnWhite(rows);
    file->Write(rows);
  };
  return {write, [file] { return file->Finish(); }};
}

PlaceOfRows PlacesInPicture(const std::string& path, const PictureShape& shape, const WriteChoice& choice) {
  const PictureShape written = PictureInFile(path, shape, choice).shape;
  const Codec& codec = *CodecOfWord(FormatWord(path, choice));
  const std::optional<RowPlaces> places = codec.places ? codec.places(written, choice.encoding) : std::nullopt;
  if (!places || written.channels != shape.channels) return nullptr;
  return [written, places, dither = choice.dither](const Picture& rows, int64_t first, const PutBytes& put) {
    Samples row = RowOf(written);
    for (int32_t r = 0; r < rows.Height(); ++r) {
      if (dither)
        PackRowDithered(rows, r, static_cast<int32_t>(first + r), row);
      else
        PackRow(rows, r, row);
      if (places->swapped) Swap(row);
      const auto bytes = static_cast<int64_t>(row.bytes.size());
      put(places->first + (first + r) * bytes, row.bytes.data(), row.bytes.size());
    }
  };
}

int64_t WritePicture(const std::string& path, Picture picture, const WriteChoice& choice) {
  const PictureSink file = CreatePicture(path, picture.Shape(), choice);
  file.write(std::move(picture));
  return file.finish();
}

}  // namespace norv
