// The chunks of a WebP's container (RFC 9649, 2.7) around its pixels, through libwebpmux.
#pragma once

#include <memory>

#include "kit/formats/bytes.h"

namespace norv {

struct Metadata;

std::shared_ptr<const Metadata> ReadWebpMetadata(const Bytes& webp);

// The file with these chunks. Null: as it is. Throws a Failure.
Bytes WithWebpMetadata(Bytes webp, const Metadata* metadata);

}  // namespace norv
