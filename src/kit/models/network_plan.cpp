#include "kit/models/network_plan.h"

#include <algorithm>
#include <tuple>

namespace norv {
namespace {

// How well a network serves a picture: later ones of two are better.
auto Rank(const Model& model, NetworkWay way, const PictureNature& nature) {
  const std::string purpose = model.facts.PurposeFor(nature);
  return std::tuple(model.facts.Takes(way), !purpose.empty(), purpose != "photographs",
                    model.facts.Decibels(way).value_or(0));
}

const Model* BestOf(const std::vector<Model>& models, int32_t factor, NetworkWay way, const PictureNature& nature) {
  const Model* best = nullptr;
  for (const Model& model : models)
    if (model.factor == factor && (!best || Rank(*best, way, nature) < Rank(model, way, nature))) best = &model;
  return best;
}

// The networks to choose from, one a factor, the smallest factor first.
std::vector<Model> Choice(const std::vector<Model>& models, NetworkWay way, const PictureNature& nature) {
  std::vector<Model> choice;
  for (const int32_t factor : {2, 4})
    if (const Model* best = BestOf(models, factor, way, nature)) choice.push_back(*best);
  const bool anyTakes = std::ranges::any_of(choice, [&](const Model& model) { return model.facts.Takes(way); });
  if (anyTakes) std::erase_if(choice, [&](const Model& model) { return !model.facts.Takes(way); });
  return choice;
}

// Where so little is missing, interpolation adds it instead of one more network.
constexpr double kNearEnough = 1.02;

const char* Times(size_t count) { return count == 2 ? " twice" : count == 3 ? " three times" : " again and again"; }

}  // namespace

std::string NetworkPlan::Names() const {
  std::string names;
  for (size_t i = 0, same; i < passes.size(); i += same) {
    same = 1;
    while (i + same < passes.size() && passes[i + same].path == passes[i].path) ++same;
    names += (i > 0 ? " and " : "") + passes[i].name + (same > 1 ? Times(same) : "");
  }
  return names;
}

std::optional<NetworkPlan> PlanNetworks(const std::vector<Model>& models, NetworkWay way, const PictureNature& nature,
                                        double scale) {
  const std::vector<Model> forPicture = Choice(models, way, nature);
  if (forPicture.empty()) return std::nullopt;
  // What the first network leaves is no compressed picture any more.
  const std::vector<Model> forAnswer = Choice(models, way, {.drawn = nature.drawn});
  NetworkPlan plan;
  double reached = 1;
  do {
    const std::vector<Model>& choice = plan.passes.empty() ? forPicture : forAnswer;
    const auto next =
        std::ranges::find_if(choice, [&](const Model& model) { return reached * model.factor * kNearEnough >= scale; });
    plan.passes.push_back(next == choice.end() ? choice.back() : *next);
    reached *= plan.passes.back().factor;
  } while (reached * kNearEnough < scale);
  const std::string purpose = plan.passes[0].facts.PurposeFor(nature);
  plan.why = std::string(way == NetworkWay::best ? "the best" : "the quickest") + " for " +
             (purpose.empty() ? "want of one made for it" : purpose);
  return plan;
}

NetworkPlan PlanNetwork(const Model& model, double scale) {
  NetworkPlan plan{{model}, "as asked for"};
  for (double reached = model.factor; reached * kNearEnough < scale; reached *= model.factor)
    plan.passes.push_back(model);
  return plan;
}

}  // namespace norv
