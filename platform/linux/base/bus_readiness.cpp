#include "platform/linux/base/bus_readiness.h"

#include <cstdint>

namespace tarqo::lnx {

bool becomesReady(sd_bus* bus, std::chrono::microseconds limit) {
  const auto deadline = std::chrono::steady_clock::now() + limit;
  while (sd_bus_is_ready(bus) == 0) {
    const auto left = std::chrono::duration_cast<std::chrono::microseconds>(
        deadline - std::chrono::steady_clock::now());
    const int progress = sd_bus_process(bus, nullptr);
    if (progress < 0 || left.count() <= 0) {
      return false;
    }
    if (progress == 0 && sd_bus_wait(bus, static_cast<std::uint64_t>(left.count())) < 0) {
      return false;
    }
  }
  return sd_bus_is_ready(bus) > 0;
}

}  // namespace tarqo::lnx
