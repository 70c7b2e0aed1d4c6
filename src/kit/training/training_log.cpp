#include "kit/training/training_log.h"

#include <charconv>
#include <cstdio>
#include <sstream>

#include "kit/failure.h"
#include "kit/formats/bytes.h"

namespace norv {
namespace {

constexpr char kHeading[] = "epoch,rate,cost,samples_per_second,seconds,psnr,cubic,lanczos";

constexpr double EpochRecord::*kColumns[] = {&EpochRecord::rate,    &EpochRecord::cost, &EpochRecord::samplesPerSecond,
                                             &EpochRecord::seconds, &EpochRecord::psnr, &EpochRecord::cubic,
                                             &EpochRecord::lanczos};

// A number and the comma behind it, whatever the locale. False for anything else.
template <typename Number>
bool Take(const char*& at, const char* end, Number& number) {
  const auto [stop, error] = std::from_chars(at, end, number);
  at = stop != end && *stop == ',' ? stop + 1 : stop;
  return error == std::errc() && (stop == end || at != stop);
}

bool Parse(const std::string& line, EpochRecord& record) {
  const char *at = line.data(), *end = at + line.size();
  if (!Take(at, end, record.epoch)) return false;
  for (const auto column : kColumns)
    if (!Take(at, end, record.*column)) return false;
  return at == end && end[-1] != ',';
}

std::string Line(const EpochRecord& r) {
  char text[256];
  std::snprintf(text, sizeof text, "%d,%.9g,%.9g,%.0f,%.3f,%.4f,%.4f,%.4f\n", r.epoch, r.rate, r.cost,
                r.samplesPerSecond, r.seconds, r.psnr, r.cubic, r.lanczos);
  return text;
}

}  // namespace

TrainingLog ReadTrainingLog(const std::string& path) {
  const std::vector<uint8_t> bytes = ReadBytes(path);
  std::istringstream text(std::string(bytes.begin(), bytes.end()));
  std::string line;
  if (!std::getline(text, line) || line != kHeading) Fail("%s is no training log", path.c_str());
  TrainingLog log;
  while (std::getline(text, line)) {
    EpochRecord record;
    const int32_t epoch = static_cast<int32_t>(log.size()) + 1;
    if (!Parse(line, record) || record.epoch != epoch)
      Fail("line %d of the training log %s makes no sense", epoch + 1, path.c_str());
    log.push_back(record);
  }
  return log;
}

int32_t BestEpoch(const TrainingLog& log) {
  int32_t best = 0;
  for (const EpochRecord& record : log)
    if (best == 0 || record.psnr > log[best - 1].psnr) best = record.epoch;
  return best;
}

void WriteTrainingLog(const std::string& path, const TrainingLog& log) {
  std::string text = std::string(kHeading) + "\n";
  for (const EpochRecord& record : log) text += Line(record);
  WriteBytes(path, {text.begin(), text.end()});
}

}  // namespace norv
