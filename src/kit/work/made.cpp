#include "kit/work/made.h"

#include "kit/guidance/json.h"

namespace norv {
namespace {

// Of a Certificate and of the Closeness of its colours.
template <typename Figures>
JsonObject& AddFigures(JsonObject& row, const Figures& figures) {
  return row.Number("largest", figures.largest)
      .Number("rms", figures.rms)
      .Number("largestRounded", figures.largestRounded)
      .Number("rmsRounded", figures.rmsRounded);
}

JsonObject RowOf(const Certificate& certificate) {
  JsonObject row, colours;
  AddFigures(row.Text("filter", certificate.filter), certificate);
  if (certificate.colours) row.Object("colours", AddFigures(colours, *certificate.colours));
  return row;
}

}  // namespace

JsonObject RowOf(const Made& made) {
  JsonObject row;
  row.Text("input", made.input).Text("output", made.output);
  row.Whole("width", made.width).Whole("height", made.height).Text("method", made.method);
  row.Number("seconds", made.seconds).Whole("memory", static_cast<int64_t>(made.memory));
  if (made.certificate)
    row.Object("certificate", RowOf(*made.certificate));
  else
    row.Null("certificate");
  if (made.Failed()) row.Text("error", made.error);
  return row;
}

}  // namespace norv
