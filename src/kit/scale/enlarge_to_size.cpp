#include "kit/scale/enlarge_to_size.h"

#include <utility>

#include "kit/failure.h"
#include "kit/pictures/destination.h"
#include "kit/pictures/file_kind.h"
#include "kit/pictures/picture.h"
#include "kit/scale/interpolation.h"
#include "kit/scale/scale.h"
#include "net/net_file.h"

namespace norv {
namespace {

PictureSize SizeOf(const PictureShape& shape) { return {shape.width, shape.height}; }

// How many times larger where that is a whole number for both sides, else 0.
int32_t WholeFactor(const PictureShape& shape, const PictureSize& size) {
  const int32_t factor = size.width / shape.width;
  return PictureSize{shape.width * factor, shape.height * factor} == size ? factor : 0;
}

// By the code of whole factors, whose bits are older than this file.
Picture ByWholeFactor(const Picture& picture, ResizeFilter filter, int32_t factor) {
  if (filter == ResizeFilter::nearest) return RepeatPixels(picture, factor);
  return InterpolatePicture(picture, factor,
                            filter == ResizeFilter::cubic ? Interpolation::cubic : Interpolation::lanczos);
}

}  // namespace

NeuralNet LoadNetwork(const std::string& path) {
  if (RecogniseWholeFile(path) != FileKind::net) Fail("%s is no network", path.c_str());
  NeuralNet net;
  LoadNet(net, path, Folder::asGiven);
  return net;
}

int32_t FactorOfNetwork(const std::string& path) {
  const NeuralNet net = LoadNetwork(path);
  RequireEnlargement(net);
  return net.LastNi() == 4 ? 2 : 4;
}

void EnlargeByNetworks(PictureSource picture, const NetworkPlan& plan, const NetEnlargement& how,
                       const PictureSize& size, const Destination& out) {
  for (const Model& pass : plan.passes) picture = EnlargedByNet(std::move(picture), LoadNetwork(pass.path), how);
  if (SizeOf(picture.shape) != size) picture = Resized(picture, size, ResizeFilter::lanczos);
  CopyRows(picture, out.Create(picture.shape));
}

void EnlargeByFilter(PictureSource picture, ResizeFilter filter, const PictureSize& size, const Destination& out) {
  const int32_t factor = WholeFactor(picture.shape, size);
  if (factor > 0)
    picture = HeldPicture(ByWholeFactor(AllRows(picture), filter, factor));
  else
    picture = Resized(picture, size, filter);
  CopyRows(picture, out.Create(picture.shape));
}

}  // namespace norv
