#include "kit/scale/restore_presets.h"

#include <algorithm>
#include <cmath>

#include "kit/failure.h"

namespace norv {
namespace {

// What a preset chooses; all of them work on the luminance with the cubic filter and axis differences (type 5).
struct PresetRow {
  const char* name;
  int32_t factor;
  float lambdaCross, lambda, deltaCross, delta;
  int32_t steps, iterations;
  float orientationScale, emphasis;
};

// Taking back a blur at factor 1 wants much less smoothing than making a picture larger.
constexpr PresetRow kPresets[] = {
    {"clean", 1, 0.02f, 0.01f, 5, 3, 17, 2, 0.7f, 0.75f},
    {"drawn", 1, 0.02f, 0.01f, 5, 3, 17, 2, 0.7f, 0.75f},
    {"clean", 2, 0.06f, 0.035f, 5, 3, 17, 2, 0.7f, 0.25f},
    {"clean", 3, 0.06f, 0.035f, 2, 1.5f, 17, 5, 0.4f, 0.4f},
    {"clean", 4, 0.06f, 0.035f, 1, 1, 17, 9, 0.3f, 0.5f},
    {"compressed", 2, 0.6f, 0.3f, 5, 3, 17, 2, 0.7f, 0},
    {"compressed", 3, 0.8f, 0.4f, 2, 1.5f, 17, 5, 0.4f, 0},
    {"compressed", 4, 1, 0.5f, 1, 1, 17, 9, 0.3f, 0},
    {"noisy", 2, 1, 0.5f, 5, 3, 17, 2, 0.7f, 0},
    {"noisy", 3, 1, 0.5f, 2, 1.5f, 17, 5, 0.4f, 0},
    {"noisy", 4, 1, 0.5f, 1, 1, 17, 9, 0.3f, 0},
    {"drawn", 2, 0.098f, 0.047f, 3.2f, 3, 15, 12, 0.43f, 0},
    {"drawn", 3, 0.098f, 0.047f, 2, 2, 17, 12, 0.4f, 0},
    {"drawn", 4, 0.098f, 0.047f, 1, 1, 17, 14, 0.4f, 0},
};

// From a network's answer, which needs fewer iterations and no emphasis; networks enlarge by powers of 2.
constexpr PresetRow kRefinements[] = {
    {"clean", 2, 0.054f, 0.035f, 2, 1, 37, 1, 0.46f, 0},
    {"clean", 4, 0.072f, 0.052f, 0.9f, 0.51f, 47, 3, 0.43f, 0},
    {"compressed", 2, 0.2f, 0.12f, 5, 3, 17, 1, 0.7f, 0},
    {"compressed", 4, 0.8f, 0.4f, 1, 1, 17, 3, 0.3f, 0},
    {"noisy", 2, 1, 0.5f, 5, 3, 17, 2, 0.7f, 0},
    {"noisy", 4, 1, 0.5f, 1, 1, 17, 4, 0.3f, 0},
    {"drawn", 2, 0.054f, 0.035f, 1, 0.5f, 37, 1, 0.46f, 0},
    {"drawn", 4, 0.05f, 0.035f, 0.7f, 0.35f, 47, 2, 0.43f, 0},
};

using P = RestoreParameters;
constexpr RestoreKnob kKnobs[] = {
    {"--filter",
     "how the picture was made small: -1 to -5 cubic, 0 box, 1 tent, 2 to 5 and 15 Lanczos, -11 to -22 "
     "and -31 to -35 Gaussian",
     &P::kernelCode, -35, 15, "--kernel"},
    {"--lambda-cross", "smoothing along edges", &P::lambdaCross, -1, 10000, "", 0, true},
    {"--lambda", "smoothing in every direction", &P::lambda, -1, 10000, "", 0, true},
    {"--delta-cross", "grey levels above which a difference along an edge counts as detail", &P::deltaCross, 0, 10000,
     "", 0, true},
    {"--delta", "grey levels above which a difference counts as an edge", &P::delta, 0, 10000, "", 0, true},
    {"--shape-cross", "type 6: how much large differences along edges are punished, below 1 less", &P::shapeCross, -10,
     10, "", 6},
    {"--shape-dot", "type 6: how much large differences across edges are punished, below 1 less", &P::shapeDot, -10, 10,
     "", 6},
    {"--steps", "inner steps of every iteration", &P::steps, 0, 10000, "", 0, true},
    {"--iterations", "iterations of each pass", &P::iterations, 0, 10000, "", 0, true},
    {"--orientation-scale", "smoothing of the edges' directions, in pixels of the picture", &P::orientationScale, 0,
     1000, "", 0, true},
    {"--emphasis", "sharpening between the passes; 0: one pass only", &P::emphasis, 0, 100, "", 0, true},
    {"--representation", "what is restored: 0 every plane, 1 to 3 luminance, 4 every plane, 5 decorrelated colours",
     &P::representation, 0, 5},
    {"--type", "of the regulariser, -1 to 7", &P::type, -1, 7},
    {"--edge-threshold", "type 3: grey levels from which on a pixel is an edge", &P::edgeThreshold, 0, 10000, "", 3},
};

const PresetRow* FindRow(std::span<const PresetRow> rows, const std::string& name, int32_t factor) {
  for (const PresetRow& row : rows)
    if (row.name == name && row.factor == factor) return &row;
  return nullptr;
}

const PresetRow& RowOf(std::span<const PresetRow> rows, const std::string& name, int32_t factor) {
  if (const PresetRow* row = FindRow(rows, name, std::clamp(factor, 2, 4))) return *row;
  Fail("there is no preset %s", name.c_str());
}

RestoreParameters ParametersOf(const PresetRow& row, int32_t factor) {
  RestoreParameters parameters{};
  parameters.factor = factor;
  parameters.kernelCode = -1;
  parameters.lambdaCross = row.lambdaCross;
  parameters.lambda = row.lambda;
  parameters.deltaCross = row.deltaCross;
  parameters.delta = row.delta;
  parameters.shapeCross = parameters.shapeDot = 0.8f;
  parameters.steps = row.steps;
  parameters.iterations = row.iterations;
  parameters.orientationScale = row.orientationScale;
  parameters.emphasis = row.emphasis;
  parameters.representation = 1;
  parameters.type = 5;
  parameters.edgeThreshold = 25;
  return parameters;
}

}  // namespace

const std::vector<std::string>& RestorePresetNames() {
  static const std::vector<std::string> kNames = {"clean", "compressed", "noisy", "drawn"};
  return kNames;
}

RestoreParameters RestorePreset(const std::string& name, int32_t factor) {
  return ParametersOf(RowOf(kPresets, name, factor), factor);
}

RestoreParameters DeblurringPreset(const std::string& name, int32_t factor, double sigma) {
  const PresetRow* row = FindRow(kPresets, name, factor);
  RestoreParameters parameters = row ? ParametersOf(*row, factor) : RestorePreset(name, factor);
  parameters.kernelCode = FilterOfBlur(sigma, factor);
  return parameters;
}

RestoreParameters RefinementPreset(const std::string& name, int32_t factor) {
  return ParametersOf(RowOf(kRefinements, name, factor < 4 ? 2 : 4), factor);
}

bool HoldsToPicture(const std::string& preset) { return preset == "clean" || preset == "drawn"; }

std::span<const RestoreKnob> RestoreKnobs() { return kKnobs; }

const char* FirstSaid(const KnobValues& values) {
  for (size_t i = 0; i < values.size(); ++i)
    if (values[i]) return kKnobs[i].option;
  return nullptr;
}

void TurnKnobs(RestoreParameters& parameters, const KnobValues& values) {
  for (size_t i = 0; i < values.size(); ++i) {
    if (!values[i]) continue;
    const auto turn = [&](auto field) {
      parameters.*field = static_cast<std::decay_t<decltype(parameters.*field)>>(*values[i]);
    };
    std::visit(turn, kKnobs[i].field);
  }
}

void MakeSharper(RestoreParameters& parameters) {
  parameters.lambda /= 2;
  parameters.lambdaCross /= 2;
  parameters.emphasis += 0.5f;
}

void MakeSmoother(RestoreParameters& parameters) {
  parameters.lambda *= 3;
  parameters.lambdaCross *= 3;
  parameters.emphasis /= 2;
}

int32_t FilterOfBlur(double sigma, int32_t factor) {
  constexpr double kOfReduction = 0.3;  // the Gaussian that explains cubic reduction best
  const double whole = factor > 1 ? std::hypot(sigma, kOfReduction) : sigma;
  const int32_t tenths = std::clamp(static_cast<int32_t>(std::lround(10 * whole)), 1, 15);
  return tenths <= 10 ? -10 - tenths : -20 - tenths;
}

}  // namespace norv
