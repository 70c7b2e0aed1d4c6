#include "kit/pictures/strips.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "kit/pictures/picture.h"
#include "platform/threads/crew.h"

namespace norv {
namespace {

Picture RoomFor(const PictureShape& shape, int32_t rows) {
  return Picture(shape.width, rows, shape.channels, shape.bits);
}

// Looks at a source through windows that move down it and may overlap or leave rows out.
class PictureWindow {
 public:
  explicit PictureWindow(PictureSource from) : from_(std::move(from)), end_(from_.shape.height) {}

  const PictureShape& Shape() const { return from_.shape; }

  // A copy of the rows; `after` are those of the next window, of which what is here already is kept.
  Picture Show(RowRange which, RowRange after) {
    SkipTo(which.first);
    Picture rows = RoomFor(from_.shape, which.rows);
    const int32_t held = std::min(which.End(), next_) - which.first;
    if (held > 0) CopyPart(kept_, which.first - keptFrom_, held, rows, 0);
    if (which.rows > held) from_.read(rows, held, which.rows - held);
    next_ = std::max(next_, which.End());
    Keep(rows, which, after);
    return rows;
  }

  const PictureSource& From() const { return from_; }
  // Windows show these rows alone, of which some may have been shown at last.
  void Only(RowRange rows) {
    next_ = std::clamp(next_, rows.first, rows.End());
    end_ = rows.End();
    part_ = true;
    if (next_ < end_) from_.only(next_, end_);
  }

  // Reads what is left, so that damage there does not go unnoticed, and closes the source.
  void Close() {
    SkipTo(end_);
    if (!part_) from_ = {};
  }

 private:
  void Keep(const Picture& rows, RowRange which, RowRange after) {
    const int32_t first = std::clamp(after.first, which.first, which.End());
    kept_ = RoomFor(from_.shape, which.End() - first);
    keptFrom_ = first;
    CopyPart(rows, first - which.first, which.End() - first, kept_, 0);
  }
  void SkipTo(int32_t row) {
    if (row <= next_) return;
    Picture passed = RoomFor(from_.shape, 1);
    for (; next_ < row; ++next_) from_.read(passed, 0, 1);
  }

  PictureSource from_;
  Picture kept_;
  int32_t keptFrom_ = 0, next_ = 0;  // the row of the source that is read next
  int32_t end_;                      // behind the last one
  bool part_ = false;
};

// Rows of a strip: with what it is made of it is of moderate size, so that what is done to it happens in the cache and
// a few for every thread are little memory; the rows that neighbours share are still few beside it.
int32_t RowsOfStrip(const PictureShape& from, const PictureShape& made) {
  constexpr int64_t kStripPixels = int64_t{1} << 18;
  const int64_t source = int64_t{from.width} * from.height / std::max(made.height, 1);  // for a row of the strip
  const int64_t rows = kStripPixels / std::max<int64_t>({source, made.width, 1});
  return static_cast<int32_t>(std::clamp<int64_t>(rows, kStripUnit, 256) / kStripUnit * kStripUnit);
}

class StripMaker {
 public:
  StripMaker(PictureSource from, const PictureShape& shape, StripWork work, int32_t threads)
      : shape_(shape),
        stripRows_(work.rows > 0 ? work.rows : RowsOfStrip(from.shape, shape)),
        work_(std::make_shared<StripWork>(std::move(work))),
        window_(std::move(from)),
        ahead_(threads),
        end_(shape.height) {}

  const PictureSource& From() const { return window_.From(); }
  // Strips begin and end where they might have without it.
  void Only(int32_t first, int32_t end) {
    strip_ = Picture();
    taken_ = 0;
    next_ = first / kStripStep * kStripStep;
    passed_ = first - next_;
    end_ = std::min((end + kStripStep - 1) / kStripStep * kStripStep, shape_.height);
    if (first < end) window_.Only(work_->needs({next_, end_ - next_}));
  }

  void Read(Picture& rows, int32_t at, int32_t count) {
    while (count > 0) {
      if (taken_ == strip_.Height()) Advance();
      const int32_t part = std::min(count, strip_.Height() - taken_);
      CopyPart(strip_, taken_, part, rows, at);
      taken_ += part;
      at += part;
      count -= part;
    }
  }

 private:
  RowRange StripFrom(int32_t first) const { return {first, std::min(stripRows_, end_ - first)}; }

  void Advance() {
    strip_ = Picture();  // before the next one is there
    while (next_ < end_ && !ahead_.Full()) BeginStrip();
    strip_ = ahead_.Next();
    taken_ = std::exchange(passed_, 0);
  }

  void BeginStrip() {
    const RowRange made = StripFrom(next_), which = work_->needs(made);
    next_ = made.End();
    const bool last = next_ == end_;
    const auto held =
        std::make_shared<Picture>(window_.Show(which, last ? RowRange{} : work_->needs(StripFrom(next_))));
    if (last) window_.Close();
    const auto make = work_->prepare ? work_->prepare(made) : work_->make;
    ahead_.Begin([make, held, which, made] { return make(std::move(*held), which, made); });
  }

  const PictureShape shape_;
  const int32_t stripRows_;
  const std::shared_ptr<const StripWork> work_;
  PictureWindow window_;
  Ahead<Picture> ahead_;
  Picture strip_;
  int32_t end_;                   // behind the last row that is made
  int32_t passed_ = 0;            // rows of the first strip that nobody asks for
  int32_t taken_ = 0, next_ = 0;  // rows of strip_ handed out; the first row of which no strip has begun
};

}  // namespace

PictureSource InStrips(PictureSource from, const PictureShape& shape, StripWork work, int32_t threads) {
  const auto maker = std::make_shared<StripMaker>(std::move(from), shape, std::move(work), threads);
  PictureSource made{shape, [maker](Picture& rows, int32_t at, int32_t count) { maker->Read(rows, at, count); }};
  if (maker->From().only) made.only = [maker](int32_t first, int32_t end) { maker->Only(first, end); };
  made.joint = maker->From().joint;
  made.jointBelow = made.joint != nullptr;
  return made;
}

PictureSource ChangedRows(PictureSource from, const PictureShape& shape, std::function<Picture(Picture)> change,
                          int32_t threads) {
  const auto same = [](RowRange made) { return made; };
  const auto make = [change = std::move(change)](Picture held, RowRange, RowRange) { return change(std::move(held)); };
  return InStrips(std::move(from), shape, {same, make}, threads);
}

}  // namespace norv
