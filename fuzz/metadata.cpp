// What pictures carry, as each container holds it: what was read is written again and reads back the same, and an EXIF
// block is put right without growing, whatever it says.
#include "fuzz.h"
#include "kit/look/picture_facts.h"
#include "kit/metadata/carry.h"
#include "kit/metadata/containers.h"
#include "kit/metadata/exif.h"
#include "kit/metadata/image_resources.h"
#include "kit/metadata/xmp.h"
#include "png_checksums.h"

using namespace norv;
using namespace norv::fuzz;

namespace {

void PutBlockRight(Bytes exif) {
  const size_t size = exif.size();
  PutExifRight(exif, 70000, 3);
  Require(exif.size() <= size, "a block does not grow");
  Require(ExifOrientation(exif) <= 1 || !IsExif(exif), "it stands upright");
  Bytes again = exif;
  PutExifRight(again, 70000, 3);
  Require(again == exif, "right stays right");
  AddToExif(exif, [](bool bigEndian) { return ResolutionFields({300, 300, ResolutionUnit::inch}, bigEndian); });
  Require(exif.size() <= 2 * size + 100, "a few fields take a few bytes");
}

// From a block or a file to a block, which then holds all that the first one did.
void Rebuild(const Bytes& bytes) {
  const auto structure = TiffStructure::Open(FromMemory(bytes));
  if (!structure) return;
  const Bytes block = ExifBlock(ReadExifTree(*structure, structure->First()));
  Require(block.size() <= 20 * bytes.size() + 100, "no more comes out than is there");
  if (block.empty()) return;
  const auto again = TiffStructure::Open(FromMemory(block));
  Require(again && ExifBlock(ReadExifTree(*again, again->First())) == block, "a block reads back");
  for (const bool wide : {false, true}) TreeBytes(ReadExifTree(*again, again->First()), 8, wide);
}

void RequireSame(const Metadata& now, const Metadata& before) {
  Require(now.icc == before.icc && now.exif == before.exif && now.iptc == before.iptc, "blobs read back");
  Require(now.resources == before.resources, "resources read back");
}

void ThroughJpeg(const Metadata& metadata) {
  Bytes jpeg = {0xFF, 0xD8};
  for (const JpegSegment& segment : JpegSegments(metadata)) {
    Require(segment.bytes.size() <= 65533, "a segment holds its bytes");
    const size_t length = segment.bytes.size() + 2;
    for (const size_t byte : {size_t{0xFF}, size_t{segment.marker}, length >> 8, length & 0xFF})
      jpeg.push_back(static_cast<uint8_t>(byte));
    jpeg.insert(jpeg.end(), segment.bytes.begin(), segment.bytes.end());
  }
  RequireSame(*ReadJpegMetadata(FromMemory(jpeg)), metadata);
}

void ThroughPng(const Metadata& metadata) {
  Bytes png(8);
  const Bytes chunks = PngChunks(metadata);
  png.insert(png.end(), chunks.begin(), chunks.end());
  const auto now = ReadPngMetadata(FromMemory(png));
  RequireSame(*now, metadata);
  Require(now->xmp == metadata.xmp, "a packet reads back");
}

void ThroughTiff(const Metadata& metadata) {
  const Bytes empty = {'I', 'I', 42, 0, 8, 0, 0, 0, 0, 0, 0, 0, 0, 0};
  const Bytes directory = TiffDirectoryWith(metadata, FromMemory(empty), 8);
  Bytes tiff(empty.begin(), empty.begin() + 8);
  tiff.insert(tiff.end(), directory.begin(), directory.end());
  const auto now = ReadTiffMetadata(FromMemory(tiff), 8);
  Require(now->icc == metadata.icc && now->xmp == metadata.xmp, "fields read back");
}

}  // namespace

// The first byte says which container.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Input input(data, size);
  const int32_t kind = input.Below(5);
  const std::string_view rest = input.Rest();
  Bytes bytes(rest.begin(), rest.end());
  SharedMetadata read = std::make_shared<const Metadata>();
  if (kind == 0) {
    PutBlockRight(bytes);
    Rebuild(bytes);
  } else if (kind == 1) {
    Rebuild(bytes);
    const auto structure = TiffStructure::Open(FromMemory(bytes));
    if (structure) read = ReadTiffMetadata(FromMemory(bytes), structure->First());
  } else if (kind == 2) {
    read = ReadJpegMetadata(FromMemory(bytes));
  } else if (kind == 3) {
    std::string png(rest);
    MendPngChecksums(png);
    bytes.assign(png.begin(), png.end());
    read = ReadPngMetadata(FromMemory(bytes));
  } else {
    Metadata metadata;
    ReadResources(bytes, metadata);
    metadata.xmp = bytes;
    PutXmpRight(metadata.xmp, 5, 7, true);
    read = std::make_shared<const Metadata>(std::move(metadata));
  }
  const PictureShape shape = {.width = 5, .height = 7, .channels = 3, .metadata = read};
  if (const auto carried = CarriedInto(shape, UINT32_MAX, "a format", false)) {
    ThroughJpeg(*carried);
    ThroughPng(*carried);
    ThroughTiff(*carried);
    PutBlockRight(carried->exif);
    MetadataFacts(*carried);
  }
  CarriedInto(shape, 0, "a format", false);
  return 0;
}
