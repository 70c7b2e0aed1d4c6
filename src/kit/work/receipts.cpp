#include "kit/work/receipts.h"

#include <filesystem>

#include "kit/failure.h"
#include "kit/formats/bytes.h"
#include "kit/formats/streams.h"
#include "kit/pictures/destination.h"
#include "kit/pictures/picture_file.h"
#include "kit/proof/sha256.h"
#include "kit/proof/stored_receipt.h"
#include "kit/work/picture_work.h"
#include "platform/paths.h"

namespace norv {
namespace {

NamedFile Known(const std::string& path) {
  return {IsStandard(path) ? "" : FromNative(ToNative(path).filename()), Sha256OfFile(path)};
}

// Without the format, which stands by itself whoever said it, and without the folder of a network.
std::vector<std::string> SettingsOf(const WorkOrder& order) {
  std::vector<std::string> settings;
  for (size_t i = 0; i < order.settings.size(); ++i) {
    const std::string& word = order.settings[i];
    if (word == "--to")
      ++i;
    else if (i > 0 && order.settings[i - 1] == "--net")
      settings.push_back(FromNative(ToNative(word).filename()));
    else
      settings.push_back(word);
  }
  return settings;
}

}  // namespace

IssuedReceipt::IssuedReceipt(const WorkOrder& order, const WriteChoice& write, const WorkPlan& plan,
                             const std::string& input, const std::string& output) {
  const ReceiptChoice& choice = order.choice.receipt;
  const bool inside = choice.offered && !choice.none && HoldsReceipt(output, write);
  const bool beside = choice.beside && !inside;
  if (!inside && !beside) return;
  if (beside && IsStandard(output)) throw WrongUsage("--receipt lies beside a file: name one instead of -");
  if (beside) RequireFree(path_ = ReceiptBeside(output), write.overwrite, input);
  Receipt receipt{OwnVersion(), SettingsOf(order), FormatWord(output, write), Known(input), {}};
  for (const std::string& network : plan.networks) receipt.networks.push_back(Known(network));
  (inside ? inside_ : beside_) = TextOf(receipt);
}

void IssuedReceipt::LayBeside() const {
  if (!beside_.empty()) WriteBytes(path_, Bytes(beside_.begin(), beside_.end()));
}

}  // namespace norv
