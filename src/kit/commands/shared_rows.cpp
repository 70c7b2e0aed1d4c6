#include "kit/commands/shared_rows.h"

#include "kit/formats/encoding.h"
#include "kit/scale/restore_presets.h"
#include "kit/scale/wanted_size.h"
#include "kit/training/start_net.h"
#include "kit/work/picture_work.h"
#include "net/layouts.h"

namespace norv {

Options Joined(std::initializer_list<Options> lists) {
  Options all;
  for (const Options& list : lists) all.insert(all.end(), list.begin(), list.end());
  return all;
}

std::string Listed(std::span<const std::string> words) {
  std::string list;
  for (const std::string& word : words) list += (list.empty() ? "" : ",") + word;
  return list;
}

Option PictureRow(std::string& target) {
  return {.name = "PICTURE", .target = &target, .help = "a picture, .fdib, .mat or .bit"};
}

Options PlaceRows(std::vector<std::string>& places, const char* what) {
  Option picture = {.name = "PICTURE", .target = &places, .help = "a picture, .fdib, .mat or .bit"};
  Option out = {.name = "OUT",
                .target = &places,
                .help = std::string(what) + ", in the format that its name says",
                .lastOfSeveral = true};
  return {std::move(picture), std::move(out)};
}

Option OutRow(std::string& target, const char* what) {
  return {.name = "OUT", .target = &target, .help = std::string(what) + ", in the format that its name says"};
}

Option OverwriteRow(bool& target) {
  return {.name = "--overwrite", .target = &target, .help = "replace a file that is there already", .aside = true};
}

Option PageRow(ReadChoice& choice) {
  return {.name = "--page",
          .target = &choice.page,
          .unit = "N",
          .check = Between{1, INT32_MAX},
          .help = "which page of a TIFF, or frame of an animation, is read",
          .byDefault = "1"};
}

Options WriteRows(WriteChoice& choice) {
  return {
      {.name = "--to",
       .target = &choice.to,
       .unit = "FORMAT",
       .help = "the format: png, jpg, tif and all other endings of names",
       .byDefault = "as the name says; needed for standard output, -"},
      {.name = "--bits",
       .target = &choice.bits,
       .unit = "N",
       .check = OneOf{"8,16,32"},
       .help = "bits a sample of the picture: 8, 16, or 32 for floats",
       .byDefault = "those of the input"},
      {.name = "--dither",
       .target = &choice.dither,
       .help = "to 8 bits: spread what rounding loses as fine noise, against steps in soft shading"},
      {.name = "--quality",
       .target = &choice.encoding.quality,
       .unit = "N",
       .check = Between{1, 100},
       .help = "quality of a JPEG or WebP, 1 to 100",
       .byDefault = "95"},
      {.name = "--lossless",
       .target = &choice.encoding.lossless,
       .help = "keep every sample, where the format can do either (WebP)",
       .excludes = "--quality"},
      {.name = "--compression",
       .target = &choice.encoding.compression,
       .unit = "N",
       .check = OneOf{"none,0,1,2,3,4,5,6,7,8,9"},
       .help = "trouble taken to make a PNG small: 0 or none, 9 all there is; none: a TIFF as large as its samples",
       .byDefault = "5"},
      {.name = "--strip", .target = &choice.encoding.strip, .help = "leave out all metadata but the colour profile"},
      OverwriteRow(choice.overwrite)};
}

Options ManyRows(WorkChoice& choice) {
  constexpr static char kHeading[] = "Many pictures";
  return {
      {.name = "--out",
       .target = &choice.folder,
       .unit = "DIR",
       .help = "every PICTURE is one to read, or a folder of them; results go into this folder, and a second run "
               "makes only what is missing or has changed",
       .heading = kHeading,
       .aside = true},
      {.name = "--name",
       .target = &choice.name,
       .unit = "PATTERN",
       .help = "of results: {stem} and {ext} of the picture, {factor}, {width}, {height} and {method} of the result",
       .byDefault = "{stem}{ext}; of what is larger {stem}_{factor}x{ext}",
       .heading = kHeading,
       .aside = true},
      {.name = "--recursive",
       .target = &choice.recursive,
       .help = "folders in folders too, the tree is kept",
       .aliases = "-r",
       .heading = kHeading,
       .aside = true},
      {.name = "--dry-run",
       .target = &choice.dryRun,
       .help = "only say what would be done, and by estimate how long it would take and how much memory",
       .heading = kHeading,
       .aside = true},
      {.name = "--memory",
       .target = &choice.memory,
       .unit = "SIZE",
       .help = "hold at most so much (2G, 500M) by fewer pictures at a time; what does not fit alone is refused",
       .byDefault = "what there is",
       .heading = kHeading,
       .aside = true}};
}

Options WorkRows(WorkChoice& choice) {
  const Option report = {.name = "--report",
                         .target = &choice.report,
                         .unit = "FILE.html",
                         .help = "a page that shows what was done, before and after",
                         .aside = true};
  return Joined({ManyRows(choice), {PageRow(choice.read), report}, WriteRows(choice.write)});
}

Options SizeRows(WantedSize& size, const char* direction, const char* byDefault) {
  constexpr Between kPixels{1, 1000000};
  return {{.name = "--by",
           .target = &size.by,
           .unit = "X",
           .check = Between{direction == std::string_view("larger") ? 1 : 1.01, 64},
           .help = std::string("how many times ") + direction + ", such as 1.5 or 3",
           .byDefault = byDefault,
           .aliases = "--factor",
           .excludes = "--width,--height,--longest"},
          {.name = "--width",
           .target = &size.width,
           .unit = "N",
           .check = kPixels,
           .help = "in pixels",
           .byDefault = "as the picture's proportions say"},
          {.name = "--height",
           .target = &size.height,
           .unit = "N",
           .check = kPixels,
           .help = "in pixels; with --width as large as fits both",
           .byDefault = "as the picture's proportions say"},
          {.name = "--longest",
           .target = &size.longest,
           .unit = "N",
           .check = kPixels,
           .help = "pixels of the longer side",
           .excludes = "--width,--height"}};
}

Option DenoiseFirstRow(bool& target) {
  return {.name = "--denoise", .target = &target, .help = "remove noise first, as norvkit denoise does"};
}

Options ReceiptRows(ReceiptChoice& choice) {
  choice.offered = true;
  return {{.name = "--receipt",
           .target = &choice.beside,
           .help = "beside results that are no PNG, which carry theirs: a file that says how they were made",
           .aside = true},
          {.name = "--no-receipt",
           .target = &choice.none,
           .help = "a PNG without what norvkit verify makes it again from",
           .excludes = "--receipt",
           .aside = true}};
}

Option CertificateRow(bool& target) {
  return {.name = "--certificate",
          .target = &target,
          .help = "say how far the result, reduced again, is from the picture: nothing is invented",
          .aside = true};
}

Options KnobRows(KnobValues& values, bool refining) {
  const std::span<const RestoreKnob> knobs = RestoreKnobs();
  values.resize(knobs.size());
  Options rows;
  for (size_t i = 0; i < knobs.size(); ++i) {
    if (refining && !knobs[i].refines) continue;
    const bool whole = std::holds_alternative<int32_t RestoreParameters::*>(knobs[i].field);
    rows.push_back({.name = knobs[i].option,
                    .target = &values[i],
                    .unit = whole ? "N" : "X",
                    .check = Between{knobs[i].low, knobs[i].high, whole},
                    .help = knobs[i].meaning,
                    .aliases = knobs[i].aliases,
                    .heading = "Instead of the preset's (docs/restoration.md says which to turn when)"});
  }
  return rows;
}

Options NetRows(NetPlan& plan, const char* hiddenByDefault, const char* kindsByDefault) {
  return {
      {.name = "--inputs",
       .target = &plan.inputs,
       .unit = "N",
       .check = Between{1, 72},
       .help = "pixels around one that the network sees: " + LayoutInputs(),
       .aliases = "--layout"},
      {.name = "--factor", .target = &plan.factor, .unit = "N", .check = OneOf{"2,4"}, .help = "enlargement: 2 or 4"},
      {.name = "--hidden",
       .target = &plan.hidden,
       .unit = "N,N",
       .check = Between{1, 65536},
       .help = "units of the hidden layers",
       .byDefault = hiddenByDefault},
      {.name = "--kinds",
       .target = &plan.kinds,
       .unit = "K,K,K",
       .check = Between{1, 17},
       .help = "activation kind of every layer, outputs last",
       .byDefault = kindsByDefault},
      {.name = "--seed", .target = &plan.seed, .unit = "N", .help = "seed of the random weights"}};
}

}  // namespace norv
