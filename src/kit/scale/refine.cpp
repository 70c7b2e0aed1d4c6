#include "kit/scale/refine.h"

#include <algorithm>
#include <deque>
#include <utility>
#include <vector>

#include "kit/pictures/luminance.h"
#include "kit/pictures/picture.h"
#include "kit/scale/premultiplied.h"
#include "platform/memory.h"
#include "platform/progress.h"
#include "platform/team.h"
#include "raster/bands.h"
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
int32_t RefinedRowsOf(int32_t width) {
  constexpr int32_t kStripPixels = 1 << 21;
  return std::clamp(kStripPixels / std::max(width, 1), kRefinedRows / 3, kRefinedRows);
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
        stripRows_(std::max(RefinedRowsOf(large_.shape.width) / parameters.factor, 1)),
        margin_(std::max(kRefineMargin / parameters.factor, 1)),
        progress_("Refining", PlaneWork(parameters) * ((height_ + stripRows_ - 1) / stripRows_)) {
    const int32_t rows = std::min(height_, stripRows_ + 2 * margin_), width = large_.shape.width / Factor();
    CheckRestoration(parameters_, width, rows, kDefaultFormat);
    const int64_t bytes = RestorationMemory(parameters_, width, rows, kLuminance);
    DemandMemory(bytes);
    const int64_t strips = static_cast<int64_t>(AvailableMemory() / 2) / bytes;
    threads_ = static_cast<int32_t>(std::clamp<int64_t>(threads, 1, std::max<int64_t>(strips, 1)));
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

  // Lets go of rows that nobody asks for any more, and reads up to the end of the next strips' windows.
  void MoveWindow(const Strip& all) {
    const int32_t first = all.windowFirst * Factor(), end = (all.windowFirst + all.windowRows) * Factor();
    const PictureShape& shape = large_.shape;
    Picture window(shape.width, end - first, shape.channels, shape.bits);
    const int32_t known = heldEnd_ - first;
    if (known > 0) CopyPart(held_, first - heldFirst_, known, window, 0);
    Picture fresh(shape.width, end - heldEnd_, shape.channels, shape.bits);
    large_.read(fresh, 0, fresh.Height());
    Premultiply(fresh);
    CopyPart(fresh, 0, fresh.Height(), window, known);
    held_ = std::move(window);
    heldFirst_ = first;
    heldEnd_ = end;
    // What was refined already stands in the window as its margin; strips start from what came in.
    matrix luminance = LuminanceOf(held_);
    for (int32_t r = 0; r < kept_.n; ++r) std::copy_n(kept_.z[r], luminance.m, luminance.z[r]);
    start_.swap(luminance);
  }

  void RefineNext() {
    const int32_t first = ready_ / Factor();
    const Strip all = PlanStrip(height_, first, threads_ * stripRows_, margin_);
    MoveWindow(all);
    passed_->ForgetBefore(all.windowFirst);
    matrix change(held_.Width(), all.rows * Factor());
    const int32_t strips = (all.rows + stripRows_ - 1) / stripRows_;
    ParallelFor(threads_, strips, [&](int64_t i) {
      RefineStrip(PlanStrip(height_, first + static_cast<int32_t>(i) * stripRows_, stripRows_, margin_), all, change);
    });
    KeepMargin(all);
    for (int32_t k = 0; k < (held_.IsGrey() ? 1 : 3); ++k) {
      float* plane = held_.plane[k].z[(all.first - all.windowFirst) * Factor()];
      for (int64_t i = 0; i < change.mn; ++i) plane[i] += change.x[i];
    }
    ready_ = (all.first + all.rows) * Factor();
  }

  void RefineStrip(const Strip& strip, const Strip& all, matrix& change) {
    const int32_t f = Factor();
    matrix working(start_.m, strip.windowRows * f);
    std::copy_n(start_.z[(strip.windowFirst - all.windowFirst) * f], working.mn, working.x);
    restore(working, BitMask(), passed_->Rows(strip.windowFirst, strip.windowRows), parameters_, &progress_);
    const float* refined = working.z[(strip.first - strip.windowFirst) * f];
    const float* before = start_.z[(strip.first - all.windowFirst) * f];
    float* target = change.z[(strip.first - all.first) * f];
    for (int64_t i = 0; i < int64_t{strip.rows} * f * start_.m; ++i) target[i] = refined[i] - before[i];
  }

  // The luminance as it came in of the rows that the next window begins with.
  void KeepMargin(const Strip& all) {
    const int32_t end = all.first + all.rows, first = std::max(0, end - margin_);
    matrix kept(start_.m, (end - first) * Factor());
    std::copy_n(start_.z[(first - all.windowFirst) * Factor()], kept.mn, kept.x);
    kept_.swap(kept);
  }

  PictureSource large_;
  std::shared_ptr<PassedLuminance> passed_;
  const RestoreParameters parameters_;
  const int32_t height_, stripRows_, margin_;  // of the small picture
  int32_t threads_ = 1;
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
  return {shape, [small = std::move(small), passed](Picture& rows, int32_t at, int32_t count) {
            small.read(rows, at, count);
            passed->Take(RowsOf(rows, at, count));
          }};
}

PictureSource RefinedRows(PictureSource large, std::shared_ptr<PassedLuminance> passed,
                          const RestoreParameters& parameters, int32_t threads) {
  const PictureShape shape = large.shape;
  const auto refiner = std::make_shared<Refiner>(std::move(large), std::move(passed), parameters, threads);
  return {shape, [refiner](Picture& rows, int32_t at, int32_t count) { refiner->Read(rows, at, count); }};
}

}  // namespace norv
