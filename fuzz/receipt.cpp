// Receipts: any text is refused in words or comes out as it went in, names nothing but files by their names, and says
// no setting that its command would not take; a PNG with one is passed over or read.
#include "kit/proof/receipt.h"

#include "fuzz.h"
#include "kit/failure.h"
#include "kit/formats/byte_stream.h"
#include "kit/proof/made_again.h"
#include "kit/proof/stored_receipt.h"

using namespace norv;
using namespace norv::fuzz;

namespace {

void RequireNames(const NamedFile& file) {
  Require(file.name.find('/') == std::string::npos && file.name != ".." && file.sha256.size() == 64,
          "a name is a name alone");
}

void ReadReceipt(const std::string& text) {
  const Receipt receipt = ReceiptOfText(text);
  RequireNames(receipt.input);
  for (const NamedFile& network : receipt.networks) RequireNames(network);
  Require(TextOf(ReceiptOfText(TextOf(receipt))) == TextOf(receipt), "a receipt comes out as it went in");
  for (const CommandRow& row : CommandTable()) {
    const Command command = row.make();
    if (receipt.settings.empty() || command.name != receipt.settings[0]) continue;
    for (const std::string& word : CheckedSettings(receipt, command, "own.net"))
      Require(word != "--overwrite" && word != "--report" && word != "--config", "only settings of a result pass");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  try {
    const auto stored = ReceiptInPng(FromMemory({data, size}));
    ReadReceipt(stored ? stored->text : std::string(reinterpret_cast<const char*>(data), size));
  } catch (const Failure& failure) {
    Require(*failure.what(), "a refusal says why");
  } catch (const std::bad_alloc&) {
  }
  return 0;
}
