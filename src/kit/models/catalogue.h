// The networks that norvkit finds by name, and what is known of them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace norv {

// What a picture is, as far as it decides which network serves it best.
struct PictureNature {
  int32_t jpegQuality = 0;  // of the tables that it was compressed with, 1 .. 100; 0: none
  bool drawn = false;       // flat colours and lines instead of a photograph
};

// A way of enlarging that takes a network by itself.
enum class NetworkWay { best, quick };  // averaged; one plain pass

// A row of the table that lies beside networks (models/catalogue.txt says what stands in it).
struct ModelFacts {
  std::string madeFor = "-";
  bool best = false, quick = false;
  std::optional<double> plain, averaged;  // dB

  // Made for JPEG files in the first place.
  bool ForCompressed() const { return madeFor.starts_with("jpeg:"); }
  bool Takes(NetworkWay way) const { return way == NetworkWay::best ? best : quick; }
  std::optional<double> Decibels(NetworkWay way) const { return way == NetworkWay::best ? averaged : plain; }
  // The purpose among those it is made for that fits the picture best; empty when none fits.
  std::string PurposeFor(const PictureNature& nature) const;
};

struct Model {
  std::string name;    // of the file without .net
  std::string path;    // of the file
  int32_t factor = 0;  // 2 or 4
  ModelFacts facts;
};

// Where networks are looked for, in this order: the folders that NORV_MODELS names (with colons between, on Windows
// semicolons), models beside the executable, ../share/norv from there.
std::vector<std::string> ModelFolders();

// All networks there that enlarge, by name; of two of one name the first found. A file that is none is left out.
std::vector<Model> FindModels();

// "no networks in FOLDER, FOLDER": where they were looked for.
std::string NoNetworks();

// The one of that name, with or without .net. Throws a Failure that says which there are, or where they were looked
// for.
Model FindModel(const std::string& name);

}  // namespace norv
