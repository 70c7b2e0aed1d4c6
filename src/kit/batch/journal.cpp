#include "kit/batch/journal.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <mutex>

#include "kit/failure.h"
#include "kit/formats/bytes.h"
#include "platform/paths.h"

namespace norv {
namespace {

namespace fs = std::filesystem;

constexpr size_t kFields = 8;  // with the sum
constexpr uintmax_t kMostBytes = uintmax_t{1} << 30;

// FNV-1a: against torn lines, not against anybody.
std::string SumOf(std::string_view text) {
  uint64_t sum = 0xCBF29CE484222325;
  for (const char c : text) sum = (sum ^ static_cast<uint8_t>(c)) * 0x100000001B3;
  char digits[24];
  std::snprintf(digits, sizeof digits, "%016llx", static_cast<unsigned long long>(sum));
  return digits;
}

std::string Escaped(const std::string& text) {
  std::string escaped;
  for (const char c : text) {
    if (c == '\t' || c == '\n' || c == '\\') escaped += '\\';
    escaped += c == '\t' ? 't' : c == '\n' ? 'n' : c;
  }
  return escaped;
}

std::string Unescaped(std::string_view text) {
  std::string plain;
  for (size_t i = 0; i < text.size(); ++i) {
    const bool escape = text[i] == '\\' && i + 1 < text.size();
    if (escape) ++i;
    plain += !escape ? text[i] : text[i] == 't' ? '\t' : text[i] == 'n' ? '\n' : text[i];
  }
  return plain;
}

std::vector<std::string_view> FieldsOf(std::string_view line) {
  std::vector<std::string_view> fields;
  for (size_t tab; (tab = line.find('\t')) != std::string_view::npos; line.remove_prefix(tab + 1))
    fields.push_back(line.substr(0, tab));
  fields.push_back(line);
  return fields;
}

bool Take(std::string_view text, int64_t& number) {
  const auto read = std::from_chars(text.data(), text.data() + text.size(), number);
  return read.ec == std::errc() && read.ptr == text.data() + text.size();
}

std::string LineOf(const std::string& output, const JournalEntry& entry) {
  const auto mark = [](const FileMark& m) { return std::to_string(m.size) + "\t" + std::to_string(m.time) + "\t"; };
  std::string line = Escaped(output) + "\t" + mark(entry.ofOutput) + Escaped(entry.input) + "\t" + mark(entry.ofInput) +
                     Escaped(entry.settings);
  return line + "\t" + SumOf(line);
}

// False for what is no line of a journal.
bool Parse(std::string_view line, std::string& output, JournalEntry& entry) {
  const std::vector<std::string_view> fields = FieldsOf(line);
  if (fields.size() != kFields || SumOf(line.substr(0, line.rfind('\t'))) != fields.back()) return false;
  output = Unescaped(fields[0]);
  entry.input = Unescaped(fields[3]);
  entry.settings = Unescaped(fields[6]);
  return Take(fields[1], entry.ofOutput.size) && Take(fields[2], entry.ofOutput.time) &&
         Take(fields[4], entry.ofInput.size) && Take(fields[5], entry.ofInput.time);
}

}  // namespace

FileMark MarkOf(const std::string& path) {
  std::error_code error;
  const fs::file_status status = fs::status(ToNative(path), error);
  if (!fs::is_regular_file(status)) return {};
  const uintmax_t size = fs::file_size(ToNative(path), error);
  const auto time = fs::last_write_time(ToNative(path), error);
  if (error) return {};
  return {static_cast<int64_t>(size),
          std::chrono::duration_cast<std::chrono::nanoseconds>(time.time_since_epoch()).count()};
}

Journal::Journal(const std::string& folder) : path_(FromNative(ToNative(folder) / kJournalName)) {
  std::error_code error;
  const fs::file_status status = fs::status(ToNative(path_), error);
  if (!fs::exists(status)) return;
  if (!fs::is_regular_file(status) || fs::file_size(ToNative(path_), error) > kMostBytes)
    Fail("%s is no journal of norvkit's: move it away", path_.c_str());
  const std::vector<uint8_t> bytes = ReadBytes(path_);
  std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  while (!text.empty()) {
    const std::string_view line = text.substr(0, text.find('\n'));
    std::string output;
    JournalEntry entry;
    if (Parse(line, output, entry)) entries_[output].push_back(entry);
    text.remove_prefix(std::min(line.size() + 1, text.size()));
  }
}

const std::vector<JournalEntry>& Journal::Entries(const std::string& output) const {
  static const std::vector<JournalEntry> none;
  const auto found = entries_.find(output);
  return found == entries_.end() ? none : found->second;
}

const JournalEntry* Journal::Find(const std::string& output, const FileMark& mark) const {
  const std::vector<JournalEntry>& entries = Entries(output);
  const auto found = std::ranges::find(entries.rbegin(), entries.rend(), mark, &JournalEntry::ofOutput);
  return found == entries.rend() || !mark.IsFile() ? nullptr : &*found;
}

void Journal::Add(const std::string& output, const JournalEntry& entry) const {
  static std::mutex oneAtATime;
  const std::lock_guard lock(oneAtATime);
  struct Close {
    void operator()(FILE* file) const { std::fclose(file); }
  };
  const std::unique_ptr<FILE, Close> file(OpenStream(path_, "ab"));
  // An end of line first: the line before may have been torn.
  const std::string line = std::string("\n").append(LineOf(output, entry)).append("\n");
  const bool written =
      file && std::fwrite(line.data(), 1, line.size(), file.get()) == line.size() && std::fflush(file.get()) == 0;
  if (!written) Fail("cannot write %s: %s", path_.c_str(), std::strerror(errno));
}

}  // namespace norv
