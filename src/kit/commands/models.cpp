#include <algorithm>
#include <cmath>
#include <cstdio>

#include "kit/commands/command.h"
#include "kit/failure.h"
#include "kit/guidance/json.h"
#include "kit/guidance/manner.h"
#include "kit/models/catalogue.h"
#include "platform/console.h"

namespace norv {
namespace {

struct Settings {};

Options Rows(Settings&) { return {}; }

std::string InDecibels(const std::optional<double>& value) {
  char text[32] = "-";
  if (value) std::snprintf(text, sizeof text, "%.2f", *value);
  return text;
}

void SayRows(const std::vector<Model>& models) {
  for (const Model& model : models)
    SayRow(JsonObject()
               .Text("name", model.name)
               .Whole("factor", model.factor)
               .Text("made for", model.facts.madeFor)
               .Number("averaged", model.facts.averaged.value_or(NAN))
               .Number("plain", model.facts.plain.value_or(NAN))
               .Text("path", model.path));
}

void Run(const Settings&) {
  const std::vector<Model> models = FindModels();
  if (models.empty()) Fail("%s", NoNetworks().c_str());
  if (RunManner().json) return SayRows(models);
  size_t name = 4, madeFor = 8;
  for (const Model& model : models) {
    name = std::max(name, model.name.size());
    madeFor = std::max(madeFor, model.facts.madeFor.size());
  }
  constexpr char kRow[] = "%-*s  %-6s  %-*s  %5s  %5s  %s\n";
  Say(kRow, int(name), "name", "factor", int(madeFor), "made for", "dB", "plain", "path");
  for (const Model& model : models)
    Say(kRow, int(name), model.name.c_str(), model.factor == 2 ? "x2" : "x4", int(madeFor), model.facts.madeFor.c_str(),
        InDecibels(model.facts.averaged).c_str(), InDecibels(model.facts.plain).c_str(), model.path.c_str());
}

}  // namespace

Command ModelsCommand() {
  return MakeCommand<Settings>(
      {.name = "models",
       .purpose = "List the networks that enlarge takes by name",
       .examples = "norvkit models\nNORV_MODELS=my-networks norvkit models",
       .notes =
           "dB is the PSNR of the luminance as enlarge takes the network, averaged over eight orientations, and plain\n"
           "that of --quick: means over held-out pictures (models/README.md).\n"
           "Networks are looked for in the folders that NORV_MODELS names, in models beside norvkit, and in\n"
           "../share/norv from there."},
      Rows, Run);
}

}  // namespace norv
