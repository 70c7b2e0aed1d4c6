#include "kit/work/row_share.h"

#include <algorithm>
#include <cstring>
#include <utility>
#include <vector>

#include "kit/pictures/image_file.h"
#include "kit/pictures/picture.h"
#include "kit/pictures/strips.h"
#include "kit/ranks/ranks.h"
#include "kit/ranks/wire.h"
#include "platform/team.h"

namespace norv {

template <typename Wire>
void Transfer(Wire& wire, Finiteness& seen) {
  wire(seen);
}

namespace {

// Where the others write to.
struct Target {
  std::string path = {}, temporary = {};
};

template <typename Wire>
void Transfer(Wire& wire, Target& target) {
  wire(target.path);
  wire(target.temporary);
}

// Cut where strips begin, so that none is made twice.
Range PartOf(const PictureShape& shape, int32_t rank) {
  const Range units = StaticPart((shape.height + kStripUnit - 1) / kStripUnit, rank, World().Count());
  return {units.begin * kStripUnit, std::min<int64_t>(units.end * kStripUnit, shape.height)};
}

std::string BytesOf(const Picture& rows) {
  std::string bytes;
  for (int32_t k = 0; k < rows.channels; ++k)
    bytes.append(reinterpret_cast<const char*>(rows.plane[k].x), sizeof(float) * static_cast<size_t>(rows.plane[k].mn));
  return bytes;
}

Picture RowsOfBytes(const PictureShape& shape, const std::string& bytes) {
  const size_t row = sizeof(float) * static_cast<size_t>(shape.width) * static_cast<size_t>(shape.channels);
  Picture rows(shape.width, static_cast<int32_t>(bytes.size() / row), shape.channels, shape.bits);
  const char* from = bytes.data();
  for (int32_t k = 0; k < rows.channels; ++k) {
    const size_t size = sizeof(float) * static_cast<size_t>(rows.plane[k].mn);
    std::memcpy(rows.plane[k].x, from, size);
    from += size;
  }
  return rows;
}

// The rows of other ranks that have no places of their own, from the top.
void TakeRows(const PictureShape& shape, const PictureSink& to) {
  for (int32_t rank = 1; rank < World().Count(); ++rank) {
    const Range part = PartOf(shape, rank);
    for (int64_t taken = part.begin; taken < part.end;) {
      Picture rows = RowsOfBytes(shape, World().Receive(rank, Topic::rows).text);
      taken += rows.Height();
      to.write(std::move(rows));
    }
  }
}

void PlaceRows(PictureSource& made, const Range& part, const PlaceOfRows& place, const std::string& path) {
  const std::unique_ptr<PlacedFile> file = World().OpenPlaced(path);
  Finiteness seen;
  PassRows(made, part.begin, part.end, [&](Picture rows, int64_t first) {
    World().RequireShare();
    seen.Count(rows);
    place(std::move(rows), first,
          [&](int64_t position, const void* bytes, size_t size) { file->Write(position, bytes, size); });
  });
  file->Finish();
  World().Send(0, Topic::rows, Packed(seen));
}

// All of them are made first: the one that takes them has rows of its own to make.
void SendRows(PictureSource& made, const Range& part) {
  std::vector<std::string> parts;
  PassRows(made, part.begin, part.end, [&](const Picture& rows, int64_t) {
    World().RequireShare();
    parts.push_back(BytesOf(rows));
  });
  for (std::string& rows : parts) World().Send(0, Topic::rows, std::exchange(rows, {}));
}

}  // namespace

bool MayShareRows(const PictureSource& made) { return World().AreSeveral() && made.only != nullptr; }

void ShareRows(PictureSource made, const PictureSink& to, const std::string& path, const std::string& temporary,
               const WriteChoice& choice, Finiteness& seen, const char* doing) {
  const PictureShape shape = made.shape;
  const bool placed = !temporary.empty() && PlacesOfRows(path, shape, choice) != nullptr;
  World().CallAll();
  for (int32_t rank = 1; rank < World().Count(); ++rank)
    World().Send(rank, Topic::rows, Packed(Target{path, placed ? temporary : ""}));
  const Range own = PartOf(shape, 0);
  made.only(static_cast<int32_t>(own.begin), static_cast<int32_t>(own.end));
  PassRows(
      made, own.begin, own.end, [&](Picture rows, int64_t) { to.write(std::move(rows)); }, doing);
  made = {};
  if (!placed) TakeRows(shape, to);
  for (int32_t rank = 1; placed && rank < World().Count(); ++rank)
    seen.Add(Unpacked<Finiteness>(World().Receive(rank, Topic::rows).text));
  to.finish();
}

void HelpWithRows(PictureSource made, const WriteChoice& choice) {
  const auto target = Unpacked<Target>(World().Receive(0, Topic::rows).text);
  const Range part = PartOf(made.shape, World().Rank());
  made.only(static_cast<int32_t>(part.begin), static_cast<int32_t>(part.end));
  if (target.temporary.empty())
    SendRows(made, part);
  else
    PlaceRows(made, part, PlacesOfRows(target.path, made.shape, choice), target.temporary);
  World().EndShare();
}

}  // namespace norv
