#include "kit/work/cost.h"

#include "kit/formats/picture_shape.h"
#include "kit/measure/agreement.h"
#include "kit/pictures/conversions.h"
#include "kit/scale/refine.h"
#include "kit/scale/restored_rows.h"
#include "net/neural_net.h"
#include "raster/bands.h"
#include "restore/memory_need.h"
#include "restore/restore_image.h"
#include "restore/restore_plane.h"

namespace norv {
namespace {

constexpr double kMegabyte = 1 << 20;

// Measured at one thread on a machine of 2020 with AVX2, seconds.
constexpr double kReadPixel = 1.5e-8, kWritePixel = 5e-8, kResampledPixel = 3e-8;
constexpr double kProduct = 4e-11;         // of a network, with its input rows and activations
constexpr double kRestoredPixel = 1.7e-8;  // a step of the solver
constexpr double kDenoisedSample = 6e-7, kGroupedSample = 4e-5;

double Pixels(const PictureShape& shape) { return static_cast<double>(shape.width) * shape.height; }
double Samples(const PictureShape& shape) { return Pixels(shape) * shape.channels; }

double ProductsOf(const NeuralNet& net) {
  double products = 0, inputs = net.N0;
  for (const NetLayer& layer : net.layers) {
    products += inputs * layer.Ni;
    inputs = layer.Ni;
  }
  return products;
}

}  // namespace

Cost operator+(const Cost& a, const Cost& b) {
  return {a.seconds + b.seconds, a.held + b.held, a.aThread + b.aThread, std::min(a.threads, b.threads),
          a.strip + b.strip};
}

Cost CostOfFiles(const PictureShape& from, const PictureShape& result) {
  const double rows = 4.0 * 128 * (from.width * from.channels + result.width * result.channels);
  return {.seconds = kReadPixel * Pixels(from) + kWritePixel * Pixels(result),
          .held = 12 * kMegabyte + rows,
          .aThread = kMegabyte};
}

Cost CostOfHolding(const PictureShape& shape, double bytesASample) { return {.held = bytesASample * Samples(shape)}; }

Cost CostOfResampling(const PictureShape& from, const PictureShape& result) {
  return {.seconds = kResampledPixel * (Pixels(from) + Pixels(result)), .strip = 3.4 * kMegabyte * result.channels};
}

Cost CostOfAgreement(const PictureShape& from, int32_t factor, const PictureShape& result) {
  constexpr double kMargins = 24;  // rows of the small picture that a strip sees of its neighbours
  constexpr double kPlanes = 3;    // of luminance, there and back
  const double refined = RefinedRowsOf(from.width, from.height, factor) + 2.0 * kRefineMargin + kAgreeingRows;
  const double rows = std::min<double>(refined, from.height);
  const double strip = kAgreeingRows + kMargins * result.height / std::max(from.height, 1);
  return {.seconds = 2 * kResampledPixel * Pixels(result),
          .held = 4.0 * rows * from.width,
          .strip = 4.0 * std::min<double>(strip, result.height) * result.width * (2 * result.channels + kPlanes)};
}

Cost CostOfNetwork(const PictureShape& from, const NeuralNet& net, bool averaged, bool luminance) {
  const double planes = luminance ? 1.0 : from.channels, passes = averaged ? 8 : 1;
  return {.seconds = kProduct * ProductsOf(net) * Pixels(from) * planes * passes,
          .strip = 1.7 * kMegabyte * from.channels};
}

Cost CostOfRefinement(const PictureShape& result, const RestoreParameters& parameters) {
  const int32_t f = parameters.factor, height = result.height / f, width = result.width / f;
  const int32_t strip = RefinedRowsOf(width, height, f), margin = std::max(kRefineMargin / f, 1);
  const int32_t rows = std::max(std::min(height, strip + 2 * margin), 1);
  const double row = 4.0 * result.width * f, planes = result.channels + 2.0;  // bytes of a small one's enlarged rows
  const double alone = static_cast<double>(PlanesMemory(parameters, width, rows, 1));
  constexpr int32_t kMore = 8;  // threads, by which a team's lines are told from what a strip takes anyway
  return {.seconds = kRestoredPixel * Pixels(result) * static_cast<double>(PlaneWork(parameters)),
          .held = alone + row * rows * planes,
          .aThread = (static_cast<double>(PlanesMemory(parameters, width, rows, 1, 1 + kMore)) - alone) / kMore};
}

Cost CostOfRestoration(const PictureShape& from, const RestoreParameters& parameters, int32_t bands) {
  CheckRestoration(parameters, from.width, from.height, FloatFormatOf(from));
  const int32_t format = FloatFormatOf(from), planes = from.HasAlpha() ? 4 : 3;
  const double large = Pixels(from) * parameters.factor * parameters.factor, small = 4 * planes * Pixels(from);
  Cost cost{.seconds = kRestoredPixel * large * static_cast<double>(RestorationWork(parameters, format))};
  if (bands <= 0) {
    constexpr int32_t kMore = 8;  // threads, by which a team's lines are told from what a strip takes anyway
    const int32_t rows = RestoredRowsOf(from, parameters.factor);
    const double strip = static_cast<double>(rows) / std::max(from.height, 1);
    const double alone = static_cast<double>(RestoredStripMemory(from, parameters, 1));
    const double copies = (rows < from.height ? 1 : 0) * 4 * from.channels * large + 4 * from.channels * Pixels(from);
    cost.held = alone + strip * copies;
    cost.aThread = (static_cast<double>(RestoredStripMemory(from, parameters, 1 + kMore)) - alone) / kMore;
    return cost;
  }
  const int32_t rows = PlanBands(from.height, bands).height;
  cost.held = small + 4 * planes * large;
  cost.aThread = static_cast<double>(BandsMemory(parameters, from.width, rows, format, 1));
  cost.threads = PlanBands(from.height, bands).bands;
  return cost;
}

Cost CostOfDenoising(const PictureShape& from, bool best) {
  const double samples = Samples(from), planes = 12 * Pixels(from);
  return {.seconds = (best ? kGroupedSample : kDenoisedSample) * samples,
          .held = planes + (best ? 12 * Pixels(from) : 3 * kMegabyte + 2 * Pixels(from)),
          .aThread = 2 * kMegabyte};
}

}  // namespace norv
