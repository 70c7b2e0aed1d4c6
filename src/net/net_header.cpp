#include "net/net_header.h"

#include <algorithm>
#include <limits>

namespace norv {
namespace {

constexpr int64_t kUnitFieldBytes = 7 * 4;  // of a unit record, before its arrays
constexpr int64_t kBytesPerInput = 3 * 4;   // X, W and V

}  // namespace

const char* WhyNotBuildable(const NetHeader& header) {
  if (header.N0 < 0) return "the number of inputs must not be negative";
  const auto isPresent = [](int32_t Ni) { return Ni > 0; };
  const auto firstAbsent = std::find_if_not(header.N.begin(), header.N.end(), isPresent);
  if (std::any_of(firstAbsent, header.N.end(), isPresent)) return "a network must not lack a layer before its last one";
  return nullptr;
}

int64_t NetHeader::FileBytes() const {
  constexpr int64_t kMost = std::numeric_limits<int64_t>::max();
  int64_t bytes = HeaderBytes<NetHeader>(), nin = N0;
  for (const int32_t Ni : N) {
    if (Ni <= 0) break;
    const int64_t record = kUnitFieldBytes + kBytesPerInput * nin;
    if (Ni > (kMost - bytes) / record) return kMost;
    bytes += Ni * record;
    nin = Ni;
  }
  return bytes;
}

}  // namespace norv
