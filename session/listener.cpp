#include "session/listener.h"

namespace tarqo {

void Listener::listen(Pid pid, const Element& app) {
  Clock& clock = platform_.clock;
  observer_ = platform_.accessibility.observe(
      pid, [this, &clock](std::string_view name) { journal_.note(name, clock.now()); });
  watch(app);
}

void Listener::watch(const Element& element) {
  if (!observer_) {
    return;
  }
  for (const std::string_view name : WATCHED) {
    (void)observer_->add(element, name);
  }
}

Performed Listener::perform(const Element& element, std::string_view action) {
  const Performed performed = platform_.accessibility.perform(element, action);
  if (performed == Performed::acknowledged) {
    journal_.note(kActionAcknowledged, platform_.clock.now());
  }
  return performed;
}

}  // namespace tarqo
