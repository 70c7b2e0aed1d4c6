// JPEG XL through libjxl, where the build found it: read only.
#ifdef NORV_JXL

#include <cstring>
#include <jxl/decode.h>
#include <memory>

#include "kit/failure.h"
#include "kit/formats/codec.h"
#include "kit/metadata/containers.h"

namespace norv {
namespace {

constexpr char kDamaged[] = "JPEG XL: damaged or cut short";

// A bare stream begins with two bytes that anything may begin with; its container with twelve.
bool IsJxl(std::span<const uint8_t> start) {
  const JxlSignature signature = JxlSignatureCheck(start.data(), start.size());
  return signature == JXL_SIG_CONTAINER || signature == JXL_SIG_CODESTREAM;
}

void Require(JxlDecoderStatus status) {
  if (status != JXL_DEC_SUCCESS) Fail(kDamaged);
}

class JxlSession {
 public:
  JxlSession(const Bytes& bytes, int events) : decoder_(JxlDecoderCreate(nullptr), JxlDecoderDestroy) {
    if (!decoder_) Fail("JPEG XL: out of memory");
    Require(JxlDecoderSubscribeEvents(Get(), events));
    Require(JxlDecoderSetUnpremultiplyAlpha(Get(), JXL_TRUE));
    JxlDecoderSetDecompressBoxes(Get(), JXL_TRUE);  // fails where the library was built without
    Require(JxlDecoderSetInput(Get(), bytes.data(), bytes.size()));
    JxlDecoderCloseInput(Get());
  }
  JxlDecoder* Get() const { return decoder_.get(); }
  // The next event; a Failure for errors and for the end of the bytes before that of the picture.
  JxlDecoderStatus Next() const {
    const JxlDecoderStatus status = JxlDecoderProcessInput(Get());
    if (status == JXL_DEC_ERROR || status == JXL_DEC_NEED_MORE_INPUT) Fail(kDamaged);
    return status;
  }

 private:
  std::unique_ptr<JxlDecoder, void (*)(JxlDecoder*)> decoder_;
};

int32_t CountFrames(const Bytes& bytes) {
  const JxlSession session(bytes, JXL_DEC_FRAME);
  int32_t count = 0;
  while (session.Next() == JXL_DEC_FRAME && count < INT32_MAX) ++count;
  return count;
}

// The contents of boxes that matter.
class JxlBoxes {
 public:
  explicit JxlBoxes(JxlDecoder* decoder) : decoder_(decoder) {}

  void Begin() {
    End();
    JxlBoxType type;
    Require(JxlDecoderGetBoxType(decoder_, type, JXL_TRUE));
    target_ = std::memcmp(type, "Exif", 4) == 0 ? &exif_ : std::memcmp(type, "xml ", 4) == 0 ? &xmp_ : nullptr;
    if (!target_) return;
    held_ = 0;
    target_->resize(size_t{1} << 12);
    Require(JxlDecoderSetBoxBuffer(decoder_, target_->data(), target_->size()));
  }
  void More() {
    held_ = target_->size() - JxlDecoderReleaseBoxBuffer(decoder_);
    if (held_ > MostCarriedBytes()) Fail("JPEG XL: a box of metadata is too large");
    target_->resize(2 * target_->size());
    Require(JxlDecoderSetBoxBuffer(decoder_, target_->data() + held_, target_->size() - held_));
  }
  void End() {
    if (target_) target_->resize(target_->size() - JxlDecoderReleaseBoxBuffer(decoder_));
    target_ = nullptr;
  }
  // EXIF stands behind the distance to it.
  void Into(Metadata& metadata) const {
    if (exif_.size() > 4) {
      const uint64_t skipped = NumberAt(exif_.data(), 4, true) + 4;
      if (skipped < exif_.size()) metadata.exif.assign(exif_.begin() + static_cast<ptrdiff_t>(skipped), exif_.end());
    }
    metadata.xmp = xmp_;
  }

 private:
  JxlDecoder* decoder_;
  Bytes* target_ = nullptr;
  size_t held_ = 0;
  Bytes exif_, xmp_;
};

class JxlReader {
 public:
  JxlReader(const ByteSource& source, int32_t page)
      : bytes_(AllBytes(source)),
        session_(bytes_, JXL_DEC_BASIC_INFO | JXL_DEC_COLOR_ENCODING | JXL_DEC_FULL_IMAGE | JXL_DEC_BOX),
        boxes_(session_.Get()),
        page_(page) {}

  Samples Read() {
    for (JxlDecoderStatus status = session_.Next(); status != JXL_DEC_SUCCESS; status = session_.Next()) {
      if (status == JXL_DEC_BASIC_INFO) ReadInfo();
      if (status == JXL_DEC_COLOR_ENCODING) ReadProfile();
      if (status == JXL_DEC_NEED_IMAGE_OUT_BUFFER) SetBuffer();
      if (status == JXL_DEC_BOX) boxes_.Begin();
      if (status == JXL_DEC_BOX_NEED_MORE_OUTPUT) boxes_.More();
      if (status == JXL_DEC_FULL_IMAGE) {
        whole_ = true;
        JxlDecoderSkipFrames(session_.Get(), SIZE_MAX / 2);  // boxes may still follow
      }
    }
    boxes_.End();
    if (!whole_) Fail(kDamaged);
    boxes_.Into(metadata_);
    if (metadata_ != Metadata()) samples_.metadata = std::make_shared<const Metadata>(std::move(metadata_));
    return std::move(samples_);
  }

 private:
  void ReadInfo() {
    JxlBasicInfo info;
    Require(JxlDecoderGetBasicInfo(session_.Get(), &info));
    RequirePossible(info.xsize, info.ysize);
    const bool floats = info.exponent_bits_per_sample > 0 || info.bits_per_sample > 16;
    shape_ = {static_cast<int32_t>(info.xsize), static_cast<int32_t>(info.ysize),
              static_cast<int32_t>(info.num_color_channels + (info.alpha_bits > 0)), 32};
    // The library works with floats, and with several copies of them.
    RequireLikely(shape_, static_cast<int64_t>(bytes_.size()));
    RequireMemory(4 * static_cast<int64_t>(shape_.RowBytes()) * shape_.height);
    shape_.bits = floats ? 32 : info.bits_per_sample > 8 ? 16 : 8;
    if (info.have_animation) shape_.pages = CountFrames(bytes_);
    if (page_ > shape_.pages) Fail("JPEG XL: frame %d of a file of %d", page_, shape_.pages);
    if (page_ > 1) JxlDecoderSkipFrames(session_.Get(), static_cast<size_t>(page_ - 1));
  }
  JxlPixelFormat Format() const {
    const JxlDataType type = shape_.bits == 32 ? JXL_TYPE_FLOAT : shape_.bits == 16 ? JXL_TYPE_UINT16 : JXL_TYPE_UINT8;
    return {static_cast<uint32_t>(shape_.channels), type, JXL_NATIVE_ENDIAN, 0};
  }
  // Of the colours as they are handed on; none where they are sRGB.
  void ReadProfile() {
    const JxlPixelFormat format = Format();
    JxlColorEncoding encoding;
    if (JxlDecoderGetColorAsEncodedProfile(session_.Get(), &format, JXL_COLOR_PROFILE_TARGET_DATA, &encoding) ==
            JXL_DEC_SUCCESS &&
        encoding.white_point == JXL_WHITE_POINT_D65 && encoding.transfer_function == JXL_TRANSFER_FUNCTION_SRGB &&
        (encoding.color_space == JXL_COLOR_SPACE_GRAY || encoding.primaries == JXL_PRIMARIES_SRGB))
      return;
    size_t size = 0;
    if (JxlDecoderGetICCProfileSize(session_.Get(), &format, JXL_COLOR_PROFILE_TARGET_DATA, &size) != JXL_DEC_SUCCESS)
      return;
    if (size > MostCarriedBytes()) Fail("JPEG XL: the colour profile is too large");
    metadata_.icc.resize(size);
    Require(JxlDecoderGetColorAsICCProfile(session_.Get(), &format, JXL_COLOR_PROFILE_TARGET_DATA, metadata_.icc.data(),
                                           size));
  }
  void SetBuffer() {
    const JxlPixelFormat format = Format();
    size_t size = 0;
    Require(JxlDecoderImageOutBufferSize(session_.Get(), &format, &size));
    samples_ = Samples(shape_);
    if (size != samples_.bytes.size()) Fail("JPEG XL: rows of an unknown layout");
    Require(JxlDecoderSetImageOutBuffer(session_.Get(), &format, samples_.bytes.data(), size));
  }

  Bytes bytes_;
  JxlSession session_;
  JxlBoxes boxes_;
  int32_t page_;
  PictureShape shape_;
  Metadata metadata_;
  Samples samples_;
  bool whole_ = false;
};

SampleSource OpenJxl(const ByteSource& source, const ReadChoice& choice) {
  return HeldSamples(JxlReader(source, choice.Page()).Read());
}

}  // namespace

const Codec kJxl = {.name = "JPEG XL", .extensions = {"jxl"}, .several = "frames", .recognise = IsJxl, .open = OpenJxl};

}  // namespace norv

#endif
