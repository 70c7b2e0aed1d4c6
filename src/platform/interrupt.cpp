#include "platform/interrupt.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>

#include "platform/native/ending.h"

namespace norv {
namespace {

std::atomic<bool> watching{false};
std::atomic<int> requests{0};

std::atomic<const char*> lastWords{nullptr};

constexpr int kSlots = 64, kLongestPath = 4096;

// Fixed memory and atomic states, for a handler may look at any instant.
struct Slot {
  std::atomic<bool> taken{false}, filled{false};
  char path[kLongestPath];
};
Slot slots[kSlots];

void InstallOnce() {
  static const bool installed = [] {
    InstallHandlers();
    std::atexit(RemoveScratchFiles);
    return true;
  }();
  static_cast<void>(installed);
}

}  // namespace

void RemoveScratchFiles() {
  for (Slot& slot : slots)
    if (slot.filled) RemoveInHandler(slot.path);
}

const char* LastWords() { return lastWords; }

void EndInterruptsInWords(const char* line) {
  lastWords = line;
  InstallOnce();
}

bool OnlyNoted() { return watching && requests.exchange(1) == 0; }

bool InterruptWatch::Requested() { return requests != 0; }

InterruptWatch::InterruptWatch() {
  requests = 0;
  InstallOnce();
  watching = true;
}

InterruptWatch::~InterruptWatch() { watching = false; }

ScratchGuard::ScratchGuard(const std::string& path) : slot_(-1) {
  if (path.size() >= kLongestPath) return;
  InstallOnce();
  for (int i = 0; i < kSlots && slot_ < 0; ++i)
    if (!slots[i].taken.exchange(true)) slot_ = i;
  if (slot_ < 0) return;
  *std::copy(path.begin(), path.end(), slots[slot_].path) = 0;
  slots[slot_].filled = true;
}

ScratchGuard::~ScratchGuard() {
  if (slot_ < 0) return;
  slots[slot_].filled = false;
  slots[slot_].taken = false;
}

}  // namespace norv
