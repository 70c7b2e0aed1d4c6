#include "kit/look/picture_facts.h"

#include <algorithm>

#include "kit/formats/codec.h"
#include "kit/look/exif_facts.h"
#include "kit/look/format_facts.h"
#include "kit/look/profile_facts.h"
#include "kit/look/safe_text.h"
#include "kit/metadata/carry.h"
#include "kit/metadata/containers.h"
#include "kit/metadata/metadata.h"

namespace norv {
namespace {

const Codec& CodecOf(const ByteSource& file) {
  uint8_t start[64];
  return *CodecOfContents({start, file.read(0, start, sizeof start)});  // which has been opened
}

const char* OrientationWords(int32_t tag) {
  constexpr const char* kWords[] = {"upright",
                                    "mirrored left to right",
                                    "turned by 180 degrees",
                                    "mirrored top to bottom",
                                    "mirrored along its diagonal",
                                    "to be turned 90 degrees clockwise",
                                    "mirrored along the other diagonal",
                                    "to be turned 90 degrees anticlockwise"};
  return kWords[std::clamp(tag, 1, 8) - 1];
}

void AddShape(const Codec& codec, const PictureShape& shape, const StoredForm& form, Facts& facts) {
  const int32_t tag = shape.metadata ? shape.metadata->orientation : 0;
  facts.Add("format", codec.name);
  facts.AddNumber("width", shape.width);
  facts.AddNumber("height", shape.height);
  facts.Add("size", Printed("%d x %d pixels, %.2f megapixels", shape.width, shape.height,
                            1e-6 * shape.width * static_cast<double>(shape.height)));
  if (tag >= 5) facts.Add("stored size", Printed("%d x %d pixels", shape.height, shape.width));
  const int32_t bits = form.bits > 0 ? form.bits : shape.bits;
  facts.Add("depth", Printed("%d bits a sample%s", bits, bits == 32 && shape.bits == 32 ? ", or floats" : ""));
  facts.AddNumber("channels", shape.channels);
  facts.Add("colour model", !form.colour.empty() ? form.colour : shape.IsGrey() ? "grey" : "RGB");
  facts.Add("alpha", shape.HasAlpha() ? "yes" : "no");
  facts.AddNumber(codec.several ? codec.several : "frames", shape.pages);
  facts.Add(form.facts);
}

void AddColours(const Metadata& metadata, Facts& facts) {
  constexpr const char* kIntents[] = {"perceptual", "relative colorimetric", "saturation", "absolute colorimetric"};
  AddProfileFacts(metadata.icc, facts);
  if (metadata.intent)
    facts.Add("sRGB", std::string("rendering intent ") + kIntents[std::clamp(*metadata.intent, 0, 3)]);
  if (metadata.gamma) facts.Add("gamma", Printed("%.5g", *metadata.gamma));
  if (metadata.chromaticities) {
    const auto& c = *metadata.chromaticities;
    facts.Add("chromaticities", Printed("white %.4g %.4g, red %.4g %.4g, green %.4g %.4g, blue %.4g %.4g", c[0], c[1],
                                        c[2], c[3], c[4], c[5], c[6], c[7]));
  }
  if (metadata.codePoints) {
    const auto& c = *metadata.codePoints;
    facts.Add("code points",
              Printed("primaries %d, transfer %d, matrix %d, %s range", c[0], c[1], c[2], c[3] ? "full" : "studio"));
  }
}

void AddTexts(const Metadata& metadata, Facts& facts) {
  constexpr size_t kMostTexts = 100, kMostOfKeyword = 79;
  for (size_t i = 0; i < std::min(metadata.text.size(), kMostTexts); ++i) {
    const TextEntry& entry = metadata.text[i];
    const std::string language = entry.language.empty() ? "" : " (" + SafeText(entry.language, kMostOfKeyword) + ")";
    facts.Add("text " + SafeText(entry.keyword, kMostOfKeyword) + language, SafeText(entry.text));
  }
  if (metadata.text.size() > kMostTexts) facts.Add("more texts", std::to_string(metadata.text.size() - kMostTexts));
}

}  // namespace

Facts MetadataFacts(const Metadata& metadata) {
  Facts facts;
  if (metadata.orientation > 0)
    facts.Add("orientation", Printed("%d (%s)", metadata.orientation, OrientationWords(metadata.orientation)));
  if (const auto resolution = ResolutionOf(metadata)) facts.Add("resolution", TextOf(*resolution));
  AddColours(metadata, facts);
  AddExifFacts(metadata.exif, facts);
  facts.AddSize("XMP", metadata.xmp.size() + metadata.xmpMore.size());
  facts.AddSize("IPTC", metadata.iptc.size());
  facts.AddSize("image resources", metadata.resources.size());
  AddTexts(metadata, facts);
  return facts;
}

Facts PictureFacts(const std::string& path, const PictureShape& shape, const ReadChoice& choice) {
  const ByteSource file = FromFile(path);
  const Codec& codec = CodecOf(file);
  Facts facts;
  AddShape(codec, shape, StoredFormOf(codec.name, file, shape, choice.Page()), facts);
  if (shape.metadata) facts.Add(MetadataFacts(*shape.metadata));
  return facts;
}

}  // namespace norv
