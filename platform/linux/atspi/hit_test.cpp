#include "platform/linux/atspi/hit_test.h"

#include <algorithm>
#include <thread>

#include "platform/linux/atspi/read/search.h"
#include "platform/linux/atspi/translate/translate.h"

namespace tarqo::lnx {
namespace {

/// The deepest tree that a hit test follows.
constexpr int kMaxHitDepth = 60;

/// Objects looked at for the one that a popup shows.
constexpr std::size_t kPopupSearch = 600;

/// Children looked at for the one that holds a point.
constexpr std::size_t kPlacedSearch = 300;

/// How long Chromium is given to ask its page what lies at a point.
constexpr Duration kPageAnswers = std::chrono::milliseconds(10);

constexpr Duration kDefaultTimeout = std::chrono::milliseconds(300);

bool isMenuPart(const AtspiFacts& facts) {
  return isMenuEntryRole(facts.role) || facts.is(AtspiRole::menuBar) ||
         facts.is(AtspiRole::popupMenu);
}

bool hasSizeOf(const Rect& extents, const LocatedWindow& popup) {
  return extents.width == popup.client.width && extents.height == popup.client.height;
}

}  // namespace

std::optional<Element> HitTest::elementAt(Point point) {
  reader_.beginCall();
  const std::optional<LocatedWindow> window = reader_.locator().windowAt(point);
  if (!window || window->pid == 0) {
    return std::nullopt;
  }
  for (const Parts& start : hitCandidates(*window, point)) {
    Parts object = start;
    const std::optional<AtspiRef> deepest = confirmedAt(start, point);
    if (!deepest) {
      return std::nullopt;
    }
    object.ref = *deepest;
    if (reader_.learn(object, Fact::kind)) {
      return makeElement(relations_.asMet(std::move(object)));
    }
  }
  return std::nullopt;
}

/// The objects to start from: the window's own, or what shows itself in a popup.
std::vector<AtspiElement::Parts> HitTest::hitCandidates(const LocatedWindow& window, Point point) {
  std::vector<Parts> result;
  const std::vector<Toplevel> all = reader_.windowsOf(window.pid, kDefaultTimeout).toplevels;
  const auto partsOf = [&window](const Toplevel& toplevel) {
    return Parts{
        .pid = window.pid, .timeout = kDefaultTimeout, .ref = toplevel.ref, .window = toplevel.ref};
  };
  for (const Toplevel& toplevel : all) {
    if (toplevel.window && toplevel.window->number == window.number) {
      return {partsOf(toplevel)};
    }
  }
  for (const Toplevel& toplevel : all) {
    if (!window.overrideRedirect || !toplevel.window || toplevel.window->overrideRedirect) {
      continue;
    }
    Parts top = partsOf(toplevel);
    if (std::optional<AtspiRef> shown = popupObject(top, window, point)) {
      top.ref = *std::move(shown);
      result.push_back(std::move(top));
    }
  }
  return result;
}

/// What a popup without an object of its own at the top shows: an entry of an open menu (GTK 3,
/// Qt), or the popover of its size (GTK 4).
std::optional<AtspiRef> HitTest::popupObject(const Parts& top, const LocatedWindow& popup,
                                             Point point) {
  const Toolkit toolkit = reader_.toolkitOf(top);
  const bool bySize = toolkit == Toolkit::gtk4;
  std::vector<AtspiRef> starts{top.ref};
  if (!bySize) {
    starts = relations_.contextMenus(top);
    if (const std::optional<AtspiRef> bar = application_.menuBarBelow(top)) {
      starts.push_back(*bar);
    }
  }
  for (AtspiRef& start : starts) {
    Parts from = top;
    from.ref = std::move(start);
    if (std::optional<AtspiRef> found = shownInPopup(from, popup, point)) {
      return found;
    }
  }
  return std::nullopt;
}

std::optional<AtspiRef> HitTest::shownInPopup(const Parts& start, const LocatedWindow& popup,
                                              Point point) {
  const Toolkit toolkit = reader_.toolkitOf(start);
  const bool bySize = toolkit == Toolkit::gtk4;
  std::optional<AtspiRef> found;
  searchBelow(reader_, start, Fact::kind | Fact::extents, kPopupSearch,
              [&](const Parts& object, const AtspiFacts& facts) {
                if (!isShowing(facts, toolkit) || (!bySize && !isMenuPart(facts))) {
                  return Visit::skip;
                }
                const std::optional<Rect> extents = plausible(facts.extents);
                if (bySize && found) {
                  return Visit::skip;
                }
                if (extents && (bySize ? hasSizeOf(*extents, popup) : extents->contains(point))) {
                  found = object.ref;
                }
                return Visit::descend;
              });
  return found;
}

/// Chromium answers with what its page said last, as long as that place of the screen holds the
/// point, and asks the page anew behind the answer. After the window has moved, the first answer is
/// an object that lies elsewhere by now, and the right one comes a moment later.
std::optional<AtspiRef> HitTest::confirmedAt(const Parts& start, Point point) {
  std::optional<AtspiRef> found = deepestAt(start, point);
  if (reader_.toolkitOf(start) != Toolkit::chromium) {
    return found;
  }
  const Instant end = std::chrono::steady_clock::now() + start.timeout;
  while (found && !liesAt(start, *found, point)) {
    if (std::chrono::steady_clock::now() >= end) {
      return std::nullopt;
    }
    std::this_thread::sleep_for(kPageAnswers);
    found = deepestAt(start, point);
  }
  return found;
}

bool HitTest::liesAt(const Parts& start, const AtspiRef& ref, Point point) {
  Parts object = start;
  object.ref = ref;
  const FactsPtr facts = reader_.learn(object, Fact::extents);
  const std::optional<Rect> extents = facts ? plausible(facts->extents) : std::nullopt;
  return extents && extents->contains(point);
}

/// GTK 3 answers one level at a time, the other toolkits the deepest object at once; asking on
/// until nothing deeper comes serves them all. None when that takes longer than the messaging
/// time-out: a shallower object must not pass for the one under the pointer.
std::optional<AtspiRef> HitTest::deepestAt(const Parts& start, Point point) {
  Parts at = start;
  const Instant end = std::chrono::steady_clock::now() + start.timeout;
  std::vector<AtspiRef> seen{start.ref};
  for (int depth = 0; depth < kMaxHitDepth; ++depth) {
    std::optional<AtspiRef> next = childAt(at, point);
    if (!next) {
      next = placedChildAt(at, point);
    }
    if (!next || std::ranges::find(seen, *next) != seen.end()) {
      break;
    }
    seen.push_back(*next);
    at.ref = *std::move(next);
    if (std::chrono::steady_clock::now() >= end) {
      return std::nullopt;
    }
  }
  return at.ref;
}

std::optional<AtspiRef> HitTest::childAt(const Parts& object, Point point) {
  Point local = point;
  std::uint32_t ofWindow = 0;
  if (reader_.toolkitOf(object) == Toolkit::gtk4) {
    const std::optional<Point> offset = relations_.offsetOf(object);
    if (!offset) {
      return std::nullopt;
    }
    local = {point.x - offset->x, point.y - offset->y};
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

/// The child whose place holds the point, where the toolkit's own answer stops short: GTK 4 points
/// at parts of an entry that are no objects, and then says nothing; in GTK 3 the page of a tab
/// hangs on the tab, far from where the tab is.
std::optional<AtspiRef> HitTest::placedChildAt(const Parts& object, Point point) {
  const Toolkit toolkit = reader_.toolkitOf(object);
  const FactsPtr facts = reader_.learn(object, Fact::kind);
  const bool stopsShort = toolkit == Toolkit::gtk4 ||
                          (toolkit == Toolkit::gtk3 && facts && facts->is(AtspiRole::pageTabList));
  const std::optional<Point> offset = stopsShort ? relations_.offsetOf(object) : std::nullopt;
  if (!offset) {
    return std::nullopt;
  }
  const Point local{point.x - offset->x, point.y - offset->y};
  std::optional<AtspiRef> found;
  searchBelow(reader_, object, Fact::kind | Fact::extents, kPlacedSearch,
              [&](const Parts& child, const AtspiFacts& its) {
                if (its.is(AtspiRole::pageTab) && toolkit == Toolkit::gtk3) {
                  return Visit::descend;
                }
                const std::optional<Rect> extents = plausible(its.extents);
                // Later children are drawn over earlier ones.
                if (isShowing(its, toolkit) && extents && extents->contains(local)) {
                  found = child.ref;
                }
                return Visit::skip;
              });
  return found;
}

}  // namespace tarqo::lnx
