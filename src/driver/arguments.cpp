#include "driver/arguments.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <limits>
#include <variant>

namespace norv {
namespace {

using Field = std::variant<int32_t RestoreParameters::*, float RestoreParameters::*, bool RestoreParameters::*>;

struct Row {
  const char* name;
  int32_t position;
  Field field;
  float initial;
};

using P = RestoreParameters;
constexpr Row kRestoreRows[] = {
    {"FACTOR", 2, &P::factor, 4},
    {"KERNEL", 3, &P::kernelCode, 0},
    {"LAMBDA_CROSS", 4, &P::lambdaCross, 0.06f},
    {"LAMBDA", 5, &P::lambda, 0.035f},
    {"DELTA_CROSS", 6, &P::deltaCross, 1},
    {"DELTA", 7, &P::delta, 1},
    {"GATE_CROSS", 8, &P::gateCross, 0.05f},
    {"GATE", 9, &P::gate, 0.05f},
    {"SPARE_CROSS", 10, &P::spareCross, 1},
    {"SPARE", 11, &P::spare, 1},
    {"SHAPE_CROSS", 12, &P::shapeCross, 0.8f},
    {"SHAPE_DOT", 13, &P::shapeDot, 0.8f},
    {"STEPS", 14, &P::steps, 17},
    {"ITERATIONS", 15, &P::iterations, 6},
    {"ORIENTATION_SCALE", 16, &P::orientationScale, 0.7f},
    {"EMPHASIS", 17, &P::emphasis, 1},
    {"REPRESENTATION", 18, &P::representation, 1},
    {"TYPE", 19, &P::type, 5},
    {"KEEP_MASK", 20, &P::keepMask, 0},
    {"EDGE_THRESHOLD", 16, &P::edgeThreshold, 25},
};

// Every field has a row of its own, and every position from 2 to the unread one at least one row.
constexpr bool IsComplete() {
  for (const Row* row = std::begin(kRestoreRows); row != std::end(kRestoreRows); ++row)
    if (std::any_of(row + 1, std::end(kRestoreRows), [&](const Row& other) { return other.field == row->field; }))
      return false;
  for (int32_t position = 2; position < kUnreadPosition; ++position)
    if (std::none_of(std::begin(kRestoreRows), std::end(kRestoreRows),
                     [&](const Row& row) { return row.position == position; }))
      return false;
  return sizeof(RestoreParameters) == 4 * std::size(kRestoreRows);
}
static_assert(IsComplete());

bool IsBlank(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

}  // namespace

int32_t DecodeInteger(const std::string& text) {
  auto c = std::find_if_not(text.begin(), text.end(), IsBlank);
  const bool negative = c != text.end() && *c == '-';
  if (c != text.end() && (*c == '-' || *c == '+')) ++c;
  using Limits = std::numeric_limits<int32_t>;
  int64_t value = 0;
  for (; c != text.end() && *c >= '0' && *c <= '9'; ++c)
    value = std::min<int64_t>(10 * value + (*c - '0'), int64_t{Limits::max()} + 1);
  return static_cast<int32_t>(std::clamp<int64_t>(negative ? -value : value, Limits::min(), Limits::max()));
}

float DecodeFloat(const std::string& text) { return static_cast<float>(std::strtod(text.c_str(), nullptr)); }

RestoreParameters DefaultRestoreParameters() {
  RestoreParameters parameters{};
  for (const Row& row : kRestoreRows)
    std::visit(
        [&](auto field) {
          using T = std::remove_reference_t<decltype(parameters.*field)>;
          parameters.*field = static_cast<T>(row.initial);
        },
        row.field);
  return parameters;
}

RestoreParameters DecodeRestoreParameters(const Arguments& arguments) {
  RestoreParameters parameters{};
  for (const Row& row : kRestoreRows) {
    if (auto* integer = std::get_if<int32_t P::*>(&row.field)) parameters.** integer = arguments.Integer(row.position);
    if (auto* real = std::get_if<float P::*>(&row.field)) parameters.** real = arguments.Float(row.position);
    if (auto* flag = std::get_if<bool P::*>(&row.field)) parameters.** flag = arguments.Flag(row.position);
  }
  return parameters;
}

std::string RestoreArgumentNames() {
  std::string names;
  for (int32_t position = 2; position < kUnreadPosition; ++position) {
    const auto* row =
        std::find_if(std::begin(kRestoreRows), std::end(kRestoreRows), [&](auto& r) { return r.position == position; });
    names += row->name + std::string(" ");
  }
  return names + "UNREAD THREADS";
}

}  // namespace norv
