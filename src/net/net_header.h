// The header of a network's file (.net) and what it says about the file: its one description, for whoever reads, writes
// or looks at such files.
#pragma once

#include <array>
#include <cstdint>

#include "platform/header.h"

namespace norv {

inline constexpr int32_t kMaxLayers = 16;

struct NetHeader;

// Null when there are no less than 0 inputs and the positive sizes are a gap-free prefix; otherwise what is wrong with
// them. A size of 0 or less is an absent layer.
const char* WhyNotBuildable(const NetHeader& header);

// All fields, in the file's order; all zero when empty.
struct NetHeader {
  int32_t Nlayers = 0;                  // layers in use; files may hold anything here, it is counted anew
  int32_t N0 = 0;                       // network inputs
  std::array<int32_t, kMaxLayers> N{};  // units of layers 1 to 16; those in use are the leading positive ones
  int32_t SpareField = 0;               // carried along
  float Cost = 0;                       // of the last training epoch
  float SampleCost = 0;                 // of the last training sample

  bool Possible() const { return !WhyNotBuildable(*this); }
  // The header and one record a unit. What 64 bits cannot count is the most that they can.
  int64_t FileBytes() const;
};

template <typename File>
constexpr void Transfer(File& file, NetHeader& header) {
  file.Field(header.Nlayers);
  file.Field(header.N0);
  file.Array(header.N.data(), header.N.size());
  file.Field(header.SpareField);
  file.Field(header.Cost);
  file.Field(header.SampleCost);
}

}  // namespace norv
