#include "platform/posix/ending_signals.h"

#include <signal.h>

#include <array>
#include <atomic>

namespace tarqo {
namespace {

constexpr std::array kSignals{SIGTERM, SIGINT, SIGHUP};

// The only thing that a signal handler can reach. 0 while no signal has come.
std::atomic<int> arrived{0};
static_assert(std::atomic<int>::is_always_lock_free);

// How many objects keep the signals waiting. Signals belong to the process, so this is global too.
std::atomic<int> holders{0};

void remember(int number) { arrived.store(number); }

using Handler = void (*)(int);

void exchangeHandlers(Handler from, Handler to) {
  for (const int number : kSignals) {
    struct sigaction action = {};
    if (sigaction(number, nullptr, &action) == 0 && action.sa_handler == from) {
      action.sa_handler = to;
      action.sa_flags = SA_RESTART;
      sigaction(number, &action, nullptr);
    }
  }
}

}  // namespace

EndingSignals::EndingSignals() {
  if (holders.fetch_add(1) == 0) {
    arrived.store(0);
    exchangeHandlers(SIG_DFL, remember);
  }
}

EndingSignals::~EndingSignals() {
  if (holders.fetch_sub(1) > 1) {
    return;
  }
  exchangeHandlers(remember, SIG_DFL);
  if (const int number = arrived.exchange(0); number != 0) {
    static_cast<void>(raise(number));
  }
}

bool EndingSignals::pending() { return arrived.load() != 0; }

}  // namespace tarqo
