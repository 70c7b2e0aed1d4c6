// What a TIFF file's own directory carries: the fields that EXIF blocks begin with, profile, XMP, IPTC, resolution.
#include <algorithm>
#include <utility>

#include "kit/metadata/containers.h"
#include "kit/metadata/exif.h"
#include "kit/metadata/image_resources.h"
#include "kit/metadata/tiff_tags.h"
#include "platform/console.h"

namespace norv {
namespace {

// IPTC as numbers of 32 bits may have been turned round with them.
void PutInOrder(Bytes& iptc) {
  constexpr uint8_t kMark = 0x1C;
  if (iptc.size() < 4 || iptc[0] == kMark || iptc[3] != kMark) return;
  for (size_t i = 0; i + 4 <= iptc.size(); i += 4) std::reverse(&iptc[i], &iptc[i] + 4);
}

// x, y of white, red, green, blue.
void ReadChromaticities(const TiffStructure& structure, const TiffDirectory& directory, Metadata& metadata) {
  std::array<double, 8> values{};
  for (const TiffEntry& entry : directory.entries) {
    const bool white = entry.tag == kTagWhitePoint && entry.count == 2;
    if (!white && !(entry.tag == kTagPrimaryChromaticities && entry.count == 6)) continue;
    for (size_t i = 0; i < entry.count; ++i) values[i + (white ? 0 : 2)] = structure.Number(entry, i);
  }
  if (std::ranges::all_of(values, [](double value) { return value > 0; })) metadata.chromaticities = values;
}

bool SaysMoreThanLayout(const ExifTree& tree) {
  const auto isMore = [](const TiffField& field) {
    return field.tag != kTagOrientation && field.tag != kTagXResolution && field.tag != kTagYResolution &&
           field.tag != kTagResolutionUnit;
  };
  return std::ranges::any_of(tree.image, isMore) || !tree.exif.empty() || !tree.gps.empty();
}

TiffField BytesField(uint16_t tag, TiffType type, const Bytes& bytes) { return {tag, type, bytes}; }

// What the metadata say in fields of TIFF's own, in the byte order of the tree.
void AddOwnFields(const Metadata& metadata, ExifTree& tree) {
  const auto add = [&](const Bytes& bytes, uint16_t tag, TiffType type) {
    if (!bytes.empty()) tree.image.push_back(BytesField(tag, type, bytes));
  };
  add(metadata.icc, kTagIcc, kTypeUndefined);
  add(metadata.xmp, kTagXmp, kTypeByte);
  add(metadata.iptc, kTagIptc, kTypeUndefined);
  add(metadata.resources, kTagResources, kTypeByte);
  const auto replace = [&](TiffField field) {
    std::erase_if(tree.image, [&](const TiffField& old) { return old.tag == field.tag; });
    tree.image.push_back(std::move(field));
  };
  if (metadata.resolution)
    for (TiffField& field : ResolutionFields(*metadata.resolution, tree.bigEndian)) replace(std::move(field));
  if (!metadata.chromaticities) return;
  for (const auto& [tag, first, count] : {std::tuple{kTagWhitePoint, 0, 2}, {kTagPrimaryChromaticities, 2, 6}}) {
    TiffField field{tag, kTypeRational, {}};
    for (int i = first; i < first + count; ++i) {
      const TiffField number = RationalField(tag, (*metadata.chromaticities)[static_cast<size_t>(i)], tree.bigEndian);
      field.value.insert(field.value.end(), number.value.begin(), number.value.end());
    }
    replace(std::move(field));
  }
}

}  // namespace

SharedMetadata ReadTiffMetadata(const ByteSource& tiff, int64_t directory) {
  const auto structure = TiffStructure::Open(tiff);
  if (!structure) return std::make_shared<const Metadata>();
  Metadata metadata;
  const TiffDirectory fields = structure->Read(directory);
  for (const TiffEntry& entry : fields.entries) {
    if (entry.tag == kTagOrientation) metadata.orientation = OrientationOf(structure->Number(entry));
    if (entry.bytes > MostCarriedBytes()) continue;
    if (entry.tag == kTagIcc) metadata.icc = structure->Value(entry);
    if (entry.tag == kTagXmp) metadata.xmp = structure->Value(entry);
    if (entry.tag == kTagIptc) metadata.iptc = structure->Value(entry);
    if (entry.tag == kTagResources) ReadResources(structure->Value(entry), metadata);
  }
  PutInOrder(metadata.iptc);
  ReadChromaticities(*structure, fields, metadata);
  const ExifTree tree = ReadExifTree(*structure, directory);
  const Bytes block = ExifBlock(tree);
  metadata.resolution = ExifResolution(block);
  if (SaysMoreThanLayout(tree)) metadata.exif = block;
  TakeExifComment(metadata);
  return std::make_shared<const Metadata>(std::move(metadata));
}

bool WantsBigEndian(const Metadata* metadata) {
  return metadata && !metadata->exif.empty() && metadata->exif[0] == 'M';
}

Bytes TiffDirectoryWith(const Metadata& metadata, const ByteSource& tiff, int64_t at) {
  const auto structure = TiffStructure::Open(tiff);
  if (!structure) return {};
  ExifTree tree;
  if (const auto block = TiffStructure::Open(FromMemory(metadata.exif))) tree = ReadExifTree(*block, block->First());
  if (tree.damaged) Warn("the EXIF block is damaged: what cannot be read of it is left out");
  tree.bigEndian = structure->Form().bigEndian;
  AddOwnFields(metadata, tree);
  for (const TiffEntry& entry : structure->Read(structure->First()).entries) {
    std::erase_if(tree.image, [&](const TiffField& field) { return field.tag == entry.tag; });
    tree.image.push_back({entry.tag, entry.type, structure->Value(entry)});
  }
  return TreeBytes(std::move(tree), static_cast<uint64_t>(at), structure->Form().wide);
}

}  // namespace norv
