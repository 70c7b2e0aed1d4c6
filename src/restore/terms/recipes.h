// The table of regulariser types, and that of the terms which they are made of.
#pragma once

#include <array>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <vector>

#include "restore/parameters.h"
#include "restore/terms/differences.h"

namespace norv {

// Weighted differences that a type may ask to be small.
enum class TermKind {
  isotropic,      // strength and threshold: lambda, delta
  cross,          // lambda cross, delta cross
  crossIfAsked,   // the same, left out with its field when lambda cross is 0 or less
  scaledIfAsked,  // the same with the weights multiplied into the directions
  crossAndDot,    // cross, and dot with lambda and delta
  masked,         // cross, at the pixels of the dilated edge mask
  axis,           // lambda, delta
  reference,      // isotropic, with weights of the reference plane
};

// What a term does with the orientation field, of which the terms of a stage share one.
enum class FieldUse {
  none,
  reads,
  scales,  // multiplies its vectors in place: no other term may use it, and each weighing needs it found anew
};

// What terms are made for.
struct TermSetting {
  int32_t w;                // of the enlarged plane
  const RowRuns& cut;       // of its rows
  Weighting plain, cross;   // by lambda and delta, and by their cross values
  OrientationField& field;  // outlives the term, as do the following
  const PixelList& pixels;
  const matrix& observed;
  int32_t factor;
  StandingTeam& team;
};

struct TermRow {
  TermKind kind;
  std::unique_ptr<DifferenceTerm> (*make)(const TermSetting& setting);
  int32_t planes;  // of the enlarged size that it holds
  FieldUse field;
  bool onlyIfAsked;  // left out when lambda cross is 0 or less
};

// The kinds of a stage's terms, three at most.
class TermList {
 public:
  constexpr TermList(std::initializer_list<TermKind> kinds) {
    for (const TermKind kind : kinds) kinds_.at(size_++) = kind;
  }
  constexpr const TermKind* begin() const { return kinds_.data(); }
  constexpr const TermKind* end() const { return begin() + size_; }
  constexpr bool empty() const { return size_ == 0; }

 private:
  std::array<TermKind, 3> kinds_{};
  size_t size_ = 0;
};

// Outer iterations of one kind: weights of the plane as it stands, then an update.
struct Stage {
  Rule rule = Rule::huber;
  TermList terms = {};          // none: the stage does nothing
  int32_t iterationFactor = 1;  // iterations as a multiple of those asked for
  int32_t stepDivisor = 1;      // inner steps as a part of those asked for
};

struct Recipe {
  int32_t type;
  Stage first;
  bool secondPass;   // emphasis and the first stage once more, when emphasis is asked for
  bool followField;  // the second pass finds the orientation field anew in each iteration, else it keeps the last one
  Stage tail = {};
};

// An unknown type acts as 0, which does nothing but the emphasis.
const Recipe& RecipeOf(int32_t type);

// The terms that a stage takes with these parameters.
std::vector<const TermRow*> TermsOf(const Stage& stage, const RestoreParameters& parameters);

// Whether a restoration takes any update step: its type has terms, and there are iterations. If not, nobody looks at
// the kernel code.
bool HasUpdates(const RestoreParameters& parameters);

}  // namespace norv
