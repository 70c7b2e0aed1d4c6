// Colour models with a hue, an angle or a distance from the grey axis. Where the hue is undefined it is 0. All
// arithmetic is in double precision. Included by models.cpp only.
#pragma once

#include <algorithm>
#include <cmath>

#include "colour/linear_models.h"

namespace norv {

inline constexpr double kDegrees = 57.29577951308232;  // per radian
inline constexpr double kInverseRoot3 = 0.57735026;    // of so many digits by the contract with the graphical program
inline constexpr double kHalfRoot3 = 0.86602540378443864676;

// An angle in degrees brought to 0 .. 360 (the end excluded up to rounding). Most are there already, and a remainder is
// dear.
inline double Turn(double degrees) {
  if (degrees >= 0 && degrees < 360) return degrees;
  const double rest = std::fmod(degrees, 360.0);
  return rest < 0 ? rest + 360 : rest;
}

inline double Quotient(double a, double b) { return b == 0 ? 0.0 : a / b; }

struct Channels {
  double r, g, b;
  explicit Channels(const float* source) : r(source[0]), g(source[1]), b(source[2]) {}
  double Most() const { return std::max({r, g, b}); }
  double Least() const { return std::min({r, g, b}); }
  double Mean() const { return (r + g + b) * kThird; }
};

// Degrees on the hexagon of hues, red at 60, green at 180, blue at 300. The strongest channel is found without a
// branch, which nothing could foretell.
inline double HexagonHue(const Channels& p, double chroma) {
  if (chroma == 0) return 0;
  const double around[] = {p.r, p.g, p.b, p.r, p.g};
  const double most = p.Most();
  const int strongest = (p.r != most) * (1 + (p.g != most));
  return 60 * (1 + 2 * strongest + (around[strongest + 1] - around[strongest + 2]) / chroma);
}

inline float* FromHexagon(float* destination, double hue, double least, double chroma) {
  const double sixth = Turn(hue) / 60;
  const int strongest = !(sixth < 2) + !(sixth < 4);
  const double lean = sixth - (2 * strongest + 1);  // -1 .. 1, towards the next channel when positive
  const float channel[] = {Narrow(least + chroma), Narrow(least + chroma * std::max(lean, 0.0)),
                           Narrow(least + chroma * std::max(-lean, 0.0))};
  for (int k = 0; k < 3; ++k) destination[k] = channel[(k + 3 - strongest) % 3];
  return destination;
}

// Hue in degrees, saturation 0..1, value 0..255.
struct HueValue {
  static float* To(float* destination, const float* source) {
    const Channels p(source);
    const double value = p.Most(), chroma = value - p.Least();
    destination[0] = Narrow(HexagonHue(p, chroma));
    destination[1] = Narrow(Quotient(chroma, value));
    destination[2] = Narrow(value);
    return destination;
  }
  static float* From(float* destination, const float* source) {
    const double value = source[2], chroma = value * source[1];
    return FromHexagon(destination, source[0], value - chroma, chroma);
  }
};

// Hue in degrees, saturation 0..1, lightness 0..255.
struct HueLightness {
  // The largest chroma at a lightness.
  static double Room(double lightness) { return 2 * (lightness <= 127.5 ? lightness : 255 - lightness); }
  static float* To(float* destination, const float* source) {
    const Channels p(source);
    const double chroma = p.Most() - p.Least(), lightness = (p.Most() + p.Least()) * 0.5;
    destination[0] = Narrow(HexagonHue(p, chroma));
    destination[1] = Narrow(Quotient(chroma, Room(lightness)));
    destination[2] = Narrow(lightness);
    return destination;
  }
  static float* From(float* destination, const float* source) {
    const double lightness = source[2], chroma = Room(lightness) * source[1];
    return FromHexagon(destination, source[0], lightness - chroma * 0.5, chroma);
  }
};

// Hue in degrees (by arc cosine, red at 0), saturation 0..1, intensity 0..255.
struct HueIntensity {
  static float* To(float* destination, const float* source) {
    const Channels p(source);
    const double rg = p.r - p.g, gb = p.g - p.b, rb = p.r - p.b, intensity = p.Mean();
    const double length = std::sqrt((rg * rg + gb * gb + rb * rb) * 0.5);
    const double hue = length == 0 ? 0 : kDegrees * Acos(std::clamp(0.5 * (rg + rb) / length, -1.0, 1.0));
    destination[0] = Narrow(p.b > p.g ? 360 - hue : hue);
    destination[1] = Narrow(Quotient(intensity - p.Least(), intensity));
    destination[2] = Narrow(intensity);
    return destination;
  }
  static float* From(float* destination, const float* source) {
    const double hue = Turn(source[0]), intensity = source[2], chroma = intensity * source[1];
    const int strongest = hue < 120 ? 0 : hue < 240 ? 1 : 2;
    const double angle = (hue - 120 * strongest) / kDegrees;
    const double least = intensity - chroma;
    const double most = intensity + chroma * Cos(angle) / Cos(60 / kDegrees - angle);
    destination[strongest] = Narrow(most);
    destination[(strongest + 1) % 3] = Narrow(3 * intensity - most - least);
    destination[(strongest + 2) % 3] = Narrow(least);
    return destination;
  }
};

// Coordinates in the plane across the grey axis: u towards red, v from blue to green, in lengths of RGB space.
struct Chroma {
  double u, v, length;
  explicit Chroma(const Channels& p)
      : u((2 * p.r - p.g - p.b) * 0.40824829046386301637),
        v((p.g - p.b) * 0.70710678118654752440),
        length(std::sqrt(u * u + v * v)) {}
};

// Intensity, saturation, sine and cosine of the hue, all scaled to 0..255.
struct HueVector {
  static float* To(float* destination, const float* source) {
    const Channels p(source);
    const Chroma chroma(p);
    const double sine = Quotient(chroma.v, chroma.length);
    const double cosine = chroma.length == 0 ? 1 : chroma.u / chroma.length;
    destination[0] = Narrow(p.Mean());
    destination[1] = Narrow(255 * Quotient(p.Mean() - p.Least(), p.Mean()));
    destination[2] = Narrow(127.5 * (1 + sine));
    destination[3] = Narrow(127.5 * (1 + cosine));
    return destination;
  }
  static float* From(float* destination, const float* source) {
    const double intensity = source[0], saturation = source[1] / 255.0;
    const double sine = source[2] / 127.5 - 1, cosine = source[3] / 127.5 - 1;
    const double side = kHalfRoot3 * sine;
    const double direction[3] = {cosine, side - 0.5 * cosine, -side - 0.5 * cosine};
    // The least channel lies below the intensity by intensity times saturation.
    const double scale = Quotient(intensity * saturation, -std::min({direction[0], direction[1], direction[2]}));
    for (int k = 0; k < 3; ++k) destination[k] = Narrow(intensity + scale * direction[k]);
    return destination;
  }
};

// Length along the grey axis, distance from it, and the two signed coordinates across it.
struct GreyAxis {
  static float* To(float* destination, const float* source) {
    const Channels p(source);
    const Chroma chroma(p);
    destination[0] = Narrow((p.r + p.g + p.b) * kInverseRoot3);
    destination[1] = Narrow(chroma.length);
    destination[2] = Narrow(chroma.u);
    destination[3] = Narrow(chroma.v);
    return destination;
  }
  // The coordinates give the direction, the distance how far.
  static float* From(float* destination, const float* source) {
    const double grey = source[0] * kInverseRoot3;
    const double u = source[2], v = source[3];
    const double scale = Quotient(std::max(0.0f, source[1]), std::sqrt(u * u + v * v));
    const double red = scale * u * 0.40824829046386301637, green = scale * v * 0.70710678118654752440;
    destination[0] = Narrow(grey + 2 * red);
    destination[1] = Narrow(grey - red + green);
    destination[2] = Narrow(grey - red - green);
    return destination;
  }
};

// Luminance, chroma magnitude, chroma angle in degrees. The chroma's axes are red and blue against luminance, 500 and
// 300 for the whole scale.
struct PolarChroma {
  static float* To(float* destination, const float* source) {
    const Channels p(source);
    const double y = Apply(kYCbCr.row[0], p.r, p.g, p.b);
    const double a = 500 * (p.r - y) / 255, b = 300 * (y - p.b) / 255;
    // Grey is exactly grey, whatever the rounding of its luminance.
    const bool grey = p.r == p.g && p.g == p.b;
    destination[0] = Narrow(y);
    destination[1] = grey ? 0.0f : Narrow(std::sqrt(a * a + b * b));
    destination[2] = grey ? 0.0f : Narrow(Turn(Atan2(b, a) * kDegrees));
    return destination;
  }
  static float* From(float* destination, const float* source) {
    const double y = source[0], angle = Turn(source[2]) / kDegrees;
    const double red = y + source[1] * Cos(angle) * 255 / 500, blue = y - source[1] * Sin(angle) * 255 / 300;
    destination[0] = Narrow(red);
    destination[1] = Narrow((y - 0.299 * red - 0.114 * blue) / 0.587);
    destination[2] = Narrow(blue);
    return destination;
  }
};

}  // namespace norv
