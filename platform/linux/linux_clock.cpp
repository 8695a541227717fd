#include "platform/linux/linux_clock.h"

#include <exception>
#include <thread>
#include <utility>

namespace tarqo::lnx {

Instant LinuxClock::now() { return std::chrono::steady_clock::now(); }

WallTime LinuxClock::wall() {
  return std::chrono::time_point_cast<WallTime::duration>(std::chrono::system_clock::now());
}

void LinuxClock::sleep(Duration duration) { std::this_thread::sleep_for(duration); }

void LinuxClock::turn(Duration slice) { std::this_thread::sleep_for(slice); }

void LinuxClock::background(std::function<void()> body) {
  try {
    std::thread([body = std::move(body)] {
      try {
        body();
      } catch (...) {
        return;
      }
    }).detach();
  } catch (const std::exception&) {
    return;
  }
}

}  // namespace tarqo::lnx
