// Rows that several commands have.
#pragma once

#include "kit/commands/command.h"

namespace norv {

struct ReadChoice;
struct ReceiptChoice;
struct WriteChoice;
struct NetPlan;
struct WantedSize;
struct WorkChoice;

// Made of several lists.
Options Joined(std::initializer_list<Options> lists);

// With commas between.
std::string Listed(std::span<const std::string> words);

// Any picture or image of ours to read.
Option PictureRow(std::string& target);
// PICTURE and OUT of commands that make pictures of pictures; `what` is in the result.
Options PlaceRows(std::vector<std::string>& places, const char* what);
// The file to write, whose name says its format; `what` is in it.
Option OutRow(std::string& target, const char* what);

// --overwrite.
Option OverwriteRow(bool& target);

// --page of commands that read pictures.
Option PageRow(ReadChoice& choice);

// --to, --bits, --quality, --overwrite and the like of commands that write pictures.
Options WriteRows(WriteChoice& choice);

// --out, --name, --recursive, --dry-run, --memory, --page and the rows of what is written, of commands that
// make pictures of pictures.
Options WorkRows(WorkChoice& choice);

// --by, --width, --height and --longest of commands that make a picture larger or smaller.
Options SizeRows(WantedSize& size, const char* direction, const char* byDefault);

// --denoise of commands that may do so first.
Option DenoiseFirstRow(bool& target);

// --receipt and --no-receipt of commands whose results say how they were made.
Options ReceiptRows(ReceiptChoice& choice);

// --certificate of commands whose result can be reduced again.
Option CertificateRow(bool& target);

// Every parameter that a preset chooses; of a restoration from a network's answer those that it looks at.
Options KnobRows(std::vector<std::optional<double>>& values, bool refining);

// A network's layers; byDefault: of its hidden layers and kinds.
Options NetRows(NetPlan& plan, const char* hiddenByDefault, const char* kindsByDefault);

// The filters that a ShrinkOrder can mean, in words.
inline constexpr char kShrinkOrders[] = "-1 to -5 cubic, 0 box, 1 tent, 2 to 64 Lanczos, -11 to -22 Gaussian";

}  // namespace norv
