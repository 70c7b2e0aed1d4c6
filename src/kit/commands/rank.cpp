#include <cstdio>
#include <filesystem>

#include "kit/commands/command.h"
#include "kit/commands/shared_rows.h"
#include "kit/guidance/json.h"
#include "kit/guidance/manner.h"
#include "kit/pictures/destination.h"
#include "kit/search/ranking.h"
#include "platform/console.h"

namespace norv {
namespace {

struct Settings {
  std::string folder, keep;
  RankChoice choice;
  bool overwrite = false;
};

Options Rows(Settings& settings) {
  return {{.name = "FOLDER", .target = &settings.folder, .help = "a folder of pictures"},
          {.name = "--by",
           .target = &settings.choice.factor,
           .unit = "N",
           .check = Between{2, 4},
           .help = "how many times larger",
           .aliases = "--factor"},
          {.name = "--pictures",
           .target = &settings.choice.pictures,
           .unit = "N",
           .check = Between{1, 10000},
           .help = "how many of the folder are measured on, evenly spread over their names"},
          {.name = "--side",
           .target = &settings.choice.side,
           .unit = "N",
           .check = Between{64, 8192},
           .help = "pixels a side of the middle that is taken of each picture, at most"},
          {.name = "--keep",
           .target = &settings.keep,
           .unit = "NAME",
           .help = "store the best way, for --preset NAME of norvkit enlarge"},
          OverwriteRow(settings.overwrite)};
}

void PrintTable(const Ranking& ranking) {
  Say("%7s  %6s  %8s  way\n", "dB", "SSIM", "s/MP");
  for (const RankedWay& ranked : ranking.ways)
    Say("%7.2f  %6.4f  %8.2f  %s\n", Printable(ranked.decibels), Printable(ranked.similarity), ranked.seconds,
        ranked.way.InWords().c_str());
}

void PrintRows(const Ranking& ranking) {
  for (const RankedWay& ranked : ranking.ways)
    SayRow(JsonObject()
               .Text("method", ranked.way.method)
               .Text("model", ranked.way.model)
               .Flag("quick", ranked.way.quick)
               .Text("preset", ranked.way.preset)
               .Number("psnr", ranked.decibels)
               .Number("ssim", ranked.similarity)
               .Number("seconds_a_megapixel", ranked.seconds));
}

std::string NoteOf(const Ranking& ranking, const RankChoice& choice) {
  char note[160];
  std::snprintf(note, sizeof note,
                "The best of %zu ways, %d times larger, on %zu pictures: %.2f dB, SSIM %.4f, %.2f s a megapixel.",
                ranking.ways.size(), choice.factor, ranking.pictures.size(), ranking.ways[0].decibels,
                ranking.ways[0].similarity, ranking.ways[0].seconds);
  return note;
}

void Run(const Settings& settings) {
  const std::string kept = settings.keep.empty() ? "" : PlaceToKeep(settings.keep);
  if (!kept.empty()) RequireFree(kept, settings.overwrite);
  const Ranking ranking = RankWays(settings.folder, settings.choice);
  RunManner().json ? PrintRows(ranking) : PrintTable(ranking);
  const KeptWay& best = ranking.ways[0].way;
  Tell("the best on %zu %s: norvkit enlarge PICTURE OUT --by %d %s", ranking.pictures.size(),
       ranking.pictures.size() == 1 ? "picture" : "pictures", settings.choice.factor, best.AsOptions().c_str());
  if (kept.empty()) return;
  KeepWay(settings.keep, best, NoteOf(ranking, settings.choice));
  Tell("kept in %s: norvkit enlarge PICTURE OUT --preset %s%s", kept.c_str(), settings.keep.c_str(),
       best.method == "restore" ? ", or norvkit restore" : "");
}

}  // namespace

Command RankCommand() {
  return MakeCommand<Settings>(
      {.name = "rank",
       .purpose = "Find out which way of enlarging is the best for your own pictures",
       .examples = "norvkit rank photos\n"
                   "norvkit rank photos --by 4 --pictures 12 --keep mine\n"
                   "norvkit enlarge photo.jpg large.png --preset mine",
       .notes = "The middles of some pictures are shrunk by the cubic filter, rounded to bytes and enlarged again in "
                "every way there is; dB and SSIM say how near the luminance comes to what was there, s/MP how many "
                "seconds of a core a megapixel of the small picture takes. Shrinking hides most of what "
                "compression left in JPEG files: what is measured is how pictures without such traces are enlarged, "
                "and the networks and the preset made for compressed pictures are at a disadvantage."},
      Rows, Run);
}

}  // namespace norv
