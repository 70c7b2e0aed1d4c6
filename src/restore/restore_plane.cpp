#include "restore/restore_plane.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <vector>

#include "restore/edge_mask.h"
#include "restore/least_squares.h"
#include "restore/terms/recipes.h"

namespace norv {
namespace {

class PlaneRestorer {
 public:
  PlaneRestorer(matrix& working, const BitMask& mask, const matrix& observed, const RestoreParameters& parameters,
                Progress* progress, StandingTeam& team, Peers& peers)
      : working_(working),
        observed_(observed),
        parameters_(parameters),
        recipe_(RecipeOf(parameters.type)),
        progress_(progress),
        team_(team),
        peers_(peers),
        cut_(observed.n, parameters.factor, team.Threads(), peers.Number(), peers.Count()),
        mask_(parameters.type == kMarkingType ? DilateMask(mask, team) : mask),
        pixels_(mask_, parameters.factor * observed.n, team) {}

  void Run() {
    Iterate(recipe_.first, true);
    if (recipe_.secondPass && parameters_.emphasis > 0 && parameters_.iterations != 0) {
      EmphasiseDeviations(working_, observed_, mask_, parameters_.factor, parameters_.emphasis, team_, cut_.OwnRows());
      Iterate(recipe_.first, recipe_.followField);
    }
    if (!recipe_.tail.terms.empty()) terms_.clear();
    Iterate(recipe_.tail, true);
  }

 private:
  // What the first update step needs.
  void Prepare() {
    pair_.emplace(UpdateFilter(parameters_), parameters_.factor, observed_.m, observed_.n);
    scratch_.emplace(*pair_, cut_, peers_);
    if (working_.mn > 0) return;
    working_.dim(scratch_->direction.m, scratch_->direction.n);
    working_.fill(0);
  }

  void Iterate(const Stage& stage, bool followField) {
    const int64_t iterations = int64_t{parameters_.iterations} * stage.iterationFactor;
    if (stage.terms.empty() || iterations <= 0) return;
    if (!pair_) Prepare();
    if (terms_.empty()) MakeTerms(stage);
    for (int64_t i = 0; i < iterations; ++i) {
      ExchangeRows(peers_, working_, seen_);
      if (needsField_ && followField) FindOrientation(field_, working_, Smoothing(), team_, cut_.WeighedRows());
      for (const auto& term : terms_) term->Weigh(working_, team_);
      if (!Update(parameters_.steps / stage.stepDivisor)) return;
      if (progress_) progress_->Advance();
    }
  }

  // Of the orientation field, in pixels of the enlarged plane.
  double Smoothing() const { return static_cast<double>(parameters_.factor) * parameters_.orientationScale; }

  bool Update(int32_t steps) {
    std::vector<DifferenceTerm*> terms;
    for (const auto& term : terms_) terms.push_back(term.get());
    return StepTowardsMinimum(working_, observed_, *pair_, terms, steps, *scratch_, team_, progress_);
  }

  void MakeTerms(const Stage& stage) {
    const TermSetting setting{working_.m,
                              cut_,
                              {stage.rule, parameters_.lambda, parameters_.delta, parameters_.shapeDot},
                              {stage.rule, parameters_.lambdaCross, parameters_.deltaCross, parameters_.shapeCross},
                              field_,
                              pixels_,
                              observed_,
                              parameters_.factor,
                              team_};
    needsField_ = false;
    for (const TermRow* row : TermsOf(stage, parameters_)) {
      terms_.push_back(row->make(setting));
      needsField_ |= row->field != FieldUse::none;
    }
    seen_ = scratch_->largeRows;
    for (size_t part = 0; needsField_ && part < seen_.seen.size(); ++part) {
      const Range weighed{seen_.own[part].begin - 1, seen_.own[part].end};
      seen_.seen[part] =
          RowsTogether(seen_.seen[part], OrientationSources(weighed, Smoothing(), working_.m, working_.n));
    }
  }

  matrix& working_;
  const matrix& observed_;
  const RestoreParameters& parameters_;
  const Recipe& recipe_;
  Progress* progress_;
  StandingTeam& team_;
  Peers& peers_;
  const RowRuns cut_;
  BitMask mask_;  // the dilated one for the masked type, else the image's
  PixelList pixels_;
  std::optional<FilterPair> pair_;
  std::optional<SolverScratch> scratch_;
  RowsOfPeers seen_;  // of the working plane, in an iteration
  OrientationField field_;
  std::vector<std::unique_ptr<DifferenceTerm>> terms_;
  bool needsField_ = false;
};

}  // namespace

void restore(matrix& working, const BitMask& mask, const matrix& observed, const RestoreParameters& parameters,
             Progress* progress, StandingTeam& team, Peers& peers) {
  if (observed.mn > 0) PlaneRestorer(working, mask, observed, parameters, progress, team, peers).Run();
}

// A mask is dilated upwards by one row, having grown by half a small pixel from marks that look at one row beyond.
int32_t MarkingReach(const RestoreParameters& parameters) {
  return parameters.type == kMarkingType ? parameters.factor / 2 + 2 : 0;
}

Range ObservedRows(const RestoreParameters& parameters, const RowRuns& cut, Range blocks) {
  constexpr int64_t kOfEnlargement = 6;  // half of the nine taps, and one for what they begin with
  int64_t reach = kOfEnlargement + MarkingReach(parameters) / parameters.factor + 1;
  if (HasUpdates(parameters)) {
    matrix taps;
    BuildTaps(taps, parameters.factor, UpdateFilter(parameters));
    reach = std::max<int64_t>(reach, taps.mn / parameters.factor + 2);
  }
  const Range own = cut.SmallRows(blocks);
  return RowsWithin({own.begin - reach, own.end + reach}, cut.SmallRows({0, cut.Blocks()}).end);
}

FilterChoice UpdateFilter(const RestoreParameters& parameters) {
  const auto filter = FilterOfKernelCode(parameters.kernelCode);
  if (!filter) throw "there is no kernel with this code";
  return *filter;
}

int64_t PlaneWork(const RestoreParameters& parameters) {
  const Recipe& recipe = RecipeOf(parameters.type);
  // In double precision, for both numbers may be as large as they like.
  const auto work = [&](const Stage& stage) {
    const double iterations = static_cast<double>(std::max(parameters.iterations, 0)) * stage.iterationFactor;
    return stage.terms.empty() ? 0.0 : iterations * (1.0 + std::max(parameters.steps / stage.stepDivisor, 0));
  };
  const int passes = recipe.secondPass && parameters.emphasis > 0 ? 2 : 1;
  return static_cast<int64_t>(std::min(passes * work(recipe.first) + work(recipe.tail), 1e12));
}

void EmphasiseDeviations(matrix& working, const matrix& observed, const BitMask& mask, int32_t f, float amount,
                         StandingTeam& team, Range rows) {
  const bool masked = !mask.Empty() && mask.width == working.m && mask.height == working.n;
  const Range which = RowsWithin(rows, working.n);
  ForRows(team, working.m, which.end - which.begin, [&](int64_t begin, int64_t end) {
    for (int64_t r = which.begin + begin; r < which.begin + end; ++r)
      for (int32_t c = 0; c < working.m; ++c) {
        if (masked && !mask.Get(static_cast<int32_t>(r), c)) continue;
        float& x = working.z[r][c];
        x += (x - observed.z[r / f][c / f]) * amount;
      }
  });
}

}  // namespace norv
