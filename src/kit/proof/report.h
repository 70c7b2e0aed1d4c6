// A page for people that shows what was done to pictures: one file, which asks for nothing from outside.
#pragma once

#include <mutex>
#include <string>
#include <vector>

#include "kit/formats/encoding.h"
#include "kit/work/made.h"
#include "linear/matrix2.h"

namespace norv {

// Bytes of pictures in a page at most: of those that are over, figures and words alone.
inline constexpr size_t kPageBytes = size_t{48} << 20;

// A picture in the page.
struct ReportEntry {
  Made made;
  std::string pictures, facts;  // HTML
};

class Report {
 public:
  // Of another rank, whose entries go to the first one's.
  Report() = default;
  // Throws as RequireFree() does.
  Report(std::string path, bool overwrite);

  // A picture that stands in its file now, or has failed. again: the words that do it again; map: Certifier::Map(),
  // empty where there is none. From any thread.
  void Add(const Made& made, const std::vector<std::string>& again, const ReadChoice& read, const matrix& map);

  // One that another rank has put together.
  void Add(ReportEntry entry);
  // What was added since this was last called.
  std::vector<ReportEntry> Take();

  // All of it into the file, which of nothing is not written. Throws when that failed.
  void Write();

 private:
  const std::string path_;
  std::mutex guard_;
  std::vector<ReportEntry> entries_;
  size_t bytes_ = 0;
};

}  // namespace norv
