#include "restore/terms/recipes.h"

#include <algorithm>

#include "restore/terms/reference_plane.h"

namespace norv {
namespace {

using Made = std::unique_ptr<DifferenceTerm>;
using Setting = const TermSetting&;

template <typename Term>
constexpr TermRow Row(TermKind kind, FieldUse field, bool onlyIfAsked, Made (*make)(Setting)) {
  return {kind, make, Term::kPlanes, field, onlyIfAsked};
}

Made MakeCross(Setting s) { return std::make_unique<CrossTerm>(s.w, s.cut, s.cross, s.field); }

// By ascending kind.
constexpr TermRow kTerms[] = {
    Row<IsotropicTerm>(TermKind::isotropic, FieldUse::none, false,
                       [](Setting s) -> Made { return std::make_unique<IsotropicTerm>(s.w, s.cut, s.plain); }),
    Row<CrossTerm>(TermKind::cross, FieldUse::reads, false, MakeCross),
    Row<CrossTerm>(TermKind::crossIfAsked, FieldUse::reads, true, MakeCross),
    Row<ScaledCrossTerm>(
        TermKind::scaledIfAsked, FieldUse::scales, true,
        [](Setting s) -> Made { return std::make_unique<ScaledCrossTerm>(s.w, s.cut, s.cross, s.field); }),
    Row<DirectionalTerm>(
        TermKind::crossAndDot, FieldUse::reads, false,
        [](Setting s) -> Made { return std::make_unique<DirectionalTerm>(s.w, s.cut, s.cross, s.plain, s.field); }),
    Row<MaskedTerm>(
        TermKind::masked, FieldUse::reads, false,
        [](Setting s) -> Made { return std::make_unique<MaskedTerm>(s.w, s.cut, s.cross, s.field, s.pixels); }),
    Row<AxisTerm>(TermKind::axis, FieldUse::none, false,
                  [](Setting s) -> Made { return std::make_unique<AxisTerm>(s.w, s.cut, s.plain); }),
    Row<ReferenceTerm>(
        TermKind::reference, FieldUse::none, false,
        [](Setting s) -> Made {
          const Range weighed = s.cut.WeighedRows();
          const matrix reference = ReferencePlane(s.observed, s.factor, s.team, {weighed.begin, weighed.end + 1});
          return std::make_unique<ReferenceTerm>(reference, s.cut, s.plain, s.team);
        }),
};

constexpr const TermRow& RowOf(TermKind kind) { return kTerms[static_cast<size_t>(kind)]; }

using enum TermKind;
constexpr Recipe kRecipes[] = {
    {0, {Rule::huber, {}}, true, false},
    {-1, {Rule::huber, {isotropic}}, false, false},
    {1, {Rule::huber, {isotropic, crossIfAsked}}, true, true},
    {2, {Rule::huber, {crossAndDot}}, true, false},
    {3, {Rule::huber, {isotropic, masked}}, true, false},
    {4, {Rule::huber, {isotropic}}, true, false, {Rule::huber, {isotropic, cross}, 2, 2}},
    {5, {Rule::huber, {axis, scaledIfAsked}}, true, true},
    {6, {Rule::shaped, {crossAndDot}}, true, false},
    {7, {Rule::lorentzian, {isotropic}}, false, false, {Rule::lorentzian, {cross, reference}}},
};

// ------------------------------------------------------------------------------------------------- agreement

constexpr bool TermsStandInOrder() {
  for (size_t i = 0; i < std::size(kTerms); ++i)
    if (kTerms[i].kind != static_cast<TermKind>(i)) return false;
  return std::size(kTerms) == static_cast<size_t>(TermKind::reference) + 1;
}
static_assert(TermsStandInOrder(), "RowOf takes a kind for the place of its row");

// found: for every weighing of the stage.
constexpr bool KeepsField(const Stage& stage, bool found) {
  int users = 0, scaling = 0;
  for (const TermKind kind : stage.terms) {
    users += RowOf(kind).field != FieldUse::none;
    scaling += RowOf(kind).field == FieldUse::scales;
  }
  return scaling == 0 || (users == 1 && found);
}
constexpr bool FieldsAreKept() {
  return std::ranges::all_of(kRecipes, [](const Recipe& recipe) {
    return KeepsField(recipe.first, !recipe.secondPass || recipe.followField) && KeepsField(recipe.tail, true);
  });
}
static_assert(FieldsAreKept(), "a term scales an orientation field that is used once more");

}  // namespace

const Recipe& RecipeOf(int32_t type) {
  const auto found = std::ranges::find(kRecipes, type, &Recipe::type);
  return found == std::end(kRecipes) ? kRecipes[0] : *found;
}

std::vector<const TermRow*> TermsOf(const Stage& stage, const RestoreParameters& parameters) {
  std::vector<const TermRow*> rows;
  for (const TermKind kind : stage.terms)
    if (const TermRow& row = RowOf(kind); !row.onlyIfAsked || parameters.lambdaCross > 0) rows.push_back(&row);
  return rows;
}

bool HasUpdates(const RestoreParameters& parameters) {
  return parameters.iterations > 0 && !RecipeOf(parameters.type).first.terms.empty();
}

}  // namespace norv
