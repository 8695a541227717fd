#include "input/accessibility_press.h"

#include <algorithm>
#include <array>
#include <string>

#include "ax/attribute_access.h"

namespace tarqo {
namespace {

using namespace std::chrono_literals;

constexpr std::string_view kPress = "AXPress";
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

// Whether anything heard after `since` shows that a press had an effect.
bool pressAnswered(Clock& clock, const Listener& listener, Instant since) {
  if (!listener.isListening()) {
    return true;  // Nobody listened, so nothing can be said against the press.
  }
  const Instant deadline = since + kAnswerLimit;
  while (clock.now() < deadline) {
    if (anyAnswer(listener.heardSince(since))) {
      return true;
    }
    clock.sleep(kPollSlice);
  }
  return anyAnswer(listener.heardSince(since));
}

}  // namespace

bool offersAction(Session& session, const Element& element, std::string_view action) {
  const auto offered = actionNames(session.platform.accessibility, element);
  return std::find(offered.begin(), offered.end(), action) != offered.end();
}

Press pressByAccessibility(Session& session, const Element& element) {
  if (!offersAction(session, element, kPress)) {
    return Press::refused;
  }
  session.ensureListening();
  const Instant pressedAt = session.platform.clock.now();
  switch (session.listener.perform(element, kPress)) {
    case Performed::refused:
      return Press::refused;
    case Performed::pending:
      return Press::pending;
    case Performed::acknowledged:
      return Press::answered;
    case Performed::taken:
      break;
  }
  return pressAnswered(session.platform.clock, session.listener, pressedAt) ? Press::answered
                                                                            : Press::unanswered;
}

}  // namespace tarqo
