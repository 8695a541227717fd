// The "showMenu" method: opens a node's context menu, by its own action where it has one, else by
// the pointer.

#include "base/failure.h"
#include "input/accessibility_press.h"
#include "input/pointer.h"
#include "methods/action.h"
#include "methods/methods.h"

namespace tarqo::methods {
namespace {

constexpr Duration kActionOpensMenu = std::chrono::milliseconds(250);
constexpr std::string_view kShowMenu = "AXShowMenu";

struct ShowMenuArguments {
  std::string nodeId;
};

ShowMenuArguments showMenuArguments(const Json& args) {
  return {.nodeId = textMember(args, "nodeId").value_or("")};
}

Json menuShown(Session& session, const StoredNode& stored) {
  const Point point = requireVisibleFrame(session, stored.element).center();
  const Performed shown = offersAction(session, stored.element, kShowMenu)
                              ? session.listener.perform(stored.element, kShowMenu)
                              : Performed::refused;
  if (shown == Performed::refused) {
    verifyPointer(session, point, stored.element);
    rightPress(session, point, [&] { verifyNodeAt(session, point, stored); });
    return {{"method", "pointer"}};
  }
  session.platform.clock.runLoopFor(kActionOpensMenu);
  Json result = {{"method", "accessibility"}};
  if (shown == Performed::pending) {
    result["pending"] = true;
  }
  return result;
}

}  // namespace

Json showMenu(Session& session, const Json& args) {
  const Action action(session);
  const ShowMenuArguments wanted = showMenuArguments(args);
  const StoredNode stored = session.nodes.require(wanted.nodeId, failures::kExpiredShowMenu);
  verifyAndActivate(session, stored);
  return action.done(menuShown(session, stored), wanted.nodeId);
}

}  // namespace tarqo::methods
