#include "colour/models.h"

#include <algorithm>

#include "colour/hue_models.h"
#include "colour/linear_models.h"
#include "simd/colours/kernels.h"

namespace norv {
namespace {

// RGB and a fourth plane that display knows nothing of.
struct WithFourth {
  static float* To(float* destination, const float* source) {
    destination[3] = 255.0f;
    return Identity::To(destination, source);
  }
  static float* From(float* destination, const float* source) { return Identity::To(destination, source); }
};

// Cyan, magenta, yellow, black: all the black that the three have in common.
struct Inks {
  static float* To(float* destination, const float* source) {
    const double most = Channels(source).Most();
    for (int k = 0; k < 3; ++k) destination[k] = Narrow(most - source[k]);
    destination[3] = Narrow(255 - most);
    return destination;
  }
  static float* From(float* destination, const float* source) {
    for (int k = 0; k < 3; ++k) destination[k] = Narrow(255.0 - source[3] - source[k]);
    return destination;
  }
};

// CIE 1976 L*a*b* of linear RGB. The weights contain the white point (D65) and the scale of 255.
struct Lab {
  static constexpr Matrix3 kWeights = {
      {{0.0017018, 0.0014754, 0.0007444}, {0.000834, 0.0028046, 0.000283}, {6.96e-5, 0.0004293, 0.0034226}}};
  static constexpr double kBend = 0.008856, kSlope = 7.787, kOffset = 16.0 / 116.0;

  static double Root(double t) { return t > kBend ? Pow(t, 0.33333334f) : kSlope * t + kOffset; }
  static double Cube(double f) { return f > kSlope * kBend + kOffset ? f * f * f : (f - kOffset) / kSlope; }

  static float* To(float* destination, const float* source) {
    double f[3];
    for (int k = 0; k < 3; ++k) f[k] = Root(Apply(kWeights.row[k], source[0], source[1], source[2]));
    destination[0] = Narrow(116 * f[1] - 16);
    destination[1] = Narrow(500 * (f[0] - f[1]));
    destination[2] = Narrow(200 * (f[1] - f[2]));
    return destination;
  }
  static float* From(float* destination, const float* source) {
    static constexpr Matrix3 inverse = Inverse(kWeights);
    const double f = (source[0] + 16.0) / 116;
    const double x = Cube(f + source[1] / 500.0), y = Cube(f), z = Cube(f - source[2] / 200.0);
    for (int k = 0; k < 3; ++k) destination[k] = Narrow(Apply(inverse.row[k], x, y, z));
    return destination;
  }
};

// Every plane is a parameter of its own, for only so the compiler believes that they do not overlap and uses vectors.
template <PixelFunction function, int planesIn, int planesOut>
void RunPlanes(float* __restrict p, float* __restrict q, float* __restrict r, float* __restrict s,
               const float* __restrict a, const float* __restrict b, const float* __restrict c,
               const float* __restrict d, int32_t n) {
  for (int32_t i = 0; i < n; ++i) {
    const float from[4] = {a[i], b[i], c[i], planesIn == 4 ? d[i] : 0.0f};
    float to[4];
    function(to, from);
    p[i] = to[0];
    q[i] = to[1];
    r[i] = to[2];
    if (planesOut == 4) s[i] = to[3];
  }
}

template <PixelFunction function, int planesIn, int planesOut>
void Run(float* const* destination, const float* const* source, int32_t n) {
  RunPlanes<function, planesIn, planesOut>(destination[0], destination[1], destination[2],
                                           planesOut == 4 ? destination[3] : nullptr, source[0], source[1], source[2],
                                           planesIn == 4 ? source[3] : nullptr, n);
}

template <typename Pair, int planes = 3>
constexpr ColourModel Model(int32_t code, const char* name) {
  return {code, planes, name, Pair::To, Pair::From, Run<Pair::To, 3, planes>, Run<Pair::From, planes, 3>};
}

void RunInversion(float* const* destination, const float* const* source, int32_t n) {
  ActiveColourKernels().invert(destination, source, n);
}

template <const Matrix3& matrix>
void RunLinear(float* const* destination, const float* const* source, int32_t n) {
  ActiveColourKernels().linear(destination, source, matrix.row, n);
}

// A matrix alone.
template <const Matrix3& matrix>
constexpr ColourModel Linear(int32_t code, const char* name) {
  using Pair = LinearModel<Plain, matrix>;
  return {code, 3, name, Pair::To, Pair::From, RunLinear<matrix>, RunLinear<Pair::kInverse>};
}

constexpr ColourModel kModels[] = {
    Model<Identity>(kDisplay, "RGB"),
    Model<HueVector, 4>(0x20, "intensity, saturation, hue vector"),
    Model<GreyAxis, 4>(0x40, "grey axis and chroma"),
    Model<Inks, 4>(0x80, "CMYK"),
    Model<HueValue>(0x200, "HSV"),
    Model<HueLightness>(0x400, "HSL"),
    Model<HueIntensity>(0x800, "HSI"),
    {0x1000, 3, "CMY", Inversion::To, Inversion::From, RunInversion, RunInversion},
    Model<WithFourth, 4>(kWithFourth, "RGB and a fourth plane"),
    Model<ScalarModel<ScaledLogarithm>>(0x4000, "scaled log RGB"),
    Model<Lab>(0x8000, "CIE L*a*b*"),
    Model<PolarChroma>(0x10000, "luminance, polar chroma"),
    Linear<kYCbCr>(kLuminance, "YCbCr"),
    Model<ScalarModel<SingleLogarithm>>(0x40000, "log RGB"),
    Model<Identity>(kDisplayAgain, "RGB again"),
    Linear<kYCbCr>(kLuminanceAgain, "YCbCr again"),
    Linear<kMean>(kIntensity, "mean and differences"),
    Linear<kYuv>(0x800000, "YUV"),
    Model<ScalarModel<Logarithm>>(0x1000000, "log RGB in double precision"),
    Model<LinearModel<Logarithm, kYCbCr>>(0x2000000, "YCbCr of log RGB"),
    Model<LinearModel<Logarithm, kMean>>(0x4000000, "mean and differences of log RGB"),
};
static_assert(std::ranges::is_sorted(kModels, {}, &ColourModel::code), "rows stand by ascending code");

}  // namespace

const ColourModel* FindModel(int32_t format) {
  for (const ColourModel& model : kModels)
    if (model.code == ModelOf(format)) return &model;
  return nullptr;
}

std::span<const ColourModel> ColourModels() { return kModels; }

}  // namespace norv
