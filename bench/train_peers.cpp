#include "train_peers.h"

#if __has_include(<Eigen/Dense>)
#include <Eigen/Dense>
#define NORV_BENCH_EIGEN
#endif

namespace norv {

#ifdef NORV_BENCH_EIGEN
namespace {

class EigenTrainer : public PeerTrainer {
 public:
  EigenTrainer(const std::vector<int>& sizes, bool logistic) : logistic_(logistic) {
    for (size_t k = 1; k < sizes.size(); ++k) {
      Layer layer;
      layer.W = Eigen::MatrixXf::Random(sizes[k], sizes[k - 1]) * 0.1f;
      layer.b = layer.a = layer.z = layer.delta = Eigen::VectorXf::Zero(sizes[k]);
      layers_.push_back(layer);
    }
  }

  void Learn(const float* input, const float* target, float rate) override {
    const Eigen::Map<const Eigen::VectorXf> x(input, layers_[0].W.cols());
    EvaluateFirst(x);
    for (size_t k = 1; k < layers_.size(); ++k) Evaluate(layers_[k], k);
    Layer& last = layers_.back();
    last.delta = (last.a - Eigen::Map<const Eigen::VectorXf>(target, last.a.size())).cwiseProduct(Slope(last));
    for (size_t k = layers_.size() - 1; k > 0; --k) {
      layers_[k - 1].delta.noalias() = layers_[k].W.transpose() * layers_[k].delta;
      layers_[k - 1].delta = layers_[k - 1].delta.cwiseProduct(Slope(layers_[k - 1]));
    }
    for (size_t k = 0; k < layers_.size(); ++k) {
      Layer& layer = layers_[k];
      layer.b -= rate * layer.delta;
      if (k == 0)
        layer.W.noalias() -= (rate * layer.delta) * x.transpose();
      else
        layer.W.noalias() -= (rate * layer.delta) * layers_[k - 1].a.transpose();
    }
  }

 private:
  struct Layer {
    Eigen::MatrixXf W;
    Eigen::VectorXf b, z, a, delta;
  };

  void Activate(Layer& layer) {
    if (logistic_)
      layer.a = ((-layer.z.array()).exp() + 1).inverse();
    else
      layer.a = (layer.z.array() >= 0).select(layer.z, 0.01f * layer.z);
  }
  void EvaluateFirst(const Eigen::Map<const Eigen::VectorXf>& x) {
    layers_[0].z = layers_[0].b;
    layers_[0].z.noalias() += layers_[0].W * x;
    Activate(layers_[0]);
  }
  void Evaluate(Layer& layer, size_t k) {
    layer.z = layer.b;
    layer.z.noalias() += layer.W * layers_[k - 1].a;
    Activate(layer);
  }
  Eigen::VectorXf Slope(const Layer& layer) const {
    if (logistic_) return layer.a.array() * (1 - layer.a.array());
    return (layer.z.array() < 0)
        .select(Eigen::VectorXf::Constant(layer.z.size(), 0.01f), Eigen::VectorXf::Ones(layer.z.size()));
  }

  bool logistic_;
  std::vector<Layer> layers_;
};

}  // namespace

std::unique_ptr<PeerTrainer> MakeEigenTrainer(const std::vector<int>& sizes, int kind) {
  return std::make_unique<EigenTrainer>(sizes, kind == 1);
}
#else
std::unique_ptr<PeerTrainer> MakeEigenTrainer(const std::vector<int>&, int) { return nullptr; }
#endif

void MultiplyAndAddApart(int64_t operations) {
#ifdef __AVX512F__
  constexpr int kLanes = 16;
#else
  constexpr int kLanes = 8;
#endif
  using Vector = float __attribute__((vector_size(4 * kLanes)));
  Vector product[6] = {}, sum[6] = {};
  Vector one = Vector{} + 1.0f;
  asm volatile("" : "+v"(one));
  for (int64_t i = 0; i < operations; i += 12 * kLanes) {
    for (int k = 0; k < 6; ++k) product[k] = product[k] * one;
    for (int k = 0; k < 6; ++k) sum[k] = sum[k] + one;
    for (int k = 0; k < 6; ++k) asm volatile("" : "+v"(product[k]), "+v"(sum[k]));
  }
}

}  // namespace norv
