// What a batch has made in a folder, kept there, so that the next run makes only the rest.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace norv {

// What tells whether a file is still the one that it was.
struct FileMark {
  int64_t size = -1, time = 0;  // bytes; nanoseconds of the last change. A size below 0: there is no such file

  bool IsFile() const { return size >= 0; }
  friend bool operator==(const FileMark&, const FileMark&) = default;
};

FileMark MarkOf(const std::string& path);

// A result: of which input it was made, and how.
struct JournalEntry {
  std::string input;  // its name without folders
  FileMark ofInput, ofOutput;
  std::string settings;  // the command that made it

  friend bool operator==(const JournalEntry&, const JournalEntry&) = default;
};

inline constexpr char kJournalName[] = ".norvkit-journal";

// The journal of a folder: a text of one line a result, each with a sum of its own, so that lines that are torn, or no
// lines of a journal, are passed over. A result may have several lines: the one that it was about to get when the run
// was killed, and the one of the file that still stands. It is data: what it names is only ever compared.
class Journal {
 public:
  // Reads what there is; a folder without a journal has an empty one. Throws a Failure for something of that name that
  // is no file or is too large to be a journal.
  explicit Journal(const std::string& folder);

  const std::string& Path() const { return path_; }
  // Of a result by its name in the folder, in the order of the lines.
  const std::vector<JournalEntry>& Entries(const std::string& output) const;
  // The one that made the file that is marked so; null: none did.
  const JournalEntry* Find(const std::string& output, const FileMark& mark) const;

  // Adds a line in one write, from any thread; it reaches the file before this returns, whatever ends the process then.
  // Throws a Failure where it cannot be written.
  void Add(const std::string& output, const JournalEntry& entry) const;

 private:
  std::string path_;
  std::map<std::string, std::vector<JournalEntry>> entries_;
};

}  // namespace norv
