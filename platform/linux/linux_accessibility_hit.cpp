// Hit tests: what lies under a point of the screen.
#include <algorithm>

#include "platform/linux/linux_accessibility.h"

namespace tarqo::lnx {
namespace {

/// The deepest tree that a hit test follows.
constexpr int kMaxDepth = 60;

constexpr Duration kDefaultTimeout = std::chrono::milliseconds(300);

}  // namespace

std::optional<Element> LinuxAccessibility::elementAt(Point point) {
  reader_.beginCall();
  const std::optional<LocatedWindow> window = reader_.locator().windowAt(point);
  if (!window || window->pid == 0 || debts_.owes(window->pid)) {
    return std::nullopt;
  }
  const Parts context{.pid = window->pid, .timeout = kDefaultTimeout};
  for (const Toplevel& toplevel : toplevelsAt(*window, point)) {
    Parts top = context;
    top.ref = toplevel.ref;
    top.window = toplevel.ref;
    if (std::optional<AtspiRef> hit = hitFrom(top, point)) {
      Parts object = top;
      object.ref = *std::move(hit);
      return makeElement(asMet(std::move(object)));
    }
  }
  return std::nullopt;
}

std::vector<Toplevel> LinuxAccessibility::toplevelsAt(const LocatedWindow& window, Point point) {
  std::vector<Toplevel> result;
  for (Toplevel& toplevel : reader_.toplevels(window.pid, kDefaultTimeout)) {
    const std::optional<Rect> extents = plausible(toplevel.facts->extents);
    const bool its = toplevel.window && toplevel.window->number == window.number;
    // A popup is drawn by whichever object says that it is there.
    const bool popup = window.overrideRedirect && !toplevel.window && extents &&
                       extents->contains(point) && toplevel.facts->has(AtspiState::showing);
    if (its || popup) {
      result.push_back(std::move(toplevel));
    }
  }
  return result;
}

std::optional<AtspiRef> LinuxAccessibility::childAt(const Parts& object, Point point) {
  Point local = point;
  std::uint32_t ofWindow = 0;
  if (reader_.toolkitOf(object) == Toolkit::gtk4) {
    const std::optional<Toplevel> top = reader_.toplevelOf(object);
    if (!top) {
      return std::nullopt;
    }
    const Point offset = screenOffset(*top);
    local = {point.x - offset.x, point.y - offset.y};
    ofWindow = 1;
  }
  std::optional<AtspiRef> found;
  reader_.ask(object, [&](AtspiBatch& batch) {
    Message message = batch.make(object.ref, kComponent, "GetAccessibleAtPoint");
    if (message) {
      sd_bus_message_append(message.get(), "iiu", static_cast<std::int32_t>(local.x),
                            static_cast<std::int32_t>(local.y), ofWindow);
    }
    batch.send(std::move(message),
               [&found](Reply reply) { found = reply.ok ? readRef(reply.message) : std::nullopt; });
  });
  return found && !found->empty() && *found != object.ref ? found : std::nullopt;
}

/// GTK 3 answers one level at a time, the other toolkits the deepest object at once; asking on
/// until nothing deeper comes serves them all.
std::optional<AtspiRef> LinuxAccessibility::hitFrom(const Parts& top, Point point) {
  const FactsPtr facts = reader_.learn(top, Fact::kind);
  if (!facts) {
    return std::nullopt;
  }
  Parts at = top;
  std::vector<AtspiRef> seen{top.ref};
  for (int depth = 0; depth < kMaxDepth; ++depth) {
    const std::optional<AtspiRef> next = childAt(at, point);
    if (!next || std::ranges::find(seen, *next) != seen.end()) {
      break;
    }
    seen.push_back(*next);
    at.ref = *next;
  }
  return at.ref;
}

}  // namespace tarqo::lnx
