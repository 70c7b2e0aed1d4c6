#include "kit/pictures/picture_rows.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "kit/failure.h"
#include "kit/pictures/picture.h"
#include "platform/memory.h"
#include "platform/progress.h"

namespace norv {
namespace {

// Few enough that progress is seen to move.
constexpr int32_t kRowsOfProgress = 64;

// Rows a group when a picture is passed on: what one has written is still in the cache when the other reads it.
int32_t RowsOfGroup(const PictureShape& shape) {
  constexpr int64_t kGroupBytes = int64_t{1} << 20;
  return static_cast<int32_t>(
      std::clamp<int64_t>(kGroupBytes / (int64_t{4} * shape.width * shape.channels + 1), 1, std::max(shape.height, 1)));
}

}  // namespace

Picture AllRows(const PictureSource& source) {
  const PictureShape& shape = source.shape;
  if (sizeof(float) * shape.channels * shape.width * static_cast<size_t>(shape.height) > AvailableMemory())
    Fail("the picture of %d x %d pixels does not fit into memory", shape.width, shape.height);
  Picture picture(shape.width, shape.height, shape.channels, shape.bits);
  picture.metadata = shape.metadata;
  source.read(picture, 0, shape.height);
  return picture;
}

int64_t CopyRows(PictureSource from, const PictureSink& to, const char* doing) {
  PassRows(
      from, 0, from.shape.height, [&](Picture rows, int64_t) { to.write(std::move(rows)); }, doing);
  from = {};  // which may be the very file that is replaced
  return to.finish();
}

void PassRows(PictureSource& from, int64_t first, int64_t end, const std::function<void(Picture, int64_t)>& take,
              const char* doing) {
  const PictureShape shape = from.shape;
  const int32_t group = doing ? std::min(RowsOfGroup(shape), kRowsOfProgress) : RowsOfGroup(shape);
  Progress progress(doing, doing ? end - first : 0);
  for (int32_t count; first < end; first += count) {
    count = static_cast<int32_t>(std::min<int64_t>(group, end - first));
    Picture rows(shape.width, count, shape.channels, shape.bits);
    from.read(rows, 0, count);
    take(std::move(rows), first);
    progress.Advance(count);
  }
}

PictureSource HeldPicture(Picture picture) {
  struct Held {
    Picture picture;
    int32_t next = 0;
  };
  const auto held = std::make_shared<Held>(Held{std::move(picture)});
  return {held->picture.Shape(), [held](Picture& rows, int32_t at, int32_t count) {
            CopyPart(held->picture, held->next, count, rows, at);
            held->next += count;
          }};
}

}  // namespace norv
