#include "session/listener.h"

namespace tarqo {
namespace {

using namespace std::chrono_literals;

/// A subscription that fails after this long was not refused: nobody answered.
constexpr Duration kSilence = 200ms;

}  // namespace

void Listener::listen(Pid pid, const Element& app) {
  Clock& clock = platform_.clock;
  isHeard_ = false;
  observer_ = platform_.accessibility.observe(
      pid, [this, &clock](std::string_view name) { journal_.note(name, clock.now()); });
  watch(app);
}

bool Listener::watch(const Element& element) {
  if (!observer_) {
    return true;
  }
  for (const std::string_view name : WATCHED) {
    const Instant asked = platform_.clock.now();
    if (observer_->add(element, name)) {
      isHeard_ = true;
    } else if (platform_.clock.now() - asked >= kSilence) {
      return false;
    }
  }
  return true;
}

Performed Listener::perform(const Element& element, std::string_view action) {
  const Performed performed = platform_.accessibility.perform(element, action);
  if (performed == Performed::acknowledged) {
    journal_.note(kActionAcknowledged, platform_.clock.now());
  }
  return performed;
}

}  // namespace tarqo
