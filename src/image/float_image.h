// The colour image of floats and its .fdib file.
#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "colour/models.h"
#include "image/bit_mask.h"
#include "linear/matrix2.h"
#include "platform/threads/standing_team.h"

namespace norv {

class FloatImageReader;

// width x height pixels on the 0..255 scale, one matrix a plane (m = width, n = height), planes beyond the model's
// empty.
struct FloatImage {
  int32_t width = 0;
  int32_t height = 0;
  int32_t count = 0;   // width * height
  int32_t planes = 3;  // 3 or 4 by the colour model, 0 for an unknown code
  int32_t format = kDefaultFormat;
  PixelFunction toModel = nullptr, fromModel = nullptr;    // the model's pair when planes = 3
  PixelFunction toModel4 = nullptr, fromModel4 = nullptr;  // the model's pair when planes = 4
  BitMask mask;                                            // optional, empty when absent
  std::array<matrix, 4> plane;

  FloatImage();
  FloatImage(int32_t newWidth, int32_t newHeight, int32_t newFormat);

  // Same size and a format that differs in its low four bits only: just the format is stored. Otherwise planes of zeros
  // (model 0x2000: the fourth plane 255), the mask dropped. Throws matrix's out-of-memory message.
  void Redim(int32_t newWidth, int32_t newHeight, int32_t newFormat);

  // Every pixel from its model over display RGB to the new one. Same model: only the format is stored. The mask stays.
  // From or to an unknown format: as Redim.
  void ConvertTo(int32_t newFormat, StandingTeam& team = StandingTeam::Alone());

  // Width, height and count from plane 0, after the planes were replaced.
  void RefreshSize();

  // True on failure, with the reason on standard error. A short file's tail reads as zeros, with a warning.
  [[nodiscard]] bool Load(const std::string& name, Folder folder);
  [[nodiscard]] bool Save(const std::string& name, Folder folder) const;
  // The image of a file that is open and of which no row has been read. Throws as Redim.
  void Take(FloatImageReader& file);

 private:
  void SelectModel(int32_t newFormat);
};

}  // namespace norv
