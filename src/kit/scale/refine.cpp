#include "kit/scale/refine.h"

#include <algorithm>
#include <deque>
#include <utility>
#include <vector>

#include "kit/pictures/luminance.h"
#include "kit/pictures/picture.h"
#include "kit/ranks/ranks.h"
#include "kit/scale/joint_strips.h"
#include "kit/scale/premultiplied.h"
#include "platform/progress.h"
#include "platform/threads/standing_team.h"
#include "raster/bands.h"
#include "restore/blocks/row_runs.h"
#include "restore/memory_need.h"
#include "restore/restore_image.h"
#include "restore/restore_plane.h"

namespace norv {

class PassedLuminance {
 public:
  void Take(Picture rows) {
    Premultiply(rows);
    const matrix luminance = LuminanceOf(rows);
    for (int32_t r = 0; r < luminance.n; ++r) rows_.emplace_back(luminance.z[r], luminance.z[r] + luminance.m);
  }
  // Rows that are passed over.
  void SkipTo(int32_t row) {
    if (row == first_ + static_cast<int32_t>(rows_.size())) return;
    rows_.clear();
    first_ = row;
  }
  // Rows first, first + 1, ... as a plane.
  matrix Rows(int32_t first, int32_t count) const {
    matrix plane(static_cast<int32_t>(rows_.front().size()), count);
    for (int32_t r = 0; r < count; ++r) std::copy_n(rows_[first - first_ + r].data(), plane.m, plane.z[r]);
    return plane;
  }
  void ForgetBefore(int32_t row) {
    for (; first_ < row; ++first_) rows_.pop_front();
  }

 private:
  std::deque<std::vector<float>> rows_;
  int32_t first_ = 0;  // row of the picture that rows_ begins with
};

// So many that a strip stays of moderate size, and its margins are not most of it.
int32_t RefinedRowsOf(int32_t width, int32_t height, int32_t factor) {
  const int64_t rows = kRefinedPixels / std::max(int64_t{width} * factor, int64_t{1});
  const int32_t most = std::clamp(static_cast<int32_t>(rows), 3 * kRefineMargin, kRefinedRows);
  return EvenStripRows(height, std::max(most / factor, 1));
}

namespace {

Picture RowsOf(const Picture& from, int32_t first, int32_t count) {
  Picture rows(from.Width(), count, from.channels, from.bits);
  CopyPart(from, first, count, rows, 0);
  return rows;
}

class Refiner {
 public:
  Refiner(PictureSource large, std::shared_ptr<PassedLuminance> passed, const RestoreParameters& parameters,
          int32_t threads)
      : large_(std::move(large)),
        passed_(std::move(passed)),
        parameters_(parameters),
        height_(large_.shape.height / parameters.factor),
        stripRows_(RefinedRowsOf(large_.shape.width / parameters.factor, height_, parameters.factor)),
        margin_(std::max(kRefineMargin / parameters.factor, 1)),
        team_(threads),
        progress_("Refining", PlaneWork(parameters) * ((height_ + stripRows_ - 1) / stripRows_)) {
    const int32_t rows = std::min(height_, stripRows_ + 2 * margin_), width = large_.shape.width / Factor();
    CheckRestoration(parameters_, width, rows, kDefaultFormat);
    // Several ranks hold a part of it each.
    if (!World().AreSeveral()) DemandMemory(PlanesMemory(parameters_, width, rows, 1, team_.Threads()));
  }

  StripCut Cut() const { return {height_, Factor(), stripRows_, margin_}; }

  // The part of several ranks' strip: its own rows of the result.
  Picture MakePart(PartReader& reader, const Strip& strip, Peers& peers) {
    const RowRuns cut(strip.windowRows, Factor(), 1, peers.Number(), peers.Count());
    const Range own = cut.OwnRows();
    const int32_t count = static_cast<int32_t>(own.end - own.begin), begin = static_cast<int32_t>(own.begin);
    Picture rows = reader.Read(strip.windowFirst * Factor() + begin, count);
    Premultiply(rows);
    const matrix start = LuminanceOf(rows, team_);
    DemandMemory(PlanesMemory(parameters_, start.m / Factor(), count / Factor(), 1, team_.Threads()));
    matrix refined = Spread(start, begin, strip.windowRows * Factor());
    restore(refined, BitMask(), Observed(strip, cut, peers), parameters_, &progress_, team_, peers);
    const float* restored = refined.z[begin];
    for (int32_t k = 0; k < (rows.IsGrey() ? 1 : 3); ++k)
      for (int64_t i = 0; i < start.mn; ++i) rows.plane[k].x[i] += restored[i] - start.x[i];
    Unpremultiply(rows);
    return rows;
  }

  void Read(Picture& rows, int32_t at, int32_t count) {
    while (count > 0) {
      if (given_ == ready_) RefineNext();
      const int32_t n = std::min(count, ready_ - given_);
      Picture part = RowsOf(held_, given_ - heldFirst_, n);
      Unpremultiply(part);
      CopyPart(part, 0, n, rows, at);
      given_ += n;
      at += n;
      count -= n;
    }
  }

 private:
  int32_t Factor() const { return parameters_.factor; }

  // The luminance of the strip's window as far as this part of it looks at that: what has passed here, and what has
  // passed at peers.
  matrix Observed(const Strip& strip, const RowRuns& cut, Peers& peers) const {
    const Range own = cut.OwnSmallRows();
    const int32_t begin = static_cast<int32_t>(own.begin), count = static_cast<int32_t>(own.end - own.begin);
    passed_->ForgetBefore(strip.windowFirst + begin);
    matrix observed = Spread(passed_->Rows(strip.windowFirst + begin, count), begin, strip.windowRows);
    const RowsOfPeers rows = RowsOfEach(
        cut, [&](Range blocks) { return cut.SmallRows(blocks); },
        [&](Range blocks) { return ObservedRows(parameters_, cut, blocks); });
    ExchangeRows(peers, observed, rows);
    return observed;
  }

  // Lets go of rows that nobody asks for any more, and reads up to the end of the next strip's window.
  void MoveWindow(const Strip& strip) {
    const int32_t first = strip.windowFirst * Factor(), end = (strip.windowFirst + strip.windowRows) * Factor();
    const PictureShape& shape = large_.shape;
    Picture window(shape.width, end - first, shape.channels, shape.bits);
    const int32_t known = heldEnd_ - first;
    if (known > 0) CopyPart(held_, first - heldFirst_, known, window, 0);
    held_ = Picture();  // before the next rows come
    ReadOn(window, known);
    held_ = std::move(window);
    heldFirst_ = first;
    heldEnd_ = end;
    // What was refined already stands in the window as its margin; strips start from what came in.
    matrix luminance = LuminanceOf(held_, team_);
    for (int32_t r = 0; r < kept_.n; ++r) std::copy_n(kept_.z[r], luminance.m, luminance.z[r]);
    start_.swap(luminance);
  }

  // The window's rows from `at` on. Colours behind alpha are multiplied by it some rows at a time.
  void ReadOn(Picture& window, int32_t at) {
    if (!large_.shape.HasAlpha()) return large_.read(window, at, window.Height() - at);
    constexpr int32_t kRowsAtOnce = 64;
    for (int32_t rows; at < window.Height(); at += rows) {
      rows = std::min(kRowsAtOnce, window.Height() - at);
      Picture some(window.Width(), rows, window.channels, window.bits);
      large_.read(some, 0, rows);
      Premultiply(some);
      CopyPart(some, 0, rows, window, at);
    }
  }

  void RefineNext() {
    const Strip strip = PlanStrip(height_, ready_ / Factor(), stripRows_, margin_);
    MoveWindow(strip);
    passed_->ForgetBefore(strip.windowFirst);
    matrix refined = start_;
    restore(refined, BitMask(), passed_->Rows(strip.windowFirst, strip.windowRows), parameters_, &progress_, team_);
    const int64_t above = (strip.first - strip.windowFirst) * Factor(), width = start_.m;
    ForRows(team_, start_.m, strip.rows * Factor(), [&](int64_t begin, int64_t end) {
      for (int32_t k = 0; k < (held_.IsGrey() ? 1 : 3); ++k)
        for (int64_t i = (above + begin) * width; i < (above + end) * width; ++i)
          held_.plane[k].x[i] += refined.x[i] - start_.x[i];
    });
    KeepMargin(strip);
    ready_ = (strip.first + strip.rows) * Factor();
  }

  // The luminance as it came in of the rows that the next window begins with.
  void KeepMargin(const Strip& strip) {
    const int32_t end = strip.first + strip.rows, first = std::max(0, end - margin_);
    matrix kept(start_.m, (end - first) * Factor());
    std::copy_n(start_.z[(first - strip.windowFirst) * Factor()], kept.mn, kept.x);
    kept_.swap(kept);
    start_.freemem();
  }

  PictureSource large_;
  std::shared_ptr<PassedLuminance> passed_;
  const RestoreParameters parameters_;
  const int32_t height_, stripRows_, margin_;  // of the small picture
  StandingTeam team_;
  Progress progress_;
  Picture held_;                         // the rows of the window, refined as far as ready_
  matrix start_, kept_;                  // the window's luminance as it came in; the part that the next one needs
  int32_t heldFirst_ = 0, heldEnd_ = 0;  // rows of the large picture that the window holds
  int32_t ready_ = 0, given_ = 0;        // rows that are refined, and that were handed out
};

}  // namespace

PictureSource KeepingLuminance(PictureSource small, std::shared_ptr<PassedLuminance>& passed) {
  passed = std::make_shared<PassedLuminance>();
  const PictureShape shape = small.shape;
  const auto only = small.only;
  PictureSource made{shape, [small = std::move(small), passed](Picture& rows, int32_t at, int32_t count) {
                       small.read(rows, at, count);
                       passed->Take(RowsOf(rows, at, count));
                     }};
  if (only) {
    made.only = [only, passed](int32_t first, int32_t end) {
      passed->SkipTo(first);
      only(first, end);
    };
  }
  return made;
}

PictureSource RefinedRows(PictureSource large, std::shared_ptr<PassedLuminance> passed,
                          const RestoreParameters& parameters, int32_t threads) {
  const auto refiner = std::make_shared<Refiner>(large, std::move(passed), parameters, threads);
  PictureSource made{large.shape,
                     [refiner](Picture& rows, int32_t at, int32_t count) { refiner->Read(rows, at, count); }};
  if (!large.only || !World().AreSeveral()) return made;
  const StripCut cut = refiner->Cut();
  const auto reader = std::make_shared<PartReader>(std::move(large), 2 * cut.margin * cut.factor);
  return WithJointStrips(made, cut, [refiner, reader](const Strip& strip, Peers& peers) {
    return refiner->MakePart(*reader, strip, peers);
  });
}

matrix TakePassed(PassedLuminance& passed, int32_t first, int32_t count) {
  passed.ForgetBefore(first);
  return passed.Rows(first, count);
}

}  // namespace norv
