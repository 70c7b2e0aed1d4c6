// The restoration of whole images: colour representation, planes, edge mask, and bands on several threads.
#pragma once

#include <cstdint>
#include <span>

#include "image/float_image.h"
#include "platform/progress.h"
#include "platform/threads/standing_team.h"
#include "restore/blocks/peers.h"
#include "restore/parameters.h"

namespace norv {

// Source rows that a band shares with each of its neighbours.
inline constexpr int32_t kRestoreMargin = 20;

// Planes that an image of this format has while it is restored, a fourth one that is kept aside not among them.
int32_t PlanesWhileWorking(const RestoreParameters& parameters, int32_t format);

// A part of an image that peers restore together, each its own rows of the result (RowRuns). What is at hand of the
// source: ObservedRows() of an image of so many rows, all of them where colours are decorrelated.
struct ImagePart {
  int32_t height;  // of the source
  Range rows;      // that are at hand
  Peers& peers;

  static ImagePart Whole(int32_t height) { return {height, {0, height}, Peers::None()}; }
  RowRuns CutFor(const RestoreParameters& parameters, int32_t threads = 1) const {
    return {height, parameters.factor, threads, peers.Number(), peers.Count()};
  }
};
// The rows that this one of the peers is to have.
Range RowsAtHand(const RestoreParameters& parameters, int32_t height, bool decorrelated, const Peers& peers);

// Throws a message (const char*) when the factor is below 1, an update step would need a filter and the kernel code has
// none, the format has no colour model, or the enlarged image would have more than 2^31 - 1 pixels.
void CheckRestoration(const RestoreParameters& parameters, int32_t width, int32_t height, int32_t format);

// Enlarges and restores the image in place. Throws as CheckRestoration, and matrix's out-of-memory message when the
// machine lacks what it will need, before anything is changed. An empty image stays as it is. progress: null, or
// advanced by RestorationWork(). team: does the work; no bit of the result depends on its size.
void RestoreImage(FloatImage& image, const RestoreParameters& parameters, Progress* progress = nullptr,
                  StandingTeam& team = StandingTeam::Alone());

// The same of a part: the image has the rows at hand, and becomes the part's own rows of the result.
void RestoreImage(FloatImage& image, const ImagePart& part, const RestoreParameters& parameters, Progress* progress,
                  StandingTeam& team);

// Planes of one size that are no colours of each other, such as grey and its alpha: every one enlarged and restored in
// place, with one mask of edges. Throws and advances the progress as RestoreImage(), by PlaneWork() for each.
void RestorePlanes(std::span<matrix> planes, const RestoreParameters& parameters, Progress* progress,
                   StandingTeam& team);
void RestorePlanes(std::span<matrix> planes, const ImagePart& part, const RestoreParameters& parameters,
                   Progress* progress, StandingTeam& team);

// The same as RestoreImage() in horizontal bands with margins, one a thread; says the thread count first. 0 threads and
// fewer work as 1, which is one band. The image's mask stays as it is, of the size of the source.
void RestoreImageThreaded(FloatImage& image, const RestoreParameters& parameters, int32_t threads);

// The same in silence, with any number of bands on `threads` threads: beside the image and the result, at most so many
// bands are in memory as there are threads. Where there are more threads than bands, teams of them work on a band.
void RestoreImageInBands(FloatImage& image, const RestoreParameters& parameters, int32_t bands, int32_t threads);

// Units of progress that the restoration of one image or band takes.
int64_t RestorationWork(const RestoreParameters& parameters, int32_t format);

}  // namespace norv
