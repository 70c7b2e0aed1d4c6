// The table of colour models: a format code's upper bits choose how many planes a pixel has and how it maps to display
// RGB.
#pragma once

#include <cstdint>
#include <span>

namespace norv {

// One pixel there or back: destination and source are arrays of one float a plane (RGB has three); returns destination.
using PixelFunction = float* (*)(float* destination, const float* source);

// The same for n pixels that lie plane by plane: arrays of one pointer a plane, whose targets do not overlap.
using RunFunction = void (*)(float* const* destination, const float* const* source, int32_t n);

// Every pair returns RGB of 0..255 to within 0.01 and finite values for finite ones far outside (1e30).
struct ColourModel {
  int32_t code;             // format with the low four bits cleared
  int32_t planes;           // 3 or 4
  const char* name;         // for people
  PixelFunction toModel;    // display RGB (0..255) to the model
  PixelFunction fromModel;  // the model to display RGB
  RunFunction runToModel, runFromModel;
};

// Codes that other code names.
enum ModelCode : int32_t {
  kDisplay = 0x10,           // identity
  kWithFourth = 0x2000,      // RGB and a fourth plane
  kLuminance = 0x20000,      // Y, Cb, Cr
  kDisplayAgain = 0x100000,  // identity too
  kLuminanceAgain = 0x200000,
  kIntensity = 0x400000,
};

inline constexpr int32_t kDefaultFormat = 23;  // kDisplay and low bits 7

constexpr int32_t ModelOf(int32_t format) { return format & ~15; }

// The model of a format code, null for an unknown one.
const ColourModel* FindModel(int32_t format);

// All of them by ascending code.
std::span<const ColourModel> ColourModels();

}  // namespace norv
