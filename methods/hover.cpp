// The "hover" method: rests the pointer on a node.

#include "base/failure.h"
#include "input/pointer.h"
#include "methods/action.h"
#include "methods/methods.h"

namespace tarqo::methods {
namespace {

constexpr Duration kHoverRest = std::chrono::milliseconds(450);

struct HoverArguments {
  std::string nodeId;
};

HoverArguments hoverArguments(const Json& args) {
  return {.nodeId = textMember(args, "nodeId").value_or("")};
}

}  // namespace

Json hover(Session& session, const Json& args) {
  const Action action(session);
  const HoverArguments wanted = hoverArguments(args);
  const StoredNode stored = session.nodes.require(wanted.nodeId, failures::kExpiredHover);
  verifyAndActivate(session, stored);
  // No hit test: the pointer presses nothing, whatever part of the element it rests on.
  const Point point = requireVisibleFrame(session, stored.element).center();
  verifyInsideApp(session, point);
  const auto source = session.platform.inputEvents.makeSource("");
  glide(session, point, source.get(), kHoverRest);
  // What the pointer rested on may have been covered meanwhile; then the hover was not seen.
  verifyInsideApp(session, point);
  return action.done({{"method", "pointer"}}, wanted.nodeId);
}

}  // namespace tarqo::methods
