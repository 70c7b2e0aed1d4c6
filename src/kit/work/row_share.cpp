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

// What the bytes of rows begin with.
struct RowsHeader {
  int32_t width, height, channels, bits;
};

std::string BytesOf(const Picture& rows) {
  const RowsHeader header{rows.Width(), rows.Height(), rows.channels, rows.bits};
  std::string bytes(reinterpret_cast<const char*>(&header), sizeof header);
  for (int32_t k = 0; k < rows.channels; ++k)
    bytes.append(reinterpret_cast<const char*>(rows.plane[k].x), sizeof(float) * static_cast<size_t>(rows.plane[k].mn));
  return bytes;
}

Picture RowsOfBytes(const std::string& bytes) {
  RowsHeader header;
  std::memcpy(&header, bytes.data(), sizeof header);
  Picture rows(header.width, header.height, header.channels, header.bits);
  const char* from = bytes.data() + sizeof header;
  for (int32_t k = 0; k < rows.channels; ++k) {
    const size_t size = sizeof(float) * static_cast<size_t>(rows.plane[k].mn);
    std::memcpy(rows.plane[k].x, from, size);
    from += size;
  }
  return rows;
}

Picture RowsFrom(int32_t rank) { return RowsOfBytes(World().Receive(rank, Topic::rows).text); }

// The rows of other ranks that have no places of their own, from the top.
void TakeRows(const PictureShape& shape, const PictureSink& to) {
  for (int32_t rank = 1; rank < World().Count(); ++rank) {
    const Range part = PartOf(shape, rank);
    for (int64_t taken = part.begin; taken < part.end;) {
      Picture rows = RowsFrom(rank);
      taken += rows.Height();
      to.write(std::move(rows));
    }
  }
}

// Writes rows to their places and counts their values.
class RowPlacer {
 public:
  RowPlacer(const PlaceOfRows& place, const std::string& path) : place_(place), file_(World().OpenPlaced(path)) {}

  void Put(Picture rows, int64_t first) {
    World().RequireShare();
    seen_.Count(rows);
    place_(std::move(rows), first,
           [&](int64_t position, const void* bytes, size_t size) { file_->Write(position, bytes, size); });
  }
  // Of all that was put, which is on the disk.
  Finiteness Finish() {
    file_->Finish();
    return seen_;
  }

 private:
  const PlaceOfRows place_;
  const std::unique_ptr<PlacedFile> file_;
  Finiteness seen_;
};

// All of them are made first: the one that takes them has rows of its own to make.
void SendRows(PictureSource& made, const Range& part) {
  std::vector<std::string> parts;
  PassRows(made, part.begin, part.end, [&](const Picture& rows, int64_t) {
    World().RequireShare();
    parts.push_back(BytesOf(rows));
  });
  for (std::string& rows : parts) World().Send(0, Topic::rows, std::exchange(rows, {}));
}

// This rank's pieces of what all make together.
void MakePieces(JointRows<Picture>& joint, const std::function<void(Picture rows, int64_t first)>& take) {
  for (const auto& piece : joint.Pieces()) {
    if (piece.who != World().Rank()) continue;
    Picture rows = joint.Next();
    if (piece.first < piece.end) take(std::move(rows), piece.first);
  }
  World().Settle(Topic::rows);
}

Finiteness PlacePieces(JointRows<Picture>& joint, const PlaceOfRows& place, const std::string& path) {
  RowPlacer placer(place, path);
  MakePieces(joint, [&](Picture rows, int64_t first) { placer.Put(std::move(rows), first); });
  return placer.Finish();
}

// The places of such a result's rows; null where it has none, or where they pass through the first rank's hands.
PlaceOfRows PlacesFor(const PictureSource& made, const std::string& path, const WriteChoice& choice) {
  return made.jointBelow ? nullptr : PlacesOfRows(path, made.shape, choice);
}

void AddOthers(Finiteness& seen) {
  for (int32_t rank = 1; rank < World().Count(); ++rank)
    seen.Add(Unpacked<Finiteness>(World().Receive(rank, Topic::rows).text));
}

// The first rank's share of what is made row by row, or together.
void ShareParts(PictureSource made, const PictureSink& to, bool placed, Finiteness& seen, const char* doing) {
  const PictureShape shape = made.shape;
  const Range own = PartOf(shape, 0);
  made.only(static_cast<int32_t>(own.begin), static_cast<int32_t>(own.end));
  PassRows(
      made, own.begin, own.end, [&](Picture rows, int64_t) { to.write(std::move(rows)); }, doing);
  made = {};
  if (!placed) TakeRows(shape, to);
  if (placed) AddOthers(seen);
  to.finish();
}

void ShareMaking(PictureSource made, const PictureSink& to, const PlaceOfRows& place, const std::string& temporary,
                 Finiteness& seen, const char* doing) {
  if (!place) {
    made.joint->ReadPieces([](const auto& piece) { return RowsFrom(piece.who); });
    CopyRows(std::move(made), to, doing);
    return;
  }
  seen.Add(PlacePieces(*made.joint, place, temporary));
  made = {};
  AddOthers(seen);
  to.finish();
}

}  // namespace

bool MayShareRows(const PictureSource& made) { return World().AreSeveral() && (made.only || made.joint); }

void ShareRows(PictureSource made, const PictureSink& to, const std::string& path, const std::string& temporary,
               const WriteChoice& choice, Finiteness& seen, const char* doing) {
  const PlaceOfRows place = temporary.empty() ? nullptr : PlacesFor(made, path, choice);
  World().CallAll();
  for (int32_t rank = 1; rank < World().Count(); ++rank)
    World().Send(rank, Topic::rows, Packed(Target{path, place ? temporary : ""}));
  if (made.only)
    ShareParts(std::move(made), to, place != nullptr, seen, doing);
  else
    ShareMaking(std::move(made), to, place, temporary, seen, doing);
}

void HelpWithRows(PictureSource made, const WriteChoice& choice) {
  const auto target = Unpacked<Target>(World().Receive(0, Topic::rows).text);
  const bool placed = !target.temporary.empty();
  const Range part = PartOf(made.shape, World().Rank());
  if (made.only) made.only(static_cast<int32_t>(part.begin), static_cast<int32_t>(part.end));
  Finiteness seen;
  if (placed && made.only) {
    RowPlacer placer(PlacesFor(made, target.path, choice), target.temporary);
    PassRows(made, part.begin, part.end, [&](Picture rows, int64_t first) { placer.Put(std::move(rows), first); });
    seen = placer.Finish();
  } else if (placed) {
    seen = PlacePieces(*made.joint, PlacesFor(made, target.path, choice), target.temporary);
  } else if (made.only) {
    SendRows(made, part);
  } else {
    MakePieces(*made.joint, [](const Picture& rows, int64_t) { World().Post(0, Topic::rows, BytesOf(rows)); });
  }
  if (placed) World().Send(0, Topic::rows, Packed(seen));
  World().EndShare();
}

}  // namespace norv
