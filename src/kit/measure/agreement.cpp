#include "kit/measure/agreement.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "kit/measure/reduced_rows.h"
#include "kit/pictures/luminance.h"
#include "kit/pictures/picture.h"
#include "kit/pictures/strips.h"
#include "kit/scale/premultiplied.h"
#include "kit/scale/refine.h"
#include "raster/right_inverse.h"

namespace norv {
namespace {

// Just above 1, a reduction lets next to nothing pass of some details, which damping keeps from being blown up more
// than 5 times as much as others. Beyond so many small pixels weights are below a thousandth.
constexpr double kDamping = 0.01;
constexpr int32_t kReach = 8;

// One axis there and back.
struct AxisTables {
  ResampleTable reduction, inverse;

  AxisTables(int32_t large, int32_t small)
      : reduction(ReductionTable(large, small, *FilterOfKernelCode(-1))),
        inverse(RightInverse(reduction, large, kDamping, kReach)) {}
};

class Projection {
 public:
  Projection(const PictureSize& large, const PictureSize& small)
      : height_(large.height),
        smallHeight_(small.height),
        across_(large.width, small.width),
        down_(large.height, small.height) {}

  // Rows of the small picture that rows of the large one have a say in.
  AxisPart Touched(RowRange made) const { return SourceOf(down_.inverse, smallHeight_, {made.first, made.rows}); }
  RowRange Needs(RowRange made) const {
    const AxisPart part = SourceOf(down_.reduction, height_, Touched(made));
    const int32_t first = std::min(part.first, made.first), end = std::max(part.first + part.count, made.End());
    return {first, end - first};
  }

  // small: the luminance of the rows that the strip touches.
  Picture Make(Picture held, RowRange which, RowRange made, matrix small) const {
    Premultiply(held);
    Picture rows(held.Width(), made.rows, held.channels, held.bits);
    CopyPart(held, made.first - which.first, made.rows, rows, 0);
    const matrix change = Change(LuminanceOf(held), which, made, small);
    for (int32_t k = 0; k < rows.Colours(); ++k)
      for (int32_t i = 0; i < change.mn; ++i) rows.plane[k].x[i] += change.x[i];
    Unpremultiply(rows);
    return rows;
  }

 private:
  // missed: the small rows; becomes what the reduction misses of them.
  matrix Change(const matrix& held, RowRange which, RowRange made, matrix& missed) const {
    const AxisPart touched = Touched(made);
    matrix narrow, reduced, wide, change;
    ResampleAlongRows(held, narrow, across_.reduction);
    ResampleAlongColumns({narrow, which.first, height_}, reduced, down_.reduction, touched.first, touched.count);
    for (int32_t i = 0; i < missed.mn; ++i) {
      missed.x[i] -= reduced.x[i];
      if (!std::isfinite(missed.x[i])) missed.x[i] = 0;
    }
    ResampleAlongRows(missed, wide, across_.inverse);
    ResampleAlongColumns({wide, touched.first, smallHeight_}, change, down_.inverse, made.first, made.rows);
    return change;
  }

  int32_t height_, smallHeight_;
  AxisTables across_, down_;
};

}  // namespace

PictureSource Agreeing(PictureSource large, const std::shared_ptr<PassedLuminance>& passed, const PictureSize& small,
                       int32_t threads) {
  const PictureShape shape = large.shape;
  const auto projection = std::make_shared<const Projection>(PictureSize{shape.width, shape.height}, small);
  const auto needs = [projection](RowRange made) { return projection->Needs(made); };
  const auto prepare = [projection, passed](RowRange made) {
    const AxisPart touched = projection->Touched(made);
    const auto luminance = std::make_shared<matrix>(TakePassed(*passed, touched.first, touched.count));
    return [projection, luminance](Picture held, RowRange which, RowRange strip) {
      return projection->Make(std::move(held), which, strip, std::move(*luminance));
    };
  };
  const PictureSource made = InStrips(std::move(large), shape, {needs, nullptr, kAgreeingRows, prepare}, threads);
  return {shape, made.read};  // from the top alone, as the luminance passes
}

}  // namespace norv
