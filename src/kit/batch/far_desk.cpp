// A batch's desk between ranks: what is asked and answered.
#include "kit/batch/desk.h"
#include "kit/failure.h"
#include "kit/ranks/service.h"
#include "kit/ranks/wire.h"

namespace norv {

template <typename Wire>
void Transfer(Wire& wire, FileMark& mark) {
  wire(mark.size);
  wire(mark.time);
}

template <typename Wire>
void Transfer(Wire& wire, JournalEntry& entry) {
  wire(entry.input);
  wire(entry.settings);
  Transfer(wire, entry.ofInput);
  Transfer(wire, entry.ofOutput);
}

template <typename Wire>
void Transfer(Wire& wire, HandedOut& handed) {
  wire(handed.number);
  wire(handed.job.input);
  wire(handed.job.output);
  wire(handed.job.name);
  wire(handed.job.bytes);
  wire(handed.job.replace);
  wire(handed.job.state);
  wire(handed.job.error);
}

template <typename Wire>
void Transfer(Wire& wire, Closeness& closeness) {
  wire(closeness.largest);
  wire(closeness.rms);
  wire(closeness.largestRounded);
  wire(closeness.rmsRounded);
}

template <typename Wire>
void Transfer(Wire& wire, Certificate& certificate) {
  wire(certificate.filter);
  wire(certificate.largest);
  wire(certificate.rms);
  wire(certificate.largestRounded);
  wire(certificate.rmsRounded);
  TransferOptional(wire, certificate.colours);
}

template <typename Wire>
void Transfer(Wire& wire, Made& made) {
  wire(made.input);
  wire(made.output);
  wire(made.width);
  wire(made.height);
  wire(made.method);
  wire(made.seconds);
  wire(made.memory);
  TransferOptional(wire, made.certificate);
  wire(made.error);
}

template <typename Wire>
void Transfer(Wire& wire, ReportEntry& entry) {
  Transfer(wire, entry.made);
  wire(entry.pictures);
  wire(entry.facts);
}

namespace {

const std::string kGood = "+";

// What a rank says: that it wants a job, a note before a result gets its name, what has become of a job; at last that
// all of its threads have ended.
struct Question {
  enum class Kind : int32_t { next, note, finished, end } kind = Kind::next;
  std::string name = {};
  JournalEntry entry = {};
  HandedOut handed = {};
  Made made = {};
  std::vector<ReportEntry> shown = {};
};

template <typename Wire>
void Transfer(Wire& wire, Question& question) {
  wire(question.kind);
  wire(question.name);
  Transfer(wire, question.entry);
  Transfer(wire, question.handed);
  Transfer(wire, question.made);
  size_t count = question.shown.size();
  wire(count);
  question.shown.resize(count);
  for (ReportEntry& entry : question.shown) Transfer(wire, entry);
}

}  // namespace

// A note is answered by kGood and why it could not be written, what is finished by kGood, whoever wants another job by
// that or, where none is left, by kGood.
std::string AnswerOf(JobDesk& desk, Report* page, const std::string& question) {
  const auto asked = Unpacked<Question>(question);
  if (asked.kind == Question::Kind::note) {
    try {
      desk.Note(asked.name, asked.entry);
    } catch (...) {
      return kGood + FailureInWords();
    }
    return kGood;
  }
  if (asked.kind == Question::Kind::finished) {
    desk.Advance(asked.handed.job.bytes);
    desk.Finish(asked.handed, asked.made);
    for (const ReportEntry& entry : asked.shown)
      if (page) page->Add(entry);
    return kGood;
  }
  if (asked.kind == Question::Kind::end) return "";
  const std::optional<HandedOut> handed = desk.Take();
  return handed ? Packed(*handed) : kGood;
}

FarDesk::~FarDesk() { EndWithFirstRank(Packed(Question{.kind = Question::Kind::end})); }

std::optional<HandedOut> FarDesk::Take() {
  const std::string answer = AskFirstRank(Packed(Question{}));
  if (answer == kGood) return {};
  return Unpacked<HandedOut>(answer);
}

void FarDesk::Note(const std::string& name, const JournalEntry& entry) {
  const std::string answer = AskFirstRank(Packed(Question{.kind = Question::Kind::note, .name = name, .entry = entry}));
  if (answer != kGood) throw Failure(answer.substr(kGood.size()));
}

void FarDesk::Finish(const HandedOut& handed, const Made& made) {
  Question question{.kind = Question::Kind::finished, .handed = handed, .made = made};
  if (page_) question.shown = page_->Take();
  AskFirstRank(Packed(question));
}

}  // namespace norv
