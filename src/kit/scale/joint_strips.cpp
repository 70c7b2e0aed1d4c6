#include "kit/scale/joint_strips.h"

#include <algorithm>
#include <memory>
#include <utility>
#include <vector>

#include "kit/ranks/rank_peers.h"
#include "kit/ranks/ranks.h"

namespace norv {
namespace {

// A rank's part of a strip.
struct PartOfStrip {
  int32_t number;          // of the strip
  int32_t first, members;  // the ranks that make it
  int32_t rank;            // which of them
  Range window;            // its rows of the enlarged window
  JointRows<Picture>::Piece piece;
};

// Fewer blocks than these are hardly worth what a rank says and hears for them.
constexpr int32_t kBlocksOfRank = 4;

int32_t BlocksOf(const StripCut& cut, int32_t strip) { return RowRuns(cut.At(strip).windowRows, cut.factor).Blocks(); }

PartOfStrip PartOf(const StripCut& cut, int32_t number, Range ranks, int32_t rank, int32_t members) {
  const Strip strip = cut.At(number);
  const int32_t first = static_cast<int32_t>(ranks.begin);
  const Range window = RowRuns(strip.windowRows, cut.factor, 1, rank - first, members).OwnRows();
  // Of its rows of the window those that are the strip's.
  const int64_t above = int64_t{strip.windowFirst} * cut.factor, begin = int64_t{strip.first} * cut.factor,
                end = begin + int64_t{strip.rows} * cut.factor;
  return {number,  first,
          members, rank,
          window,  {rank, std::clamp(above + window.begin, begin, end), std::clamp(above + window.end, begin, end)}};
}

// All parts, strip after strip.
std::vector<PartOfStrip> PartsOf(const StripCut& cut, int32_t ranks) {
  std::vector<PartOfStrip> parts;
  const int32_t strips = cut.Strips(), worth = std::max(BlocksOf(cut, 0) / kBlocksOfRank, 1);
  const int32_t groups = std::clamp(ranks / worth, 1, strips);
  for (int32_t group = 0; group < groups; ++group) {
    const Range among = StaticPart(ranks, group, groups), which = StaticPart(strips, group, groups);
    for (int32_t number = static_cast<int32_t>(which.begin); number < which.end; ++number) {
      const int32_t members = static_cast<int32_t>(std::min<int64_t>(among.end - among.begin, BlocksOf(cut, number)));
      for (int32_t member = 0; member < members; ++member)
        parts.push_back(PartOf(cut, number, among, static_cast<int32_t>(among.begin) + member, members));
    }
  }
  return parts;
}

class JointStrips : public JointRows<Picture> {
 public:
  JointStrips(const StripCut& cut, MakePart make)
      : cut_(cut), make_(std::move(make)), parts_(PartsOf(cut, World().Count())) {}

  std::vector<Piece> Pieces() const override {
    std::vector<Piece> pieces;
    for (const PartOfStrip& part : parts_) pieces.push_back(part.piece);
    return pieces;
  }

  Picture Next() override {
    while (parts_[next_].rank != World().Rank()) ++next_;
    const PartOfStrip& part = parts_[next_++];
    World().RequireShare();
    RankPeers peers(part.first, part.members);
    const Strip strip = cut_.At(part.number);
    const Picture own = make_(strip, peers);
    if (part.piece.first == part.piece.end) return {};
    Picture rows(own.Width(), static_cast<int32_t>(part.piece.end - part.piece.first), own.channels, own.bits);
    const int64_t top = int64_t{strip.windowFirst} * cut_.factor + part.window.begin;
    CopyPart(own, static_cast<int32_t>(part.piece.first - top), rows.Height(), rows, 0);
    return rows;
  }

  void ReadPieces(std::function<Picture(const Piece&)> others) override { others_ = std::move(others); }
  bool ReadsPieces() const { return others_ != nullptr; }

  void Read(Picture& rows, int32_t at, int32_t count) {
    while (count > 0) {
      while (taken_ == held_.Height()) Advance();
      const int32_t part = std::min(count, held_.Height() - taken_);
      CopyPart(held_, taken_, part, rows, at);
      taken_ += part;
      at += part;
      count -= part;
    }
  }

 private:
  void Advance() {
    held_ = Picture();
    taken_ = 0;
    const Piece& piece = parts_[read_++].piece;
    if (piece.who == World().Rank())
      held_ = Next();
    else if (piece.first < piece.end)
      held_ = others_(piece);
  }

  const StripCut cut_;
  const MakePart make_;
  const std::vector<PartOfStrip> parts_;
  size_t next_ = 0;  // of the parts, to be made
  std::function<Picture(const Piece&)> others_;
  Picture held_;  // of the piece that is being read
  int32_t taken_ = 0;
  size_t read_ = 0;
};

}  // namespace

PictureSource WithJointStrips(const PictureSource& alone, const StripCut& cut, MakePart make) {
  const auto joint = std::make_shared<JointStrips>(cut, std::move(make));
  PictureSource made{alone.shape, [joint, alone](Picture& rows, int32_t at, int32_t count) {
                       joint->ReadsPieces() ? joint->Read(rows, at, count) : alone.read(rows, at, count);
                     }};
  made.joint = joint;
  return made;
}

Picture PartReader::Read(int32_t first, int32_t count) {
  const PictureShape& shape = from_.shape;
  Picture rows(shape.width, count, shape.channels, shape.bits);
  const int32_t held = std::clamp(next_ - first, 0, count);
  if (held > 0) CopyPart(kept_, kept_.Height() - (next_ - first), held, rows, 0);
  if (held < count) {
    from_.only(first + held, first + count);
    from_.read(rows, held, count - held);
    next_ = first + count;
    const int32_t kept = std::min(overlap_, count);
    kept_ = Picture(shape.width, kept, shape.channels, shape.bits);
    CopyPart(rows, count - kept, kept, kept_, 0);
  }
  return rows;
}

}  // namespace norv
