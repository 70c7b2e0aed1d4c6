// AVIF and HEIC through libheif, where the build found it: read only. The library turns what its own tags turn, so that
// EXIF's orientation means nothing.
#ifdef NORV_HEIF

#include <algorithm>
#include <cstring>
#include <libheif/heif.h>
#include <memory>

#include "kit/failure.h"
#include "kit/formats/codec.h"
#include "kit/metadata/containers.h"
#include "platform/native/block.h"
#include "platform/team.h"

namespace norv {
namespace {

template <auto release>
struct Release {
  template <typename T>
  void operator()(T* object) const {
    release(object);
  }
};
using Context = std::unique_ptr<heif_context, Release<heif_context_free>>;
using Handle =
    std::unique_ptr<heif_image_handle, Release<[](heif_image_handle* handle) { heif_image_handle_release(handle); }>>;
using Image = std::unique_ptr<heif_image, Release<[](heif_image* image) { heif_image_release(image); }>>;

using Codes = std::unique_ptr<heif_color_profile_nclx, Release<heif_nclx_color_profile_free>>;

// A brand of four letters that the file says it is of, or also of.
bool HasBrand(std::span<const uint8_t> start, std::initializer_list<const char*> brands) {
  if (start.size() < 12 || std::memcmp(start.data() + 4, "ftyp", 4) != 0) return false;
  const size_t end = std::min<size_t>(start.size(), NumberAt(start.data(), 4, true));
  for (size_t at = 8; at + 4 <= end; at += at == 8 ? 8 : 4)  // a version stands behind the first
    for (const char* brand : brands)
      if (std::memcmp(start.data() + at, brand, 4) == 0) return true;
  return false;
}

bool IsAvif(std::span<const uint8_t> start) { return HasBrand(start, {"avif", "avis"}); }
bool IsHeic(std::span<const uint8_t> start) {
  return !IsAvif(start) && HasBrand(start, {"heic", "heix", "hevc", "hevx", "heim", "heis", "mif1", "msf1"});
}

void Require(const char* name, const heif_error& error) {
  if (error.code != heif_error_Ok) Fail("%s: %s", name, error.message);
}

Bytes BlockOf(const char* name, const heif_image_handle* handle, heif_item_id id) {
  const size_t size = heif_image_handle_get_metadata_size(handle, id);
  if (size > MostCarriedBytes()) Fail("%s: metadata are too large", name);
  Bytes bytes(size);
  if (size > 0) Require(name, heif_image_handle_get_metadata(handle, id, bytes.data()));
  return bytes;
}

// EXIF stands behind the distance to it.
Bytes BehindDistance(const Bytes& block) {
  if (block.size() < 4) return {};
  const uint64_t skipped = NumberAt(block.data(), 4, true) + 4;
  if (skipped >= block.size()) return {};
  return {block.begin() + static_cast<ptrdiff_t>(skipped), block.end()};
}

void ReadBlocks(const char* name, const heif_image_handle* handle, Metadata& metadata) {
  const int count = heif_image_handle_get_number_of_metadata_blocks(handle, nullptr);
  std::vector<heif_item_id> ids(static_cast<size_t>(std::max(count, 0)));
  heif_image_handle_get_list_of_metadata_block_IDs(handle, nullptr, ids.data(), count);
  for (const heif_item_id id : ids) {
    const std::string type = heif_image_handle_get_metadata_type(handle, id);
    const std::string content = heif_image_handle_get_metadata_content_type(handle, id);
    if (type == "Exif") metadata.exif = BehindDistance(BlockOf(name, handle, id));
    if (type == "mime" && content == "application/rdf+xml") metadata.xmp = BlockOf(name, handle, id);
  }
}

void ReadProfile(const char* name, const heif_image_handle* handle, Metadata& metadata) {
  const heif_color_profile_type type = heif_image_handle_get_color_profile_type(handle);
  if (type == heif_color_profile_type_rICC || type == heif_color_profile_type_prof) {
    const size_t size = heif_image_handle_get_raw_color_profile_size(handle);
    if (size > MostCarriedBytes()) Fail("%s: the colour profile is too large", name);
    metadata.icc.resize(size);
    if (size > 0) Require(name, heif_image_handle_get_raw_color_profile(handle, metadata.icc.data()));
  } else if (type == heif_color_profile_type_nclx) {
    heif_color_profile_nclx* raw = nullptr;
    const bool known = heif_image_handle_get_nclx_color_profile(handle, &raw).code == heif_error_Ok;
    const Codes codes(raw);  // that may be there when it failed, too
    if (!known || !codes) return;
    const auto primaries = static_cast<uint8_t>(codes->color_primaries),
               transfer = static_cast<uint8_t>(codes->transfer_characteristics);
    constexpr uint8_t kUnknown = 2, kSrgbPrimaries = 1, kSrgbTransfer = 13;
    // What is handed on is RGB over all values.
    const bool said = primaries != kUnknown && transfer != kUnknown;
    if (said && (primaries != kSrgbPrimaries || transfer != kSrgbTransfer))
      metadata.codePoints = {primaries, transfer, 0, 1};
  }
}

// To all of 8 or 16 bits, with the colours not multiplied by alpha.
template <typename T>
void Unfold(const uint8_t* row, int32_t bits, bool multiplied, const Samples& shape, uint8_t* target) {
  const uint32_t most = (1u << bits) - 1, full = static_cast<T>(-1);
  T* values = reinterpret_cast<T*>(target);
  for (int32_t x = 0; x < shape.width; ++x, values += shape.channels, row += shape.channels * sizeof(T)) {
    for (int32_t k = 0; k < shape.channels; ++k) {
      T value;
      std::memcpy(&value, row + k * sizeof(T), sizeof(T));
      values[k] = static_cast<T>((std::min<uint32_t>(value, most) * full + most / 2) / most);
    }
    const uint32_t alpha = multiplied ? values[3] : 0;
    for (int32_t k = 0; k < 3 && alpha > 0; ++k)
      values[k] = static_cast<T>(std::min<uint64_t>(full, (uint64_t{values[k]} * full + alpha / 2) / alpha));
  }
}

// The library hands grey on as three equal channels.
Samples GreyWhereItIs(Samples samples) {
  const size_t sample = samples.bits / 8, pixel = samples.PixelBytes();
  for (size_t at = 0; at < samples.bytes.size(); at += pixel)
    if (std::memcmp(&samples.bytes[at], &samples.bytes[at + sample], 2 * sample) != 0) return samples;
  PictureShape shape = samples;
  shape.channels -= 2;
  Samples grey(shape);
  for (size_t from = 2 * sample, to = 0; to < grey.bytes.size(); from += pixel, to += grey.PixelBytes())
    std::copy_n(&samples.bytes[from], grey.PixelBytes(), &grey.bytes[to]);
  return grey;
}

// Beside the pixels: for the decoder's tables, and what a thread reserves without using it.
int64_t RoomOfDecoder(const PictureShape& shape) {
  constexpr int64_t kTables = int64_t{256} << 20, kThread = int64_t{160} << 20;
  return 8 * static_cast<int64_t>(shape.RowBytes()) * shape.height + kTables + kThread * ProcessorCount();
}

class HeifReader {
 public:
  HeifReader(const char* name, const ByteSource& source)
      : name_(name), bytes_(AllBytes(source)), context_(heif_context_alloc()) {
    if (!context_) Fail("%s: out of memory", name);
    heif_context_set_max_decoding_threads(context_.get(), 1);
    Require(name, heif_context_read_from_memory_without_copy(context_.get(), bytes_.data(), bytes_.size(), nullptr));
  }

  Samples Read(int32_t page) {
    const int32_t pages = OpenPage(page);
    const heif_image_handle* handle = handle_.get();
    const bool alpha = heif_image_handle_has_alpha_channel(handle);
    const int32_t bits = std::max(heif_image_handle_get_luma_bits_per_pixel(handle), 8);
    if (bits > 16) Fail("%s: samples of %d bits", name_, bits);
    PictureShape shape = {heif_image_handle_get_width(handle), heif_image_handle_get_height(handle), alpha ? 4 : 3,
                          bits > 8 ? 16 : 8};
    shape.pages = pages;
    RequireLikely(shape, static_cast<int64_t>(bytes_.size()));
    RequireMemory(4 * static_cast<int64_t>(shape.RowBytes()) * shape.height);
    auto metadata = std::make_shared<Metadata>();
    ReadBlocks(name_, handle, *metadata);
    ReadProfile(name_, handle, *metadata);
    if (*metadata != Metadata()) shape.metadata = std::move(metadata);
    const bool profile = shape.metadata && (!shape.metadata->icc.empty() || shape.metadata->codePoints);
    Samples samples = Decode(shape, bits);
    return profile ? samples : GreyWhereItIs(std::move(samples));
  }

 private:
  // The main picture comes first. Returns how many there are.
  int32_t OpenPage(int32_t page) {
    const int count = heif_context_get_number_of_top_level_images(context_.get());
    std::vector<heif_item_id> ids(static_cast<size_t>(std::max(count, 0)));
    heif_context_get_list_of_top_level_image_IDs(context_.get(), ids.data(), count);
    heif_item_id first = 0;
    Require(name_, heif_context_get_primary_image_ID(context_.get(), &first));
    std::erase(ids, first);
    ids.insert(ids.begin(), first);
    const auto pages = static_cast<int32_t>(ids.size());
    if (page > pages) Fail("%s: picture %d of a file of %d", name_, page, pages);
    heif_image_handle* handle = nullptr;
    Require(name_, heif_context_get_image_handle(context_.get(), ids[static_cast<size_t>(page) - 1], &handle));
    handle_.reset(handle);
    return pages;
  }

  Samples Decode(const PictureShape& shape, int32_t bits) const {
    const bool alpha = shape.HasAlpha();
    const heif_chroma chroma = shape.bits == 16
                                   ? (alpha ? heif_chroma_interleaved_RRGGBBAA_LE : heif_chroma_interleaved_RRGGBB_LE)
                                   : (alpha ? heif_chroma_interleaved_RGBA : heif_chroma_interleaved_RGB);
    const Image image = DecodeAs(chroma, shape);
    heif_image* decoded = image.get();
    int stride = 0;
    const uint8_t* rows = heif_image_get_plane_readonly(decoded, heif_channel_interleaved, &stride);
    if (!rows || heif_image_get_width(decoded, heif_channel_interleaved) != shape.width ||
        heif_image_get_height(decoded, heif_channel_interleaved) != shape.height)
      Fail("%s: pixels of another size than said", name_);
    Samples samples(shape);
    const bool multiplied = alpha && heif_image_handle_is_premultiplied_alpha(handle_.get());
    const int32_t decodedBits = heif_image_get_bits_per_pixel_range(decoded, heif_channel_interleaved);
    for (int32_t r = 0; r < shape.height; ++r)
      (shape.bits == 16 ? Unfold<uint16_t> : Unfold<uint8_t>)(rows + static_cast<size_t>(stride) * r,
                                                              shape.bits == 8   ? 8
                                                              : decodedBits > 8 ? decodedBits
                                                                                : bits,
                                                              multiplied, samples, samples.Row(r));
    return samples;
  }

  Image DecodeAs(heif_chroma chroma, const PictureShape& shape) const {
    // The decoders below the library take what the coded pictures claim, whatever size the file itself says.
    const AddressLimit limit(RoomOfDecoder(shape));
    heif_image* decoded = nullptr;
    try {
      Require(name_, heif_decode_image(handle_.get(), &decoded, heif_colorspace_RGB, chroma, nullptr));
    } catch (const std::bad_alloc&) {
      Fail("%s: the coded picture asks for too much memory", name_);
    }
    return Image(decoded);
  }

  const char* name_;
  Bytes bytes_;
  Context context_;
  Handle handle_;
};

template <const Codec& codec>
SampleSource OpenHeif(const ByteSource& source, const ReadChoice& choice) {
  return HeldSamples(HeifReader(codec.name, source).Read(choice.Page()));
}

}  // namespace

const Codec kAvif = {
    .name = "AVIF", .extensions = {"avif"}, .several = "pictures", .recognise = IsAvif, .open = OpenHeif<kAvif>};

const Codec kHeic = {.name = "HEIC",
                     .extensions = {"heic", "heif", "hif"},
                     .several = "pictures",
                     .recognise = IsHeic,
                     .open = OpenHeif<kHeic>};

}  // namespace norv

#endif
