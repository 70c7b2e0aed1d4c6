// JPEG through libjpeg. Its errors come back by longjmp, so whatever owns memory lives in a session outside the jump.
#include <algorithm>
#include <cmath>
#include <csetjmp>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <utility>
#include <vector>
// The library's header needs stdio's types first.
#include <jerror.h>
#include <jpeglib.h>

#include "kit/failure.h"
#include "kit/formats/codec.h"
#include "kit/metadata/carry.h"
#include "kit/metadata/containers.h"
#include "kit/profiles/display_converter.h"
#include "platform/memory.h"

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

constexpr size_t kPiece = size_t{1} << 16;

// The library's way to a source: a buffer that it empties and has filled again.
struct JpegSource {
  jpeg_source_mgr manager = {};  // first, so that the library's pointer is ours
  ByteSource source;
  int64_t position = 0;
  Bytes buffer = Bytes(kPiece);

  explicit JpegSource(const ByteSource& from) : source(from) {
    manager.init_source = manager.term_source = [](j_decompress_ptr) {};
    manager.resync_to_restart = jpeg_resync_to_restart;
    manager.fill_input_buffer = Fill;
    manager.skip_input_data = Skip;
  }

  static boolean Fill(j_decompress_ptr jpeg) {
    JpegSource* self = reinterpret_cast<JpegSource*>(jpeg->src);
    const size_t got = self->source.read(self->position, self->buffer.data(), kPiece);
    if (got == 0) ERREXIT(jpeg, JERR_INPUT_EOF);
    self->position += static_cast<int64_t>(got);
    self->manager.next_input_byte = self->buffer.data();
    self->manager.bytes_in_buffer = got;
    return TRUE;
  }
  static void Skip(j_decompress_ptr jpeg, long bytes) {
    JpegSource* self = reinterpret_cast<JpegSource*>(jpeg->src);
    const int64_t held = static_cast<int64_t>(self->manager.bytes_in_buffer), in = std::min<int64_t>(bytes, held);
    if (bytes <= 0) return;
    self->manager.next_input_byte += in;
    self->manager.bytes_in_buffer -= static_cast<size_t>(in);
    self->position += bytes - in;
  }
};

struct JpegSink {
  jpeg_destination_mgr manager = {};  // first, as above
  ByteSink sink;
  int64_t position = 0;
  Bytes buffer = Bytes(kPiece);

  explicit JpegSink(const ByteSink& to) : sink(to) {
    manager.init_destination = [](j_compress_ptr jpeg) { reinterpret_cast<JpegSink*>(jpeg->dest)->Restart(); };
    manager.empty_output_buffer = [](j_compress_ptr jpeg) {
      reinterpret_cast<JpegSink*>(jpeg->dest)->Send(jpeg, kPiece);
      return boolean{TRUE};
    };
    manager.term_destination = [](j_compress_ptr jpeg) {
      JpegSink* self = reinterpret_cast<JpegSink*>(jpeg->dest);
      self->Send(jpeg, kPiece - self->manager.free_in_buffer);
    };
  }
  void Restart() {
    manager.next_output_byte = buffer.data();
    manager.free_in_buffer = kPiece;
  }
  void Send(j_compress_ptr jpeg, size_t size) {
    if (!sink(position, buffer.data(), size)) ERREXIT(jpeg, JERR_FILE_WRITE);
    position += static_cast<int64_t>(size);
    Restart();
  }
};

struct JpegInput {
  JpegErrors errors;
  JpegSource source;
  jpeg_progress_mgr progress = {};
  jpeg_decompress_struct jpeg = {};

  explicit JpegInput(const ByteSource& from) : source(from) {
    jpeg.err = &errors.manager;
    progress.progress_monitor = [](j_common_ptr common) {
      if (reinterpret_cast<j_decompress_ptr>(common)->input_scan_number > kMostScans)
        ERREXIT(common, JERR_BAD_PROGRESSION);
    };
  }
  ~JpegInput() { jpeg_destroy_decompress(&jpeg); }
  JpegInput(const JpegInput&) = delete;
  JpegInput& operator=(const JpegInput&) = delete;
};

struct JpegOutput {
  JpegErrors errors;
  JpegSink sink;
  jpeg_compress_struct jpeg = {};

  explicit JpegOutput(const ByteSink& to) : sink(to) { jpeg.err = &errors.manager; }
  ~JpegOutput() { jpeg_destroy_compress(&jpeg); }
  JpegOutput(const JpegOutput&) = delete;
  JpegOutput& operator=(const JpegOutput&) = delete;
};

bool IsJpeg(std::span<const uint8_t> start) {
  return start.size() >= 3 && start[0] == 0xFF && start[1] == 0xD8 && start[2] == 0xFF;
}

// Of pictures whose pixels come in several passes the library holds all coefficients.
size_t BytesHeld(jpeg_decompress_struct& jpeg) {
  size_t bytes = 0;
  for (int c = 0; c < jpeg.num_components && jpeg_has_multiple_scans(&jpeg); ++c)
    bytes += size_t{jpeg.comp_info[c].width_in_blocks} * jpeg.comp_info[c].height_in_blocks * sizeof(JBLOCK);
  return bytes;
}

// The quality, 1 to 100, whose luminance table (JPEG standard, table K.1, scaled as everybody does) is nearest to the
// file's; 0 without a table.
int32_t QualityOf(const jpeg_decompress_struct& jpeg) {
  constexpr int kBase[DCTSIZE2] = {16, 11, 10, 16, 24,  40,  51,  61,  12, 12, 14, 19, 26,  58,  60,  55,
                                   14, 13, 16, 24, 40,  57,  69,  56,  14, 17, 22, 29, 51,  87,  80,  62,
                                   18, 22, 37, 56, 68,  109, 103, 77,  24, 35, 55, 64, 81,  104, 113, 92,
                                   49, 64, 78, 87, 103, 121, 120, 101, 72, 92, 95, 98, 112, 100, 103, 99};
  const JQUANT_TBL* table = jpeg.quant_tbl_ptrs[jpeg.comp_info[0].quant_tbl_no & 3];
  if (!table) return 0;
  double percent = 0;
  for (int i = 0; i < DCTSIZE2; ++i) percent += 100.0 * table->quantval[i] / kBase[i] / DCTSIZE2;
  const double quality = percent <= 100 ? 100 - percent / 2 : 5000 / percent;
  return std::clamp(static_cast<int32_t>(std::lround(quality)), 1, 100);
}

class JpegReader {
 public:
  explicit JpegReader(const ByteSource& source) : in_(source) {
    jpeg_decompress_struct& jpeg = in_.jpeg;
    in_.errors.Run([&] {
      jpeg_create_decompress(&jpeg);
      jpeg.progress = &in_.progress;
      jpeg.src = &in_.source.manager;
      jpeg_read_header(&jpeg, TRUE);
      const bool grey = jpeg.jpeg_color_space == JCS_GRAYSCALE, inks = jpeg.num_components == 4;
      jpeg.out_color_space = grey ? JCS_GRAYSCALE : inks ? JCS_CMYK : JCS_RGB;
      jpeg.dct_method = JDCT_ISLOW;
    });
    RequirePossible(jpeg.image_width, jpeg.image_height);
    RequireLikely(int64_t{jpeg.image_width} * jpeg.image_height * jpeg.num_components, source.size);
    shape = {static_cast<int32_t>(jpeg.image_width), static_cast<int32_t>(jpeg.image_height),
             jpeg.out_color_space == JCS_GRAYSCALE ? 1 : 3};
    shape.jpegQuality = QualityOf(jpeg);
    Metadata metadata = *ReadJpegMetadata(source);
    shape.turn = TurnOfOrientationTag(metadata.orientation);
    if (jpeg.out_color_space == JCS_CMYK) {
      inkRow_.resize(4 * size_t(shape.width));
      // Files with an Adobe marker hold the inks inverted: 255 is none.
      const DevicePixels inks = {.inverted = jpeg.saw_Adobe_marker != 0};
      converter_ = std::make_unique<DisplayConverter>(inks, std::exchange(metadata.icc, {}));
    }
    shape.metadata = std::make_shared<const Metadata>(std::move(metadata));
    if (BytesHeld(jpeg) > AvailableMemory()) Fail("JPEG: out of memory");
    in_.errors.Run([&] { jpeg_start_decompress(&jpeg); });
  }

  void ReadRow(uint8_t* row) {
    jpeg_decompress_struct& jpeg = in_.jpeg;
    in_.errors.Run([&] {
      JSAMPROW target = converter_ ? inkRow_.data() : row;
      jpeg_read_scanlines(&jpeg, &target, 1);
      if (jpeg.output_scanline == jpeg.output_height) jpeg_finish_decompress(&jpeg);
    });
    if (converter_) converter_->ConvertRow(inkRow_.data(), row, shape.width);
  }

  PictureShape shape;

 private:
  JpegInput in_;
  std::unique_ptr<DisplayConverter> converter_;  // of four inks
  Bytes inkRow_;
};

class JpegWriter {
 public:
  JpegWriter(const ByteSink& sink, const PictureShape& shape, int32_t quality) : out_(sink) {
    jpeg_compress_struct& jpeg = out_.jpeg;
    out_.errors.Run([&] {
      jpeg_create_compress(&jpeg);
      jpeg.dest = &out_.sink.manager;
      jpeg.image_width = static_cast<JDIMENSION>(shape.width);
      jpeg.image_height = static_cast<JDIMENSION>(shape.height);
      jpeg.input_components = shape.channels;
      jpeg.in_color_space = shape.channels == 1 ? JCS_GRAYSCALE : JCS_RGB;
      jpeg_set_defaults(&jpeg);
      jpeg_set_quality(&jpeg, quality, TRUE);
      // Full resolution for the colours: these pictures are looked at closely.
      jpeg.comp_info[0].h_samp_factor = jpeg.comp_info[0].v_samp_factor = 1;
      if (shape.metadata) SetDensity(JpegDensityOf(*shape.metadata));
      jpeg_start_compress(&jpeg, TRUE);
    });
    if (shape.metadata) WriteSegments(*shape.metadata);
  }
  void WriteRow(const uint8_t* row) {
    out_.errors.Run([&] {
      JSAMPROW source = const_cast<uint8_t*>(row);  // which the library leaves alone
      jpeg_write_scanlines(&out_.jpeg, &source, 1);
    });
  }
  void Finish() {
    out_.errors.Run([&] { jpeg_finish_compress(&out_.jpeg); });
  }

 private:
  void SetDensity(const JpegDensity& density) {
    out_.jpeg.density_unit = density.unit;
    out_.jpeg.X_density = density.x;
    out_.jpeg.Y_density = density.y;
  }
  void WriteSegments(const Metadata& metadata) {
    const std::vector<JpegSegment> segments = JpegSegments(metadata);
    out_.errors.Run([&] {
      for (const JpegSegment& segment : segments)
        jpeg_write_marker(&out_.jpeg, segment.marker, segment.bytes.data(),
                          static_cast<unsigned>(segment.bytes.size()));
    });
  }

  JpegOutput out_;
};

SampleSource OpenJpeg(const ByteSource& source, const ReadChoice&) {
  return RowByRow(std::make_shared<JpegReader>(source));
}

SampleSink CreateJpeg(const ByteSink& sink, const PictureShape& shape, const EncodingChoice& choice) {
  return ToRowByRow(std::make_shared<JpegWriter>(sink, shape, choice.Quality()));
}

}  // namespace

const Codec kJpeg = {.name = "JPEG",
                     .extensions = {"jpg", "jpeg", "jpe"},
                     .loss = Loss::always,
                     .mostSide = JPEG_MAX_DIMENSION,
                     .carries = kCarriesIcc | kCarriesExif | kCarriesXmp | kCarriesXmpParts | kCarriesIptc |
                                kCarriesText | kCarriesResolution,
                     .recognise = IsJpeg,
                     .open = OpenJpeg,
                     .create = CreateJpeg};

}  // namespace norv
