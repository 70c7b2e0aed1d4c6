#include "kit/proof/receipt.h"

#include <algorithm>
#include <functional>

#include "kit/failure.h"
#include "kit/guidance/json.h"
#include "kit/metadata/metadata.h"
#include "kit/metadata/text.h"
#include "platform/paths.h"

namespace norv {
namespace {

constexpr size_t kMostText = 65536, kMostWords = 256, kMostNetworks = 16, kMostName = 255;

[[noreturn]] void Refuse(const std::string& reason) { Fail("the receipt is damaged: %s", reason.c_str()); }

// Takes a text apart, token by token; what is not there as asked for ends it.
class Tokens {
 public:
  explicit Tokens(const std::string& text) : text_(text) {}

  void Expect(char sign) {
    if (!Takes(sign)) Refuse(std::string("a ") + sign + " is missing");
  }
  bool Takes(char sign) {
    SkipSpace();
    if (at_ == text_.size() || text_[at_] != sign) return false;
    ++at_;
    return true;
  }
  void Key(const char* key) {
    if (Text() != key) Refuse(std::string("\"") + key + "\" is missing");
    Expect(':');
  }
  std::string Text() {
    Expect('"');
    std::string text;
    while (at_ < text_.size() && text_[at_] != '"') {
      const char c = text_[at_++];
      if (static_cast<unsigned char>(c) < 0x20) Refuse("a text with a control character");
      if (c == '\\')
        AddEscaped(text);
      else
        text += c;
    }
    Expect('"');
    if (!IsUtf8(text)) Refuse("a text that is no UTF-8");
    return text;
  }
  void List(size_t most, const std::function<void()>& element) {
    Expect('[');
    if (Takes(']')) return;
    for (size_t n = 1; n <= most; ++n) {
      element();
      if (Takes(']')) return;
      Expect(',');
    }
    Refuse("a list is too long");
  }
  void End() {
    SkipSpace();
    if (at_ != text_.size()) Refuse("something stands behind its end");
  }

 private:
  void SkipSpace() {
    while (at_ < text_.size() && (text_[at_] == ' ' || text_[at_] == '\n' || text_[at_] == '\r' || text_[at_] == '\t'))
      ++at_;
  }
  char Next() {
    if (at_ == text_.size()) Refuse("it ends early");
    return text_[at_++];
  }
  void AddEscaped(std::string& text) {
    constexpr std::string_view kSigns = "\"\\/bfnrt", kMeaning = "\"\\/\b\f\n\r\t";
    const char sign = Next();
    if (const size_t i = kSigns.find(sign); i != std::string_view::npos)
      text += kMeaning[i];
    else if (sign == 'u')
      AddCodeUnit(text);
    else
      Refuse("an unknown escape");
  }
  // JSON names characters by units of UTF-16.
  void AddCodeUnit(std::string& text) {
    std::vector<uint8_t> units;
    const uint32_t first = Unit();
    const auto add = [&](uint32_t unit) {
      units.push_back(static_cast<uint8_t>(unit & 255));
      units.push_back(static_cast<uint8_t>(unit >> 8));
    };
    if (first == 0) Refuse("a text with a control character");
    add(first);
    if (first >= 0xD800 && first < 0xDC00 && text_.compare(at_, 2, "\\u") == 0) {
      at_ += 2;
      add(Unit());
    }
    text += Utf8OfUtf16(units);
  }
  uint32_t Unit() {
    uint32_t unit = 0;
    for (int i = 0; i < 4; ++i) {
      const char digit = Next();
      const size_t value = std::string_view("0123456789abcdef").find(static_cast<char>(digit | 32));
      if (value == std::string_view::npos || digit < '0') Refuse("an unknown escape");
      unit = unit << 4 | static_cast<uint32_t>(value);
    }
    return unit;
  }

  const std::string& text_;
  size_t at_ = 0;
};

bool IsMadeOf(const std::string& text, std::string_view signs) {
  return !text.empty() && text.find_first_not_of(signs) == std::string::npos;
}

void RequireName(const std::string& name) {
  const bool control = std::ranges::any_of(name, [](unsigned char c) { return c < 0x20 || c == 0x7F; });
  if (name == "." || name == ".." || FileNameOf(name) != name || ToNative(name).has_root_name() ||
      name.size() > kMostName || control)
    Refuse("a name that is more than a name");
}

NamedFile ReadFile(Tokens& tokens) {
  NamedFile file;
  tokens.Expect('{');
  tokens.Key("name");
  file.name = tokens.Text();
  RequireName(file.name);
  tokens.Expect(',');
  tokens.Key("sha256");
  file.sha256 = tokens.Text();
  if (file.sha256.size() != 64 || !IsMadeOf(file.sha256, "0123456789abcdef")) Refuse("a sum that is none");
  tokens.Expect('}');
  return file;
}

JsonObject RowOf(const NamedFile& file) {
  JsonObject row;
  row.Text("name", file.name).Text("sha256", file.sha256);
  return row;
}

}  // namespace

std::string OwnVersion() { return NORV_VERSION; }

std::string TextOf(const Receipt& receipt) {
  std::vector<JsonObject> networks;
  for (const NamedFile& network : receipt.networks) networks.push_back(RowOf(network));
  JsonObject text;
  text.Text(kReceiptKeyword, "1").Text("version", receipt.version).Texts("settings", receipt.settings);
  text.Text("format", receipt.format).Object("input", RowOf(receipt.input)).List("networks", networks);
  return text.Line();
}

Receipt ReceiptOfText(const std::string& text) {
  if (text.size() > kMostText) Refuse("it is too long");
  Tokens tokens(text);
  Receipt receipt;
  tokens.Expect('{');
  tokens.Key(kReceiptKeyword);
  if (tokens.Text() != "1") Fail("the receipt is of another kind than this norvkit knows");
  tokens.Expect(',');
  tokens.Key("version");
  receipt.version = tokens.Text();
  if (!IsMadeOf(receipt.version, "0123456789.") || receipt.version.size() > 32) Refuse("a version that is none");
  tokens.Expect(',');
  tokens.Key("settings");
  tokens.List(kMostWords, [&] { receipt.settings.push_back(tokens.Text()); });
  tokens.Expect(',');
  tokens.Key("format");
  receipt.format = tokens.Text();
  if (!IsMadeOf(receipt.format, "abcdefghijklmnopqrstuvwxyz0123456789")) Refuse("a format that is none");
  tokens.Expect(',');
  tokens.Key("input");
  receipt.input = ReadFile(tokens);
  tokens.Expect(',');
  tokens.Key("networks");
  tokens.List(kMostNetworks, [&] { receipt.networks.push_back(ReadFile(tokens)); });
  tokens.Expect('}');
  tokens.End();
  return receipt;
}

}  // namespace norv
