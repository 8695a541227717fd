#include "platform/linux/linux_ending_signals.h"

#include <signal.h>

#include <atomic>

namespace tarqo::lnx {
namespace {

// The only thing that a signal handler can reach. 0: none has come.
std::atomic<int> arrived{0};
static_assert(std::atomic<int>::is_always_lock_free);

void remember(int number) { arrived.store(number); }

}  // namespace

EndingSignals::EndingSignals() {
  arrived.store(0);
  for (std::size_t i = 0; i < kSignals.size(); ++i) {
    struct sigaction action = {};
    if (sigaction(kSignals[i], nullptr, &action) == 0 && action.sa_handler == SIG_DFL) {
      action.sa_handler = remember;
      action.sa_flags = SA_RESTART;
      taken_[i] = sigaction(kSignals[i], &action, nullptr) == 0;
    }
  }
}

EndingSignals::~EndingSignals() {
  for (std::size_t i = 0; i < kSignals.size(); ++i) {
    if (taken_[i]) {
      struct sigaction action = {};
      action.sa_handler = SIG_DFL;
      sigaction(kSignals[i], &action, nullptr);
    }
  }
  if (const int number = arrived.exchange(0); number != 0) {
    static_cast<void>(raise(number));
  }
}

bool EndingSignals::pending() { return arrived.load() != 0; }

}  // namespace tarqo::lnx
