#include "kit/profiles/profile_transform.h"

#ifdef NORV_LCMS

#include <cstdlib>
#include <lcms2.h>
#include <lcms2_plugin.h>

#include "platform/memory.h"

namespace norv {
namespace {

// What a profile can make the library allocate at once: a few bytes for each of its own, and tables of its own size.
struct Limit {
  size_t bytes;
};

bool IsTooMuch(cmsContext context, cmsUInt32Number bytes) {
  const Limit* limit = static_cast<const Limit*>(cmsGetContextUserData(context));
  if (limit && bytes > limit->bytes) return true;
  return bytes > size_t{1} << 20 && bytes > AvailableMemory();
}

cmsPluginMemHandler BoundedMemory() {
  cmsPluginMemHandler handler = {};
  handler.base = {cmsPluginMagicNumber, LCMS_VERSION, cmsPluginMemHandlerSig, nullptr};
  handler.MallocPtr = [](cmsContext context, cmsUInt32Number bytes) -> void* {
    return IsTooMuch(context, bytes) ? nullptr : std::malloc(bytes);
  };
  handler.FreePtr = [](cmsContext, void* memory) { std::free(memory); };
  handler.ReallocPtr = [](cmsContext context, void* memory, cmsUInt32Number bytes) -> void* {
    return IsTooMuch(context, bytes) ? nullptr : std::realloc(memory, bytes);
  };
  return handler;
}

// Tables of floats can be made of any number of steps, to keep a reader busy. Profiles that have them have others too,
// which most programs take.
void DropFloatTables(cmsHPROFILE profile) {
  for (const cmsTagSignature tag : {cmsSigDToB0Tag, cmsSigDToB1Tag, cmsSigDToB2Tag, cmsSigDToB3Tag, cmsSigBToD0Tag,
                                    cmsSigBToD1Tag, cmsSigBToD2Tag, cmsSigBToD3Tag})
    if (cmsIsTag(profile, tag)) cmsWriteTag(profile, tag, nullptr);
}

class LittleTransform : public ProfileTransform {
 public:
  LittleTransform(std::span<const uint8_t> profile, bool lab, int32_t bits, const char*& reason)
      : limit_{(size_t{4} << 20) + 8 * profile.size()} {
    cmsPluginMemHandler memory = BoundedMemory();
    context_ = cmsCreateContext(&memory, &limit_);
    reason = "the library has no memory";
    if (!context_) return;
    const Profile from(cmsOpenProfileFromMemTHR(context_, profile.data(), cmsUInt32Number(profile.size())));
    const Profile to(cmsCreate_sRGBProfileTHR(context_));
    reason = "it is damaged";
    if (!from.handle || !to.handle) return;
    DropFloatTables(from.handle);
    reason = lab ? "it is not of L*a*b*" : "it is not of CMYK";
    if (cmsGetColorSpace(from.handle) != (lab ? cmsSigLabData : cmsSigCmykData)) return;
    const auto [source, target] = Layouts(lab, bits);
    // Some profiles have the perceptual table only.
    const bool relative = cmsIsIntentSupported(from.handle, INTENT_RELATIVE_COLORIMETRIC, LCMS_USED_AS_INPUT);
    transform_ = cmsCreateTransformTHR(context_, from.handle, source, to.handle, target,
                                       relative ? INTENT_RELATIVE_COLORIMETRIC : INTENT_PERCEPTUAL,
                                       cmsFLAGS_BLACKPOINTCOMPENSATION | cmsFLAGS_HIGHRESPRECALC);
    reason = transform_ ? "" : "it is damaged or of an unknown kind";
  }
  ~LittleTransform() override {
    if (transform_) cmsDeleteTransform(transform_);
    if (context_) cmsDeleteContext(context_);
  }
  LittleTransform(const LittleTransform&) = delete;
  LittleTransform& operator=(const LittleTransform&) = delete;

  bool IsOpen() const { return transform_; }
  void Convert(const void* from, void* rgb, int32_t pixels) const override {
    cmsDoTransform(transform_, from, rgb, static_cast<cmsUInt32Number>(pixels));
  }

 private:
  struct Profile {
    cmsHPROFILE handle;
    explicit Profile(cmsHPROFILE opened) : handle(opened) {}
    ~Profile() {
      if (handle) cmsCloseProfile(handle);
    }
  };
  struct Pair {
    cmsUInt32Number source, target;
  };
  static Pair Layouts(bool lab, int32_t bits) {
    if (lab) return {TYPE_Lab_FLT, TYPE_RGB_FLT};
    return bits == 16 ? Pair{TYPE_CMYK_16, TYPE_RGB_16} : Pair{TYPE_CMYK_8, TYPE_RGB_8};
  }

  Limit limit_;
  cmsContext context_ = nullptr;
  cmsHTRANSFORM transform_ = nullptr;
};

}  // namespace

std::unique_ptr<ProfileTransform> ProfileTransform::Open(std::span<const uint8_t> profile, bool lab, int32_t bits,
                                                         const char*& reason) {
  auto transform = std::make_unique<LittleTransform>(profile, lab, bits, reason);
  if (!transform->IsOpen()) return nullptr;
  return transform;
}

}  // namespace norv

#else

namespace norv {

std::unique_ptr<ProfileTransform> ProfileTransform::Open(std::span<const uint8_t>, bool, int32_t, const char*& reason) {
  reason = "this build has no LittleCMS";
  return nullptr;
}

}  // namespace norv

#endif
