// Colour profiles (ICC.1) by LittleCMS, the only place that knows it.
#pragma once

#include <cstdint>
#include <memory>
#include <span>

namespace norv {

class ProfileTransform {
 public:
  // From the colours of a profile to sRGB: of four inks in samples of 8 or 16 bits to such samples, or of L*, a*, b* as
  // floats (L* 0..100) to floats of 0..1. Null with the reason where the profile is damaged or of other colours, where
  // it asks for more memory than its size justifies, or where the build has no LittleCMS.
  static std::unique_ptr<ProfileTransform> Open(std::span<const uint8_t> profile, bool lab, int32_t bits,
                                                const char*& reason);
  virtual ~ProfileTransform() = default;

  virtual void Convert(const void* from, void* rgb, int32_t pixels) const = 0;
};

}  // namespace norv
