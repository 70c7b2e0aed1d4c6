#include "kit/ranks/service.h"

#include <mutex>
#include <utility>

#include "kit/failure.h"
#include "kit/ranks/ranks.h"
#include "platform/console.h"

namespace norv {

RankService::RankService(Answer answer) : answer_(std::move(answer)), there_(World().Count() - 1) {
  if (there_ == 0) return;
  World().CallAll();
  thread_ = std::thread([this] { Serve(); });
}

RankService::~RankService() {
  if (thread_.joinable()) thread_.join();
}

void RankService::Serve() {
  while (there_ > 0) {
    const Message message = World().ReceiveAny();
    if (message.topic == Topic::words) Ranks::SayFor(message);
    if (message.topic == Topic::question) {
      const std::string answer = answer_(message.text);
      World().Send(message.from, Topic::answer, answer);
      there_ -= answer.empty();
    }
    if (message.topic == Topic::pass) {
      --there_;
      Warn("rank %d has no part in this: %s", message.from, message.text.c_str());
    }
  }
}

std::string AskFirstRank(const std::string& question) {
  static std::mutex oneAtATime;
  const std::lock_guard hold(oneAtATime);
  World().Send(0, Topic::question, question);
  std::string answer = World().Receive(0, Topic::answer).text;
  if (answer.empty()) World().EndShare();
  return answer;
}

void EndWithFirstRank(const std::string& question) noexcept {
  try {
    AskFirstRank(question);
  } catch (const Failure&) {  // the run has ended already
  }
}

}  // namespace norv
