// Work that the first rank hands out piece by piece: the others ask, a thread of the first one answers.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <thread>

namespace norv {

// While it lives, the first rank's process serves all others, whom it calls; alone there is nothing to do.
class RankService {
 public:
  // The answer to a question, any bytes; empty: to the last one of a rank. Runs on one thread and throws nothing.
  using Answer = std::function<std::string(const std::string& question)>;

  explicit RankService(Answer answer);
  // Waits until all have asked their last. A rank that passed is warned of.
  ~RankService();
  RankService(const RankService&) = delete;
  RankService& operator=(const RankService&) = delete;

 private:
  void Serve();

  const Answer answer_;
  int32_t there_;  // ranks that may still ask
  std::thread thread_;
};

// Another rank's question, from any thread.
std::string AskFirstRank(const std::string& question);
// The last one, whose answer nobody needs.
void EndWithFirstRank(const std::string& question) noexcept;

}  // namespace norv
