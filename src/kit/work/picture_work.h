// What makes a picture of a picture, as data: the commands that do so (enlarge, restore, denoise, shrink, convert) each
// give one, and one runner (run_work.h) opens, checks, makes, writes and measures for all of them.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "kit/formats/encoding.h"
#include "kit/pictures/picture_rows.h"
#include "kit/work/cost.h"

namespace norv {

class Report;
struct SeenLuminance;

// What is to be done with one picture, known from its shape alone.
struct WorkPlan {
  PictureShape result;  // its width and height; bits and channels as the input's
  std::string method;   // in words, such as "network x2-48, averaged, then restored as clean"
  double factor = 1;    // how many times larger or smaller the longer side becomes, at least 1
  // The result, row by row as it is asked for or made as a whole at once: its bits depend on nothing but the rows and
  // the settings, never on the threads. Throws what its making throws.
  std::function<PictureSource(PictureSource picture, int32_t threads)> make;
  // A line for people of what was chosen without being told; null: nothing was.
  std::function<std::string(int32_t threads)> chosen = nullptr;
  // The plan that holds once the picture was looked at, of the same shape; null: this one. The picture is held whole.
  std::function<WorkPlan(const SeenLuminance& picture)> look = nullptr;
  int32_t reduction = -1;                  // the filter that a certificate reduces the result by (FilterOfKernelCode)
  std::vector<std::string> networks = {};  // files of those that work on it, each once
  bool teams = true;                       // whether several threads make it faster
  Cost cost = {};                          // by estimate, without that of the files
};

struct PictureWork {
  std::function<WorkPlan(const PictureShape& shape)> plan;  // throws a Failure for a picture that cannot be worked on
  const char* doing = nullptr;                              // "Enlarging": of work whose rows come as they are made
};

// Whether a picture says how it was made.
struct ReceiptChoice {
  bool offered = false;  // the command's results do, in the formats that carry a receipt
  bool none = false;     // not even there
  bool beside = false;   // in a file beside it where the format carries none
};

// Which pictures, where to, and how the run goes about it.
struct WorkChoice {
  std::vector<std::string> places;  // PICTURE OUT, or with a folder any number of pictures and folders
  std::string folder;               // that results go into, in the tree that the pictures stand in; empty: PICTURE OUT
  std::string name;                 // of results in the folder (result_name.h); empty: ownName and the ending
  std::string memory;               // the most that may be held ("2G"); empty: what there is
  bool recursive = false;           // whether folders in folders count
  bool dryRun = false;              // nothing is made, what would be is said
  double factor = 0;                // that all results have; 0: known of each picture only
  std::string ownName = "{stem}";   // of results that are not named, without ending (result_name.h)
  bool mayLeaveOut = false;         // OUT, where there is one picture: the result then stands beside it, as PNG
  int32_t threads = 0;              // 0: as many as the process may use processors
  bool certificate = false;         // whether the result is compared with its input
  ReceiptChoice receipt;
  std::string report;  // the page that shows what was done; empty: none
  ReadChoice read;
  WriteChoice write;
};

// A command line that makes pictures of pictures.
struct WorkOrder {
  PictureWork work;
  WorkChoice choice;
  std::vector<std::string> settings;       // the words that do the same again: "enlarge", "--by", "3" (settings_text.h)
  std::shared_ptr<Report> page = nullptr;  // of the run
};

}  // namespace norv
