// A batch's desk between ranks: what is asked and answered.
#include <chrono>

#include "kit/batch/desk.h"
#include "kit/failure.h"
#include "kit/ranks/ranks.h"
#include "kit/ranks/wire.h"
#include "platform/console.h"

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

// What a rank says: a job that is finished, a note before a result gets its name, or nothing but that it wants another.
struct Question {
  enum class Kind : int32_t { next, note, finished } kind = Kind::next;
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

DeskService::DeskService(JobDesk& desk, Report* page) : desk_(desk), page_(page), there_(World().Count() - 1) {
  if (there_ == 0) return;
  World().CallAll();
  thread_ = std::thread([this] { Serve(); });
}

DeskService::~DeskService() {
  if (thread_.joinable()) thread_.join();
}

// A rank that hears that nothing is left asks no more.
void DeskService::Serve() {
  std::chrono::microseconds pause{0};
  while (there_ > 0) {
    const std::optional<Message> message = World().Look();
    if (!message) {
      pause = std::min(pause + std::chrono::microseconds(50), std::chrono::microseconds(1000));
      std::this_thread::sleep_for(pause);
      continue;
    }
    pause = {};
    if (message->topic == Topic::words) Ranks::SayFor(*message);
    if (message->topic == Topic::job) Answer(message->from, message->text);
    if (message->topic != Topic::pass) continue;
    --there_;
    Warn("rank %d has no part in this: %s", message->from, message->text.c_str());
  }
}

// The answer: a job, or nothing where none is left; to a note, why it cannot be written.
void DeskService::Answer(int32_t from, const std::string& question) {
  const auto asked = Unpacked<Question>(question);
  std::string answer;
  if (asked.kind == Question::Kind::finished) {
    desk_.Advance(asked.handed.job.bytes);
    desk_.Finish(asked.handed, asked.made);
    for (const ReportEntry& entry : asked.shown)
      if (page_) page_->Add(entry);
  } else if (asked.kind == Question::Kind::note) {
    try {
      desk_.Note(asked.name, asked.entry);
    } catch (...) {
      answer = FailureInWords();
    }
  } else if (const std::optional<HandedOut> handed = desk_.Take()) {
    answer = Packed(*handed);
  } else {
    --there_;
  }
  World().Send(from, Topic::reply, answer);
}

std::string FarDesk::Ask(const std::string& question) {
  const std::lock_guard hold(mutex_);
  World().Send(0, Topic::job, question);
  return World().Receive(0, Topic::reply).text;
}

std::optional<HandedOut> FarDesk::Take() {
  const std::string answer = Ask(Packed(Question{}));
  if (answer.empty()) return {};
  return Unpacked<HandedOut>(answer);
}

void FarDesk::Note(const std::string& name, const JournalEntry& entry) {
  const std::string reason = Ask(Packed(Question{.kind = Question::Kind::note, .name = name, .entry = entry}));
  if (!reason.empty()) throw Failure(reason);
}

void FarDesk::Finish(const HandedOut& handed, const Made& made) {
  Question question{.kind = Question::Kind::finished, .handed = handed, .made = made};
  if (page_) question.shown = page_->Take();
  Ask(Packed(question));
}

}  // namespace norv
