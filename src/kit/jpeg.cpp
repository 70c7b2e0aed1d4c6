// JPEG through libjpeg. Its errors come back by longjmp, so whatever owns memory lives in a session outside the jump.
#include <algorithm>
#include <csetjmp>
#include <cstdio>
#include <cstdlib>
// The library's header needs stdio's types first.
#include <jerror.h>
#include <jpeglib.h>

#include "kit/codec.h"
#include "kit/failure.h"

namespace norv {
namespace {

// A progressive picture of more scans than this is one that was made to keep a reader busy.
constexpr int kMostScans = 500;

struct JpegErrors {
  jpeg_error_mgr manager;  // first, so that the library's pointer is ours
  std::jmp_buf jump;
  char failure[JMSG_LENGTH_MAX] = "out of memory";

  JpegErrors() {
    jpeg_std_error(&manager);
    manager.error_exit = OnError;
    manager.emit_message = OnMessage;
    manager.output_message = [](j_common_ptr) {};
  }

  // Runs one step of library calls; a Failure with the library's reason when it jumps out.
  template <typename Step>
  void Run(const Step& step) {
    if (setjmp(jump)) Fail("JPEG: %s", failure);
    step();
  }

  static void OnError(j_common_ptr jpeg) {
    JpegErrors* self = reinterpret_cast<JpegErrors*>(jpeg->err);
    jpeg->err->format_message(jpeg, self->failure);
    std::longjmp(self->jump, 1);
  }
  // Damaged data is a warning to the library, which would go on with grey; stray bytes between segments are harmless.
  static void OnMessage(j_common_ptr jpeg, int level) {
    if (level < 0 && jpeg->err->msg_code != JWRN_EXTRANEOUS_DATA) OnError(jpeg);
  }
};

struct JpegReader {
  JpegErrors errors;
  jpeg_progress_mgr progress = {};
  jpeg_decompress_struct jpeg = {};

  JpegReader() {
    jpeg.err = &errors.manager;
    progress.progress_monitor = [](j_common_ptr common) {
      if (reinterpret_cast<j_decompress_ptr>(common)->input_scan_number > kMostScans)
        ERREXIT(common, JERR_BAD_PROGRESSION);
    };
  }
  ~JpegReader() { jpeg_destroy_decompress(&jpeg); }
  JpegReader(const JpegReader&) = delete;
  JpegReader& operator=(const JpegReader&) = delete;
};

struct JpegWriter {
  JpegErrors errors;
  jpeg_compress_struct jpeg = {};
  unsigned char* memory = nullptr;
  unsigned long size = 0;

  JpegWriter() { jpeg.err = &errors.manager; }
  ~JpegWriter() {
    jpeg_destroy_compress(&jpeg);
    std::free(memory);
  }
  JpegWriter(const JpegWriter&) = delete;
  JpegWriter& operator=(const JpegWriter&) = delete;
};

bool IsJpeg(std::span<const uint8_t> start) {
  return start.size() >= 3 && start[0] == 0xFF && start[1] == 0xD8 && start[2] == 0xFF;
}

// A number of 2 or 4 bytes in the byte order of the EXIF block; 0 behind its end.
uint32_t ExifNumber(std::span<const uint8_t> exif, size_t at, size_t size) {
  uint32_t value = 0;
  if (at > exif.size() || size > exif.size() - at) return 0;
  const bool little = exif[0] == 'I';
  for (size_t i = 0; i < size; ++i) value = value << 8 | exif[at + (little ? size - 1 - i : i)];
  return value;
}

// The orientation tag of an APP1 segment with EXIF data, 0 without one.
int32_t ExifOrientation(std::span<const uint8_t> segment) {
  constexpr uint8_t kMark[] = {'E', 'x', 'i', 'f', 0, 0};
  if (segment.size() < 14 || !std::equal(kMark, kMark + 6, segment.begin())) return 0;
  const auto exif = segment.subspan(6);
  const size_t directory = ExifNumber(exif, 4, 4);
  const uint32_t entries = ExifNumber(exif, directory, 2);
  for (uint32_t i = 0; i < entries; ++i) {
    const size_t entry = directory + 2 + 12 * size_t{i};
    if (ExifNumber(exif, entry, 2) == 0x0112) return static_cast<int32_t>(ExifNumber(exif, entry + 8, 2));
  }
  return 0;
}

// A row of four inks to RGB. Files with an Adobe marker hold them inverted: 255 is no ink.
void InksToRgb(const uint8_t* inks, uint8_t* rgb, int32_t width, bool inverted) {
  const int flip = inverted ? 0 : 255;
  for (int32_t x = 0; x < width; ++x)
    for (int c = 0; c < 3; ++c)
      rgb[3 * x + c] = static_cast<uint8_t>(((inks[4 * x + c] ^ flip) * (inks[4 * x + 3] ^ flip) + 127) / 255);
}

Samples DecodeJpeg(const Bytes& bytes) {
  JpegReader reader;
  jpeg_decompress_struct& jpeg = reader.jpeg;
  Samples samples;
  reader.errors.Run([&] {
    jpeg_create_decompress(&jpeg);
    jpeg.progress = &reader.progress;
    jpeg_mem_src(&jpeg, bytes.data(), static_cast<unsigned long>(bytes.size()));
    jpeg_save_markers(&jpeg, JPEG_APP0 + 1, 0xFFFF);
    jpeg_read_header(&jpeg, TRUE);
    const bool grey = jpeg.jpeg_color_space == JCS_GRAYSCALE, inks = jpeg.num_components == 4;
    jpeg.out_color_space = grey ? JCS_GRAYSCALE : inks ? JCS_CMYK : JCS_RGB;
    jpeg.dct_method = JDCT_ISLOW;
  });
  const bool inks = jpeg.out_color_space == JCS_CMYK;
  samples.Allocate(jpeg.image_width, jpeg.image_height, jpeg.out_color_space == JCS_GRAYSCALE ? 1 : 3, 8);
  for (const jpeg_marker_struct* marker = jpeg.marker_list; marker; marker = marker->next)
    if (const int32_t tag = ExifOrientation({marker->data, marker->data_length}))
      samples.turn = TurnOfOrientationTag(tag);
  Bytes inkRow(inks ? 4 * size_t(samples.width) : 0);
  reader.errors.Run([&] {
    jpeg_start_decompress(&jpeg);
    while (jpeg.output_scanline < jpeg.output_height) {
      uint8_t* row = samples.Row(static_cast<int32_t>(jpeg.output_scanline));
      JSAMPROW target = inks ? inkRow.data() : row;
      jpeg_read_scanlines(&jpeg, &target, 1);
      if (inks) InksToRgb(target, row, samples.width, jpeg.saw_Adobe_marker);
    }
    jpeg_finish_decompress(&jpeg);
  });
  return samples;
}

Bytes EncodeJpeg(const Samples& samples, const EncodingChoice& choice) {
  JpegWriter writer;
  jpeg_compress_struct& jpeg = writer.jpeg;
  writer.errors.Run([&] {
    jpeg_create_compress(&jpeg);
    jpeg_mem_dest(&jpeg, &writer.memory, &writer.size);
    jpeg.image_width = static_cast<JDIMENSION>(samples.width);
    jpeg.image_height = static_cast<JDIMENSION>(samples.height);
    jpeg.input_components = samples.channels;
    jpeg.in_color_space = samples.channels == 1 ? JCS_GRAYSCALE : JCS_RGB;
    jpeg_set_defaults(&jpeg);
    jpeg_set_quality(&jpeg, choice.quality, TRUE);
    // Full resolution for the colours: these pictures are looked at closely.
    jpeg.comp_info[0].h_samp_factor = jpeg.comp_info[0].v_samp_factor = 1;
    jpeg_start_compress(&jpeg, TRUE);
    for (int32_t r = 0; r < samples.height; ++r) {
      JSAMPROW row = const_cast<uint8_t*>(samples.Row(r));
      jpeg_write_scanlines(&jpeg, &row, 1);
    }
    jpeg_finish_compress(&jpeg);
  });
  return Bytes(writer.memory, writer.memory + writer.size);
}

}  // namespace

const Codec kJpeg = {"JPEG", {"jpg", "jpeg", "jpe"}, false, false, IsJpeg, DecodeJpeg, EncodeJpeg};

}  // namespace norv
