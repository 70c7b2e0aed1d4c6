#include "kit/training/learning_curve.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace norv {
namespace {

constexpr double kWidth = 760, kLeft = 76, kRight = 130;  // pixels; names of the lines stand at the right
constexpr double kPanelHeight = 220, kFirstPanel = 54, kSecondPanel = 330, kHeight = 604;
constexpr int kTicks = 5;

// A colour and a dash pattern each, so that the lines differ in print too.
constexpr char kNetStyle[] = "stroke='#1b5fb4' stroke-width='2'", kNetColour[] = "#1b5fb4";
constexpr char kCubicStyle[] = "stroke='#b4531b' stroke-width='1.5' stroke-dasharray='2 4'", kCubicColour[] = "#b4531b";
constexpr char kLanczosStyle[] = "stroke='#3a7d34' stroke-width='1.5' stroke-dasharray='8 4'",
               kLanczosColour[] = "#3a7d34";

template <typename... Values>
std::string Format(const char* format, Values... values) {
  char text[512];
  std::snprintf(text, sizeof text, format, values...);
  return text;
}

// The axis from the least to the greatest value, in steps of 1, 2 or 5 times a power of ten.
struct Axis {
  double low = 0, high = 1, step = 0.2;
};

Axis AxisOf(double least, double greatest) {
  if (!(least <= greatest)) return {};
  const double range = greatest > least ? greatest - least : std::max(std::abs(least), 1.0) * 1e-2;
  const double power = std::pow(10, std::floor(std::log10(range / kTicks)));
  Axis axis;
  for (const double factor : {1.0, 2.0, 5.0, 10.0})
    if ((axis.step = factor * power) * kTicks >= range) break;
  axis.low = std::floor(least / axis.step) * axis.step;
  axis.high = std::max(std::ceil(greatest / axis.step) * axis.step, axis.low + axis.step);
  return axis;
}

class Panel {
 public:
  using Column = double EpochRecord::*;

  Panel(const TrainingLog& log, double top, const std::vector<Column>& columns) : log_(log), top_(top) {
    double least = INFINITY, greatest = -INFINITY;
    for (const EpochRecord& record : log)
      for (const Column column : columns)
        if (std::isfinite(record.*column)) {
          least = std::min(least, record.*column);
          greatest = std::max(greatest, record.*column);
        }
    axis_ = AxisOf(least, greatest);
  }

  std::string Frame(const char* title) const {
    std::string text = Format("<text x='%.0f' y='%.0f' font-weight='bold'>%s</text>\n", kLeft, top_ - 12, title);
    const int lines = static_cast<int>(std::lround((axis_.high - axis_.low) / axis_.step));
    for (int i = 0; i <= lines; ++i) {
      const double value = axis_.low + i * axis_.step;
      text += Format("<path d='M%.1f %.1fH%.1f' stroke='#ddd'/>\n", kLeft, Y(value), kWidth - kRight);
      text += Format("<text x='%.1f' y='%.1f' text-anchor='end'>%.4g</text>\n", kLeft - 8, Y(value) + 4, value);
    }
    return text + EpochTicks();
  }

  // A line through the values, with breaks where there are none; single points are dots.
  std::string Line(Column column, const char* style, const char* colour, const char* name) const {
    std::string path, dots;
    bool pen = false;
    const EpochRecord* last = nullptr;
    for (const EpochRecord& record : log_) {
      const bool finite = std::isfinite(record.*column);
      if (finite) path += Format("%s%.1f %.1f", pen ? "L" : "M", X(record.epoch), Y(record.*column));
      if (finite) last = &record;
      pen = finite;
    }
    if (!last) return "";
    if (log_.size() == 1)
      dots = Format("<circle cx='%.1f' cy='%.1f' r='3' fill='%s'/>\n", X(1), Y(last->*column), colour);
    return "<path fill='none' " + std::string(style) + " d='" + path + "'/>\n" + dots +
           Format("<text x='%.1f' y='%.1f' fill='%s'>%s</text>\n", kWidth - kRight + 8, Y(last->*column) + 4, colour,
                  name);
  }

  std::string Mark(const EpochRecord& record, Column column, const char* colour) const {
    if (!std::isfinite(record.*column)) return "";
    return Format("<circle cx='%.1f' cy='%.1f' r='4' fill='white' stroke='%s' stroke-width='2'/>\n", X(record.epoch),
                  Y(record.*column), colour);
  }

 private:
  double Y(double value) const { return top_ + kPanelHeight * (axis_.high - value) / (axis_.high - axis_.low); }
  double X(double epoch) const {
    const double epochs = std::max<double>(2, static_cast<double>(log_.size()));
    return kLeft + (kWidth - kLeft - kRight) * (epoch - 1) / (epochs - 1);
  }
  std::string EpochTicks() const {
    std::string text;
    const double bottom = top_ + kPanelHeight;
    const int count = static_cast<int>(log_.size()), step = std::max(1, (count + 9) / 10);
    for (int epoch = 1; epoch <= count; epoch += step)
      text += Format("<text x='%.1f' y='%.1f' text-anchor='middle'>%d</text>\n", X(epoch), bottom + 18, epoch);
    return text +
           Format("<path d='M%.1f %.1fV%.1fH%.1f' fill='none' stroke='#444'/>\n", kLeft, top_, bottom, kWidth - kRight);
  }

  const TrainingLog& log_;
  double top_;
  Axis axis_;
};

std::string Caption(const EpochRecord& best) {
  return Format("<text x='%.0f' y='24'>Best: epoch %d, %.2f dB; cubic %.2f dB, Lanczos %.2f dB</text>\n", kLeft,
                best.epoch, best.psnr, best.cubic, best.lanczos);
}

}  // namespace

std::string DrawLearningCurve(const TrainingLog& log) {
  std::string text = Format(
      "<?xml version='1.0' encoding='UTF-8'?>\n<svg xmlns='http://www.w3.org/2000/svg' viewBox='0 0 %.0f %.0f' "
      "width='%.0f' height='%.0f' font-family='sans-serif' font-size='12' fill='#222'>\n<title>Learning curve</title>\n"
      "<rect width='100%%' height='100%%' fill='white'/>\n",
      kWidth, kHeight, kWidth, kHeight);
  const Panel quality(log, kFirstPanel, {&EpochRecord::psnr, &EpochRecord::cubic, &EpochRecord::lanczos});
  const Panel cost(log, kSecondPanel, {&EpochRecord::cost});
  text += quality.Frame("PSNR on the held-out pictures (dB)");
  text += quality.Line(&EpochRecord::cubic, kCubicStyle, kCubicColour, "cubic");
  text += quality.Line(&EpochRecord::lanczos, kLanczosStyle, kLanczosColour, "Lanczos");
  text += quality.Line(&EpochRecord::psnr, kNetStyle, kNetColour, "network");
  text += cost.Frame("Cost of training");
  text += cost.Line(&EpochRecord::cost, kNetStyle, kNetColour, "cost");
  const auto best = std::max_element(log.begin(), log.end(),
                                     [](const EpochRecord& a, const EpochRecord& b) { return a.psnr < b.psnr; });
  if (best != log.end()) text += quality.Mark(*best, &EpochRecord::psnr, kNetColour) + Caption(*best);
  text += Format("<text x='%.1f' y='%.0f' text-anchor='middle'>epoch</text>\n", (kLeft + kWidth - kRight) / 2,
                 kHeight - 14);
  return text + "</svg>\n";
}

}  // namespace norv
