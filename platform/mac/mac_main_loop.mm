#include "platform/mac/mac_main_loop.h"

#include "platform/mac/mac_clock.h"
#include "platform/mac/mac_objc.h"

namespace tarqo::mac {
namespace {

/// What callbacks leave to the autorelease pool is freed at least this often.
constexpr std::chrono::seconds kLongestTurn(1);

}  // namespace

void MacMainLoop::run() {
  while (true) {
    guarded([] { turnLoop(kLongestTurn); });
  }
}

}  // namespace tarqo::mac
