#include "session/listener.h"

#include <algorithm>
#include <string>

namespace tarqo {
namespace {

using namespace std::chrono_literals;

constexpr Duration kAnswerLimit = 350ms;
constexpr Duration kPollSlice = 20ms;

// Bringing an application forward causes these, whether or not the press had an effect.
constexpr std::array<std::string_view, 2> kAnswerNeutral{"AXFocusedUIElementChanged",
                                                         "AXApplicationActivated"};

bool isAnswer(const std::string& name) {
  return std::find(kAnswerNeutral.begin(), kAnswerNeutral.end(), name) == kAnswerNeutral.end();
}

bool anyAnswer(const Journal::Heard& heard) {
  return std::any_of(heard.names.begin(), heard.names.end(), isAnswer);
}

}  // namespace

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

bool Listener::pressAnswered(Instant since) {
  if (!observer_) {
    return true;  // Nobody listened, so nothing can be said against the press.
  }
  Clock& clock = platform_.clock;
  const Instant deadline = since + kAnswerLimit;
  while (clock.now() < deadline) {
    if (anyAnswer(heardSince(since))) {
      return true;
    }
    clock.sleep(kPollSlice);
  }
  return anyAnswer(heardSince(since));
}

}  // namespace tarqo
