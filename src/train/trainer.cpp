#include "train/trainer.h"

#include <algorithm>

#include "net/forward.h"
#include "train/backward.h"

namespace norv {
namespace {

class RecordTrainer : public Trainer {
 public:
  RecordTrainer(NeuralNet& net, int32_t costSelection, float momentum, int32_t threads)
      : net_(net), costSelection_(costSelection), momentum_(momentum), threads_(threads), input_(net.N0, 1) {}

  void SetRate(float nu, float bound) override {
    nu_ = nu;
    bound_ = bound;
  }
  void Learn(const float* input, const float* target) override {
    std::copy_n(input, input_.mn, input_.x);
    ForwardPass(net_, input_, threads_);
    BackPropagate(net_, target, costSelection_, bound_, threads_);
    UpdateWeights(net_, nu_, momentum_, threads_);
  }
  void Settle() override {}
  void ForgetVelocities() override { ResetMomentum(net_); }
  void Finish() override {}

 private:
  NeuralNet& net_;
  int32_t costSelection_;
  float momentum_;
  int32_t threads_;
  float nu_ = 0, bound_ = 0;
  matrix input_;
};

}  // namespace

std::unique_ptr<Trainer> MakeRecordTrainer(NeuralNet& net, int32_t costSelection, float momentum, int32_t threads) {
  return std::make_unique<RecordTrainer>(net, costSelection, momentum, threads);
}

}  // namespace norv
