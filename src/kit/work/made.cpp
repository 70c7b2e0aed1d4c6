#include "kit/work/made.h"

#include "kit/guidance/json.h"

namespace norv {
namespace {

JsonObject RowOf(const Certificate& certificate) {
  return JsonObject()
      .Text("filter", certificate.filter)
      .Number("largest", certificate.largest)
      .Number("rms", certificate.rms)
      .Number("largestRounded", certificate.largestRounded)
      .Number("rmsRounded", certificate.rmsRounded);
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
