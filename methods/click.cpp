// The "click" method: by the element's own press where it has one that answers, else by the
// pointer.

#include <algorithm>

#include "base/failure.h"
#include "input/accessibility_press.h"
#include "input/pointer.h"
#include "methods/action.h"
#include "methods/methods.h"

namespace tarqo::methods {
namespace {

constexpr std::int64_t kMostClicks = 2;

struct ClickArguments {
  std::string nodeId;
  std::int64_t count;  ///< 2 or more is a double click, anything less a single one.
};

ClickArguments clickArguments(const Json& args) {
  return {.nodeId = textMember(args, "nodeId").value_or(""),
          .count = integerMember(args, "count").value_or(1)};
}

Json clickRecognizedText(Session& session, const StoredNode& stored) {
  session.target.activate();
  const Point point = stored.box->center();
  verifyPointer(session, point, stored.element);
  (void)press(session, point, 1, [&] { verifyPointer(session, point, stored.element); });
  return {{"method", "pointer"}, {"via", "ocr"}};
}

// A closed menu's item has no place to point at.
Json clickMenuItem(Session& session, const StoredNode& stored) {
  const Performed pressed = session.listener.perform(stored.element, "AXPress");
  if (pressed == Performed::refused) {
    fail(failures::kMenuRefused);
  }
  Json result = {{"method", "accessibility"}, {"via", "menubar"}};
  if (pressed == Performed::pending) {
    result["pending"] = true;
  }
  return result;
}

Json clickByPointer(Session& session, const StoredNode& stored, Point point, std::int64_t count) {
  verifyPointer(session, point, stored.element);
  const int clicks = static_cast<int>(std::clamp<std::int64_t>(count, 1, kMostClicks));
  const int made = press(session, point, clicks, [&] { verifyNodeAt(session, point, stored); });
  Json result = {{"method", clicks > 1 ? "pointer-double" : "pointer"}};
  if (made < clicks) {
    result["clicks"] = made;
  }
  return result;
}

// What the press did shows only now and then: a client must not take the refusal of the pointer for
// a click that has not happened.
Json clickAfterUnansweredPress(Session& session, const StoredNode& stored, Point point) {
  try {
    Json result = clickByPointer(session, stored, point, 1);
    result["fallback"] = "press_unanswered";
    return result;
  } catch (Failure& failure) {
    failure.addDetail("pressed", true);
    throw;
  }
}

Json clickElement(Session& session, const StoredNode& stored, std::int64_t count) {
  verifyAndActivate(session, stored);
  if (stored.role == "AXMenuItem") {
    return clickMenuItem(session, stored);
  }
  const Point point = requireVisibleFrame(session, stored.element).center();
  const Press byAccessibility =
      count < kMostClicks ? pressByAccessibility(session, stored.element) : Press::refused;
  switch (byAccessibility) {
    case Press::answered:
      return {{"method", "accessibility"}};
    case Press::pending:
      return {{"method", "accessibility"}, {"pending", true}};
    case Press::unanswered:
      return clickAfterUnansweredPress(session, stored, point);
    case Press::refused:
      break;
  }
  return clickByPointer(session, stored, point, count);
}

}  // namespace

Json click(Session& session, const Json& args) {
  const Action action(session);
  const ClickArguments wanted = clickArguments(args);
  if (wanted.nodeId.empty()) {
    fail(failures::kNodeIdRequired);
  }
  const StoredNode stored = session.nodes.require(wanted.nodeId, failures::kExpiredClick);
  return action.done(stored.box ? clickRecognizedText(session, stored)
                                : clickElement(session, stored, wanted.count),
                     wanted.nodeId);
}

}  // namespace tarqo::methods
