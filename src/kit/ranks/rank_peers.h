// Neighbouring ranks as those who restore a plane together.
#pragma once

#include <utility>

#include "kit/ranks/ranks.h"
#include "restore/blocks/peers.h"

namespace norv {

class RankPeers : public Peers {
 public:
  // `count` ranks from `first` on, of which this process is one.
  RankPeers(int32_t first, int32_t count) : first_(first), count_(count) {}

  int32_t Number() const override { return World().Rank() - first_; }
  int32_t Count() const override { return count_; }
  void Send(int32_t to, std::string&& bytes) override { World().Post(first_ + to, Topic::peers, std::move(bytes)); }
  void Settle() override { World().Settle(Topic::peers); }
  std::string Receive(int32_t from) override { return World().Receive(first_ + from, Topic::peers, true).text; }

 private:
  int32_t first_, count_;
};

}  // namespace norv
