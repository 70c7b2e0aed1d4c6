#include <cmath>

#include "kit/commands/command.h"
#include "kit/commands/shared_rows.h"
#include "kit/guidance/json.h"
#include "kit/guidance/manner.h"
#include "kit/pictures/luminance.h"
#include "kit/search/filter_estimate.h"
#include "kit/search/filter_names.h"
#include "kit/search/filter_ranking.h"
#include "platform/console.h"

namespace norv {
namespace {

struct Settings {
  std::string small, large;
  bool all = false;
  ReadChoice read;
};

Options Rows(Settings& settings) {
  return {{.name = "SMALL", .target = &settings.small, .help = "the picture that was made small"},
          {.name = "LARGE",
           .target = &settings.large,
           .help = "the picture that it was made of; without it the filter is estimated",
           .mayBeLeftOut = true},
          {.name = "--all", .target = &settings.all, .help = "every filter, not only the best"},
          PageRow(settings.read)};
}

constexpr size_t kShown = 6;

// "box, as -11, -12".
std::string InWords(const FilterMatch& match) {
  std::string words = FilterInWords(match.orders[0]);
  for (size_t i = 1; i < match.orders.size(); ++i)
    words += (i > 1 ? ", " : ", the same as ") + std::to_string(match.orders[i]);
  return words;
}

// A row for programs; probability or decibels, whichever was found.
JsonObject RowOf(int32_t order, const std::string& name, const char* key, double value) {
  return JsonObject().Whole("filter", order).Text("name", name).Number(key, value);
}

void PrintRows(const FilterRanking& ranking) {
  for (const FilterMatch& match : ranking.matches)
    SayRow(RowOf(match.orders[0], FilterInWords(match.orders[0]), "psnr", match.decibels)
               .Whole("factor", ranking.factor)
               .Flag("sure", &match == &ranking.matches[0] && ranking.IsSure()));
}

void PrintRows(const std::vector<FilterFamily>& families) {
  for (const FilterFamily& family : families)
    SayRow(RowOf(family.orders[0], family.name, "probability", family.probability));
}

void PrintRanking(const FilterRanking& ranking, bool all) {
  Say("%8s  %8s  filter\n", "dB", "--filter");
  for (size_t i = 0; i < ranking.matches.size() && (all || i < kShown); ++i) {
    const FilterMatch& match = ranking.matches[i];
    if (std::isinf(match.decibels))
      Say("identical");
    else
      Say("%8.2f ", match.decibels);
    Say(" %8d  %s\n", match.orders[0], InWords(match).c_str());
  }
  const std::string best = InWords(ranking.matches[0]);
  Say("%s: %s, by %d", ranking.IsSure() ? "sure" : "not sure", best.c_str(), ranking.factor);
  if (std::isfinite(ranking.Margin())) Say(", %.2f dB before the next", ranking.Margin());
  Say(" and nearer in %d of %d parts of the picture\n", ranking.partsWon, ranking.parts);
  if (!ranking.Explains())
    Warn("none of the filters explains the picture well: it was made in another way, moved, or compressed");
}

void PrintEstimate(const std::vector<FilterFamily>& families, bool all) {
  constexpr double kSure = 0.8, kWorthShowing = 0.01;
  Say("%11s  %8s  filter\n", "probability", "--filter");
  for (const FilterFamily& family : families)
    if (all || family.probability >= kWorthShowing)
      Say("%9.0f %%  %8d  %s\n", 100 * family.probability, family.orders[0], family.name);
  Say("%s: %s, estimated from the picture alone\n", families[0].probability >= kSure ? "likely" : "not sure",
      families[0].name);
}

void Run(const Settings& settings) {
  const SeenLuminance small = LoadOpaqueLuminance(settings.small, settings.read);
  const bool json = RunManner().json;
  if (settings.large.empty()) {
    const std::vector<FilterFamily> families = EstimateFilter(small);
    json ? PrintRows(families) : PrintEstimate(families, settings.all);
  } else {
    const FilterRanking ranking = RankFilters(small.plane, LoadOpaqueLuminance(settings.large).plane);
    json ? PrintRows(ranking) : PrintRanking(ranking, settings.all);
  }
}

}  // namespace

Command FilterCommand() {
  return MakeCommand<Settings>(
      {.name = "filter",
       .purpose = "Find out by which filter a picture was made small",
       .examples = "norvkit filter small.png original.png\n"
                   "norvkit filter small.png",
       .notes =
           "With LARGE it is shrunk by every filter of norvkit shrink, and dB says how near the luminance comes to "
           "that "
           "of SMALL; the factor follows from the sizes. Without it the filter is estimated from how power is spread "
           "over frequencies, which tells kinds of filters apart, not all of them (docs/search.md)."},
      Rows, Run);
}

}  // namespace norv
