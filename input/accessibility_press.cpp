#include "input/accessibility_press.h"

#include <algorithm>

#include "ax/attribute_access.h"

namespace tarqo {
namespace {

constexpr std::string_view kPress = "AXPress";

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
  return session.listener.pressAnswered(pressedAt) ? Press::answered : Press::unanswered;
}

}  // namespace tarqo
