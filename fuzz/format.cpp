// One picture format a program (FUZZ_CODECS): what was accepted is whole and survives a file without loss.
#include "fuzz.h"
#include "kit/failure.h"
#include "kit/formats/codec.h"

using namespace norv;
using namespace norv::fuzz;

// A decoder below libheif loses some bytes of damaged files.
extern "C" const char* __lsan_default_suppressions() { return "leak:libdav1d"; }

namespace {

void RequireRoundTrip(const Samples& samples) {
  if (samples.bits == 32 && samples.HasAlpha()) return;  // held by TIFF alone
  if (samples.bytes.size() > size_t{1} << 20) return;    // the file would grow in memory by doubling
  const Codec& plain = samples.bits == 32 ? kPfm : kPam;
  const Samples again = plain.Decode(plain.Encode(samples, {}));
  Require(again.width == samples.width && again.height == samples.height && again.channels == samples.channels &&
              again.bits == samples.bits,
          "the shape stays");
  Require(again.bytes == samples.bytes, "samples stay");
}

}  // namespace

// The first byte says which page.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Input input(data, size);
  const ReadChoice choice = {.page = input.Below(4)};
  const Bytes bytes(input.Rest().begin(), input.Rest().end());
  const Codec* const codecs[] = {FUZZ_CODECS};
  const Codec* codec = CodecOfContents(bytes);
  if (std::ranges::find(codecs, codec) == std::end(codecs) || !codec) return 0;
  try {
    const Samples samples = codec->Decode(bytes, choice);
    Require(samples.bytes.size() == samples.RowBytes() * samples.height, "every row is there");
    RequireRoundTrip(samples);
  } catch (const Failure&) {
  } catch (const char*) {
  }
  return 0;
}
