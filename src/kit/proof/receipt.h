// What makes a picture again: its receipt, as data and as the text that its file carries.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace norv {

struct NamedFile {
  std::string name;    // without any folder; empty where it had none (standard input)
  std::string sha256;  // of its bytes, 64 hexadecimal digits
};

// No folder, time, number of threads or system is in it, so that the same work has the same receipt everywhere.
struct Receipt {
  std::string version;                // of norvkit
  std::vector<std::string> settings;  // the command and its options: "enlarge", "--by", "3" (work/settings_text.h)
  std::string format;                 // of the result, as --to says it
  NamedFile input;
  std::vector<NamedFile> networks;  // in the order of their work
};

// In one line of JSON (RFC 8259).
std::string TextOf(const Receipt& receipt);

// What such a text says, which is data and never trusted: names that are more than names, sums that are none, members
// that are unknown, twice or in another order are refused. Throws a Failure that says what is wrong.
Receipt ReceiptOfText(const std::string& text);

// The version that receipts of this program say.
std::string OwnVersion();

}  // namespace norv
