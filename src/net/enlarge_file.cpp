#include "net/enlarge_file.h"

#include <algorithm>
#include <vector>

#include "image/float_image_file.h"
#include "net/enlarge.h"
#include "net/enlarge_plane.h"
#include "platform/console.h"

namespace norv {
namespace {

void CopyMask(FloatImageReader& in, FloatImageWriter& out) {
  std::vector<uint32_t> words(size_t{1} << 18);
  for (int64_t left = in.MaskWords(); left > 0;) {
    const int64_t n = std::min(left, static_cast<int64_t>(words.size()));
    in.ReadMask(words.data(), n);
    out.WriteMask(words.data(), n);
    left -= n;
  }
}

void EnlargeInStrips(FloatImageReader& in, const std::string& to, const NeuralNet& net, bool shortcut, bool average,
                     int32_t threads, int32_t stripRows) {
  const int32_t factor = EnlargementFactor(net);
  FloatImageWriter out(to, in.width * factor, in.height * factor, in.format, in.MaskWords());
  if (!out.Failed()) {
    const bool seeking = in.CanSeek() && out.CanSeek();
    const auto write = [&](FloatImage& rows) { return out.WriteRows(rows); };
    NetEnlargeRows(in.Rows(), write, net, shortcut, average, threads, seeking ? stripRows : in.height);
    CopyMask(in, out);
    in.WarnIfShort();
  }
  // On purpose no failure: the run ends as usual even when the result cannot be written.
  static_cast<void>(out.Commit());
}

}  // namespace

void NetEnlargeFile(const std::string& from, const std::string& to, const NeuralNet& net, bool shortcut, bool average,
                    int32_t threads, int32_t stripRows) {
  FloatImageReader in(from);
  const bool enlarging = FindEnlargement(net.N0, net.LastNi()) && in.Planes() > 0 && in.width > 0 && in.height > 0;
  if (const char* reason = enlarging ? WhyNotEvaluable(net) : nullptr) throw reason;
  if (enlarging) RequireEnlargedCount(in.width, in.height, EnlargementFactor(net));
  if (threads == 0) threads = 1;
  if (enlarging && (threads == 1 || IsCutIntoBands(in.height, threads)))
    return EnlargeInStrips(in, to, net, shortcut, average, threads, stripRows);
  FloatImage image;
  if (in.IsOpen()) image.Take(in);
  NetEnlargeImage(image, net, shortcut, average, threads);
  static_cast<void>(image.Save(to, Folder::asGiven));
}

}  // namespace norv
