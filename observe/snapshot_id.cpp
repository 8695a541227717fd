#include "observe/snapshot_id.h"

#include <cstdio>

namespace tarqo {

std::string makeSnapshotId(Random& random) {
  const std::uint64_t high = (random.next() & ~0xF000ULL) | 0x4000ULL;     // version 4
  const std::uint64_t low = (random.next() & ~(3ULL << 62)) | 1ULL << 63;  // RFC 4122 variant
  const auto group = [](std::uint64_t bits, int shift) {
    return static_cast<unsigned>(bits >> shift & 0xFFFF);
  };
  char text[40];
  std::snprintf(text, sizeof text, "%04x%04x-%04x-%04x-%04x-%04x%04x%04x", group(high, 48),
                group(high, 32), group(high, 16), group(high, 0), group(low, 48), group(low, 32),
                group(low, 16), group(low, 0));
  return text;
}

}  // namespace tarqo
