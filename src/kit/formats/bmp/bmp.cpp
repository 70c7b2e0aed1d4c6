#include "kit/formats/bmp/bmp.h"

#include "kit/formats/bmp/header.h"

namespace norv {

const Codec kBmp = {.name = "BMP",
                    .extensions = {"bmp", "dib"},
                    .alpha = true,
                    .recognise = IsBmp,
                    .open = [](const ByteSource& source, const ReadChoice&) { return OpenBmp(source); },
                    .create = [](const ByteSink& sink, const PictureShape& shape,
                                 const EncodingChoice&) { return CreateBmp(sink, shape); }};

}  // namespace norv
