#include "restore/recipes.h"

#include <algorithm>

namespace norv {

const Recipe& RecipeOf(int32_t type) {
  using enum TermKind;
  static const std::vector<Recipe> kRecipes = {
      {0, {Rule::huber, {}}, true, false, {}},
      {-1, {Rule::huber, {isotropic}}, false, false, {}},
      {1, {Rule::huber, {isotropic, crossIfAsked}}, true, true, {}},
      {2, {Rule::huber, {crossAndDot}}, true, false, {}},
      {3, {Rule::huber, {isotropic, masked}}, true, false, {}},
      {4, {Rule::huber, {isotropic}}, true, false, {Rule::huber, {isotropic, cross}, 2, 2}},
      {5, {Rule::huber, {axis, scaledIfAsked}}, true, true, {}},
      {6, {Rule::shaped, {crossAndDot}}, true, false, {}},
      {7, {Rule::lorentzian, {isotropic}}, false, false, {Rule::lorentzian, {cross, reference}}},
  };
  const auto found =
      std::find_if(kRecipes.begin(), kRecipes.end(), [&](const Recipe& row) { return row.type == type; });
  return found == kRecipes.end() ? kRecipes.front() : *found;
}

bool HasUpdates(const RestoreParameters& parameters) {
  return parameters.iterations > 0 && !RecipeOf(parameters.type).first.terms.empty();
}

}  // namespace norv
