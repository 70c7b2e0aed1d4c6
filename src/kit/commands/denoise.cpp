#include "kit/commands/command.h"
#include "kit/commands/shared_rows.h"
#include "kit/scale/restore_picture.h"
#include "kit/work/run_work.h"

namespace norv {
namespace {

struct Settings {
  bool fast = false;
  DenoiseChoice how;
  WorkChoice choice;
};

Options Rows(Settings& settings) {
  return Joined({PlaceRows(settings.choice.places, "the cleaner one"),
                 {{.name = "--fast",
                   .target = &settings.fast,
                   .help = "principal components of patches, as norv 6 (unless --best)",
                   .aside = true},
                  {.name = "--best",
                   .target = &settings.how.best,
                   .help = "low-rank groups of similar patches, as norv 7: much slower",
                   .excludes = "--fast"},
                  {.name = "--noise",
                   .target = &settings.how.noise,
                   .unit = "N",
                   .check = Between{0, 255},
                   .help = "its standard deviation in grey levels",
                   .byDefault = "estimated"}},
                 ReceiptRows(settings.choice.receipt),
                 WorkRows(settings.choice)});
}

WorkPlan PlanOf(const DenoiseChoice& how, const PictureShape& shape) {
  const char* method = how.best ? "denoised by groups of patches" : "denoised by components of patches";
  WorkPlan plan{shape, method, 1, [how](PictureSource source, int32_t threads) {
                  DenoiseChoice inTeam = how;
                  inTeam.threads = threads;
                  return DenoisedRows(std::move(source), inTeam);
                }};
  plan.cost = CostOfDenoising(shape, how.best);
  return plan;
}

PictureWork WorkOf(Settings& settings) {
  return {[how = settings.how](const PictureShape& shape) { return PlanOf(how, shape); }};
}

}  // namespace

Command DenoiseCommand() {
  return MakeWorkCommand<Settings>({.name = "denoise",
                                    .purpose = "Remove noise and compression grain from a picture",
                                    .examples = "norvkit denoise noisy.png clean.png --threads 2\n"
                                                "norvkit denoise noisy.png clean.png --best --noise 20"},
                                   Rows, WorkOf);
}

}  // namespace norv
