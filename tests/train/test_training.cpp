#include <set>

#include "net/forward.h"
#include "support/levels.h"
#include "support/nets.h"
#include "support/samples.h"
#include "support/test.h"
#include "train/backward.h"
#include "train/row_net.h"
#include "train/train.h"
#include "train/training_watch.h"

namespace {

// The network's file, every NaN alike.
std::string FileOf(const NeuralNet& net) {
  std::string bytes = NetBytes(net);
  for (size_t i = 0; i < bytes.size(); i += sizeof(float)) {
    float x;
    std::memcpy(&x, &bytes[i], sizeof x);
    if (std::isnan(x)) bytes.replace(i, sizeof x, "nan.");
  }
  return bytes;
}

bool IsSame(const NeuralNet& a, const NeuralNet& b) { return FileOf(a) == FileOf(b); }

// Units of kind 0 have all kinds in turn.
NeuralNet MakeNet(int32_t N0, const std::vector<int32_t>& sizes, int32_t kind, unsigned seed = 1) {
  return RandomRecord(N0, sizes, kind ? std::vector{kind} : kAllKinds, seed);
}

NeuralNet Trained(NeuralNet net, const TrainingSet& set, const TrainingOptions& options,
                  TrainedForm form = TrainedForm::rows) {
  TrainingSet copy;
  CreateTrainingSet(copy, set.N, set.Nin, set.Ny);
  std::copy_n(set.records, set.N * set.RecordFloats(), copy.block.get());
  TrainNet(net, copy, options, form, [](const EpochReport&) {});
  return net;
}

bool FormsAgree(const NeuralNet& net, const TrainingSet& set, const TrainingOptions& options) {
  return IsSame(Trained(net, set, options, TrainedForm::record), Trained(net, set, options));
}

void Evaluate(NeuralNet& net, const TrainingSet& set) {
  matrix input(set.Nin, 1);
  std::copy_n(set.Input(0), set.Nin, input.x);
  ForwardPass(net, input, 1);
}

double CostOf(NeuralNet net, const TrainingSet& set, int32_t costSelection) {
  Evaluate(net, set);
  double cost = 0;
  for (int32_t u = 0; u < set.Ny; ++u)
    cost += static_cast<double>(CostOfError(costSelection, net.layers.back().units[u].a - set.Target(0)[u]).cost);
  return cost;
}

}  // namespace

TEST_CASE("training: rows and record learn the same bits, for all costs, kinds, clips, momenta, orders and shapes") {
  for (const std::vector<int32_t>& shape : {std::vector<int32_t>{4}, {17, 4}, {32, 16, 4}, {10, 7, 5, 16}, {64, 33, 4}})
    for (const int32_t N0 : {5, 8, 49})
      for (int32_t costSelection = 0; costSelection <= 4; ++costSelection)
        for (const float clip : {0.0f, 0.0005f})
          for (const float momentum : {0.0f, 0.9f}) {
            NeuralNet net = MakeNet(N0, shape, 0, static_cast<uint32_t>(costSelection));
            const TrainingSet set = MakeSamples(40, N0, net.LastNi());
            INFO(net.N[0], " ", N0, " ", costSelection, " ", clip, " ", momentum);
            CHECK(FormsAgree(net, set, {3, 0.05f, 0.01f, costSelection, costSelection % 3, clip, momentum, 1}));
          }
}

TEST_CASE("training: each kind alone, up to infinities and worse") {
  for (int32_t kind = 1; kind <= 17; ++kind)
    for (const float nu : {0.05f, 1e4f}) {
      CAPTURE(kind);
      CHECK(FormsAgree(MakeNet(24, {16, 16, 4}, kind), MakeSamples(60, 24, 4), {2, nu, nu, 0, 0, 0, 0, 1}));
    }
  // Inputs that no picture has.
  TrainingSet set = MakeSamples(60, 24, 4);
  for (int32_t i = 0; i < set.N; i += 2) set.Record(i)[i % 28] = i % 3 ? INFINITY : i % 5 ? -1e30f : 1e-42f;
  const NeuralNet net = MakeNet(24, {16, 16, 4}, 0);
  CHECK(FormsAgree(net, set, {2, 0.01f, 0.01f, 2, 0, 0.1f, 0.5f, 1}));
  // What diverges leaves the same bytes, NaN and all, at every vector level.
  for (const float momentum : {0.0f, 0.9f}) {
    std::set<std::string> files;
    for (const VectorLevel level : AvailableLevels()) {
      const ForcedLevel forced(level);
      files.insert(NetBytes(Trained(net, MakeSamples(60, 24, 4), {3, 1e4f, 1, 0, 0, 0, momentum, 1})));
    }
    CHECK(files.size() == 1);
  }
}

TEST_CASE("training: deltas of logistic units are exact where their short exponentials leave them open") {
  // One delta in some 8000 is near enough to a rounding boundary; nothing is learned, so that all samples are
  // independent and their deltas seen.
  constexpr int32_t kSamples = 4000;
  NeuralNet plain = MakeNet(8, {64, 64, 256}, 1, 5);
  for (NetLayer& layer : plain.layers)
    for (NetUnit& unit : layer.units)
      unit.b *= 5 * std::sqrt(static_cast<float>(unit.Nin + 1));  // slopes are most exact at 0
  NeuralNet packed = plain;
  const TrainingSet set = MakeSamples(kSamples, 8, 256);
  const auto record = MakeRecordTrainer(plain, 0, 0, 1);
  RowNet rows(packed, 0, 0, 1);
  int32_t differences = 0;
  for (int32_t i = 0; i < kSamples; ++i) {
    for (Trainer* trainer : {record.get(), static_cast<Trainer*>(&rows)}) {
      trainer->Learn(set.Input(i), set.Target(i));
      trainer->Finish();
    }
    for (size_t k = 0; k < 3; ++k)
      for (size_t u = 0; u < plain.layers[k].units.size(); ++u)
        differences += plain.layers[k].units[u].delta != packed.layers[k].units[u].delta;
  }
  CHECK(differences == 0);
}

TEST_CASE("training: every supported team learns the same, on the record and in rows") {
  const NeuralNet net = MakeNet(8, {16, 10, 16}, 0);
  const TrainingSet set = MakeSamples(10, 8, 16);
  for (const float momentum : {0.0f, 0.5f}) {
    const NeuralNet expected = Trained(net, set, {2, 0.05f, 0.01f, 3, 1, 0.01f, momentum, 1}, TrainedForm::record);
    for (const int32_t threads : {4, 8, 16})
      for (const TrainedForm form : {TrainedForm::record, TrainedForm::rows})
        CHECK(IsSame(Trained(net, set, {2, 0.05f, 0.01f, 3, 1, 0.01f, momentum, threads}, form), expected));
  }
  // Layers so large that a team pays, where there are processors for it.
  const NeuralNet large = MakeNet(24, {2900, 2900, 4}, 14);
  const TrainingSet few = MakeSamples(3, 24, 4);
  const auto learned = [&](int32_t threads) {
    NeuralNet result = large;
    RowNet rows(result, 0, 0.5f, threads, 4);
    rows.SetRate(0.001f, 0);
    for (int i = 0; i < few.N; ++i) rows.Learn(few.Input(i), few.Target(i));
    rows.Finish();
    return result;
  };
  CHECK(IsSame(learned(4), learned(1)));
}

TEST_CASE("training: other team sizes compute costs and nothing else; on purpose, callers count on it") {
  const NeuralNet net = MakeNet(8, {6, 4}, 1);
  const TrainingSet set = MakeSamples(5, 8, 4);
  for (const int32_t threads : {2, 0, -1, 32}) {
    NeuralNet trained = Trained(net, set, {3, 0.5f, 0.5f, 0, 0, 0, 0, threads});
    double cost = 0;  // of the outputs that the file brought along
    for (int64_t i = 0; i < 5; ++i)
      for (int32_t u = 0; u < 4; ++u) cost += std::pow(net.layers[1].units[u].a - set.Target(i)[u], 2) / 2;
    CHECK(trained.Cost == doctest::Approx(std::sqrt(cost / 40)));
    for (size_t u = 0; u < 4; ++u) {
      float& delta = trained.layers[1].units[u].delta;
      CHECK(delta != net.layers[1].units[u].delta);
      delta = net.layers[1].units[u].delta;
    }
    trained.Cost = net.Cost, trained.SampleCost = net.SampleCost;
    CHECK(IsSame(trained, net));
  }
}

TEST_CASE("training: units without activation are refused only where they would be evaluated") {
  NeuralNet hidden = MakeNet(8, {6, 4}, 1), output = hidden;
  for (NetUnit* unit : {&hidden.layers[0].units[2], &output.layers[1].units[3]}) {
    unit->ActivationKind = 0;
    BindActivation(*unit);
  }
  const auto options = [](int32_t iters, int32_t threads) { return TrainingOptions{iters, 0, 0, 0, 0, 0, 0, threads}; };
  CHECK(WhyNotTrainable(hidden, options(2, 4)) != nullptr);
  CHECK(WhyNotTrainable(hidden, options(2, 2)) == nullptr);
  CHECK(WhyNotTrainable(output, options(2, 2)) != nullptr);
  CHECK(WhyNotTrainable(output, options(0, 1)) == nullptr);
  CHECK(IsSame(Trained(output, MakeSamples(3, 8, 4), options(0, 1)), output));
}

TEST_CASE("training: the gradient is that of finite differences, for every cost and kind") {
  for (int32_t costSelection = 0; costSelection <= 3; ++costSelection)
    for (int32_t kind = 1; kind <= 17; ++kind) {
      INFO("cost ", costSelection, ", kind ", kind);
      NeuralNet net = MakeNet(8, {5, 4}, kind, 7);
      TrainingSet set = MakeSamples(1, 8, 4, 11);
      Evaluate(net, set);
      // Errors on both pieces of the smoothed cost, none at its corner.
      for (int32_t u = 0; u < 4; ++u)
        set.Record(0)[8 + u] = net.layers[1].units[u].a + (u % 2 ? -1.0f : 1.0f) * (u < 2 ? 0.1f : 0.0015f);
      BackPropagate(net, set.Target(0), costSelection, 0, 1);
      for (size_t k = 0; k < 2; ++k)
        for (size_t u = 0; u < 4; ++u)
          for (const int32_t i : {0, 3, -1}) {  // -1: the bias
            const NetUnit& unit = net.layers[k].units[u];
            const double gradient = i < 0 ? unit.delta : unit.delta * unit.X.x[i];
            constexpr float kStep = 1e-3f;
            NeuralNet up = net, down = net;
            (i < 0 ? up.layers[k].units[u].b : up.layers[k].units[u].W.x[i]) += kStep;
            (i < 0 ? down.layers[k].units[u].b : down.layers[k].units[u].W.x[i]) -= kStep;
            const double difference = (CostOf(up, set, costSelection) - CostOf(down, set, costSelection)) / (2 * kStep);
            CHECK(gradient == doctest::Approx(difference).epsilon(0.02).scale(0.02));
          }
    }
}

TEST_CASE("costs: pieces meet, signs and odd values are as they are printed") {
  struct {
    int32_t selection;
    float error, cost, gradient;
  } const rows[] = {{0, 3, 4.5f, 3},       {4, -3, 4.5f, -3},       {1, -0.25f, 0.25f, -1},
                    {1, NAN, NAN, 1},      {2, NAN, NAN, 1},        {2, 0.003921570f, 0.003921570f, 1},
                    {3, 1, 0.6931472f, 1}, {3, 2, 1.6094379f, 0.8f}};
  for (const auto& row : rows) {
    INFO(row.selection, " ", row.error);
    const auto [cost, gradient] = CostOfError(row.selection, row.error);
    CHECK((std::isnan(row.cost) ? std::isnan(cost) : cost == row.cost));
    CHECK(gradient == row.gradient);
  }
  CHECK(std::signbit(CostOfError(1, -0.0f).gradient));
  CHECK(CostOfError(2, 0.003921569f).cost == doctest::Approx(0.003921569));
  CHECK(CostOfError(2, -0.003921569f).gradient == doctest::Approx(-1));
  CHECK((ClippedDelta(5, 2) == 2 && ClippedDelta(-5, 2) == -2 && ClippedDelta(-5, 0) == -5));
  CHECK((std::isnan(ClippedDelta(NAN, 2)) && ClippedDelta(5, NAN) == 5));
}

TEST_CASE("training: one epoch has no rate, so everything becomes NaN; on purpose, readers of the protocol know it") {
  NeuralNet net = MakeNet(8, {6, 4}, 1);
  TrainingSet set = MakeSamples(4, 8, 4);
  const std::string said = OutputOf([&] { TrainNet(net, set, {1, 0.1f, 0.2f, 0, 0, 0.5f, 0, 1}); });
  CHECK(said == "\n1 of 1  (nu = nan)  Cost = nan");
  CHECK(std::isnan(net.layers[0].units[0].W.x[0]));
  CHECK(FormsAgree(MakeNet(8, {6, 4}, 12), set, {1, 0.1f, 0.2f, 1, 0, 0.5f, 0, 1}));
}

TEST_CASE("training: no epoch changes nothing; a rate of 0 with clipping clips nothing") {
  const NeuralNet net = MakeNet(8, {6, 4}, 1);
  const TrainingSet set = MakeSamples(4, 8, 4);
  for (const int32_t iters : {0, -3, std::numeric_limits<int32_t>::min()})
    CHECK(IsSame(Trained(net, set, {iters, 0.1f, 0.1f, 0, 0, 0, 0, 1}), net));
  NeuralNet untaught = net;
  RowNet(untaught, 0, 0, 1).Finish();
  CHECK(IsSame(untaught, net));
  const NeuralNet still = Trained(net, set, {2, 0, 0, 0, 0, 0.5f, 0, 1});
  CHECK(IsSame(still, Trained(net, set, {2, 0, 0, 0, 0, 0, 0, 1})));
  CHECK(SameBits(still.layers[0].units[2].W, net.layers[0].units[2].W));
  // Without momentum the velocities of the file pass through; with it they are forgotten.
  CHECK(SameBits(still.layers[0].units[2].V, net.layers[0].units[2].V));
  CHECK(Trained(net, set, {0, 0, 0, 0, 0, 0, 0.5f, 1}).layers[0].units[2].V.x[3] == 0);
}

TEST_CASE("training: orders of the samples and reported costs are those of a loop by hand") {
  const NeuralNet net = MakeNet(8, {6, 4}, 1);
  const TrainingSet set = MakeSamples(9, 8, 4);
  for (const int32_t alternate : {0, 1, 2, 5})
    for (int32_t costSelection = 0; costSelection <= 4; ++costSelection) {
      NeuralNet expected = net;
      const auto trainer = MakeRecordTrainer(expected, costSelection, 0, 1);
      trainer->SetRate(0.1f, 0);
      for (int32_t epoch = 0; epoch < 3; ++epoch) {
        expected.Cost = 0;
        const bool backward = alternate == 2 || (alternate == 1 && epoch == 1);
        for (int32_t i = 0; i < 9; ++i) {
          const int32_t sample = backward ? 8 - i : i;
          trainer->Learn(set.Input(sample), set.Target(sample));
        }
      }
      expected.Cost *= 1 / 72.0f;
      // Only this one is reported as a root, though the last one is the same cost.
      if (costSelection == 0) expected.Cost = std::sqrt(expected.Cost);
      CHECK(IsSame(Trained(net, set, {3, 0.1f, 0.1f, costSelection, alternate, 0, 0, 1}), expected));
    }
}

TEST_CASE("sparkline: from the least to the greatest, odd values blank, the last ones only") {
  CHECK(Sparkline({}, 5) == "");
  CHECK(Sparkline({9, 0, 3.5f, 7}, 3) == "\u2581\u2585\u2588");
  CHECK(Sparkline({NAN, 2, INFINITY}, 9) == " \u2581 ");
}
