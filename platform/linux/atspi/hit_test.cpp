#include "platform/linux/atspi/hit_test.h"

#include <algorithm>

#include "platform/linux/atspi/read/search.h"
#include "platform/linux/atspi/translate/visibility.h"

namespace tarqo::lnx::atspi {
namespace {

/// The deepest tree that a hit test follows.
constexpr int kMaxHitDepth = 60;

/// Objects looked at for the one that a popup shows.
constexpr std::size_t kPopupSearch = 600;

/// Children looked at for the one that holds a point.
constexpr std::size_t kPlacedSearch = 300;

/// How long Chromium is given to find out from its page what lies at a point.
constexpr Duration kPageAnswers = std::chrono::milliseconds(10);

constexpr Duration kDefaultTimeout = std::chrono::milliseconds(300);

bool isMenuPart(const Properties& properties) {
  return isMenuEntryRole(properties.role) || properties.is(Role::menuBar) ||
         properties.is(Role::popupMenu);
}

/// Whether GTK 3 draws the children of such a container over each other.
bool overlapsItsChildren(const Properties& properties) {
  return properties.is(Role::panel) || properties.is(Role::frame) || properties.is(Role::dialog);
}

/// Whether it paints nothing itself.
bool isMereContainer(const Properties& properties) {
  return properties.is(Role::panel) || properties.is(Role::filler);
}

bool hasSizeOf(const Rect& extents, const x11::LocatedWindow& popup) {
  return extents.width == popup.client.width && extents.height == popup.client.height;
}

}  // namespace

std::optional<Element> HitTest::elementAt(Point point) {
  reader_.beginCall();
  const std::optional<x11::LocatedWindow> window = reader_.locator().windowAt(point);
  if (!window || window->pid == 0) {
    return std::nullopt;
  }
  if (std::optional<Element> bare = bareWindow(*window)) {
    return bare;
  }
  for (const ObjectHandle& start : hitCandidates(*window, point)) {
    ObjectHandle object = start;
    const std::optional<Ref> deepest = confirmedAt(start, point);
    if (!deepest) {
      return std::nullopt;
    }
    object.ref = *deepest;
    // GTK 3 answers with the table under the field.
    if (std::optional<Ref> editor = relations_.inlineEditorOver(object, point)) {
      object.ref = *std::move(editor);
    }
    if (reader_.read(object, Property::basics)) {
      return makeElement(relations_.withMenuPlace(std::move(object)));
    }
  }
  return std::nullopt;
}

/// The window itself, when no object shows it, or the popup over such a window. What lies where in
/// it, nobody tells.
std::optional<Element> HitTest::bareWindow(const x11::LocatedWindow& window) {
  const auto isMeant = [&window](const x11::LocatedWindow& each) {
    return each.number == window.number;
  };
  for (const x11::LocatedWindow& bare : reader_.windowsOf(window.pid, kDefaultTimeout).bare) {
    if (isMeant(bare) ||
        (window.overrideRedirect &&
         std::ranges::any_of(x11::popupsOver(reader_.locator().windowsOf(window.pid), bare.number),
                             isMeant))) {
      return makeBareWindow(window.pid, kDefaultTimeout, window.number);
    }
  }
  return std::nullopt;
}

/// The objects to start from: the window's own, or what shows itself in a popup.
std::vector<ObjectHandle> HitTest::hitCandidates(const x11::LocatedWindow& window, Point point) {
  std::vector<ObjectHandle> result;
  const std::vector<Toplevel> all = reader_.windowsOf(window.pid, kDefaultTimeout).toplevels;
  const auto partsOf = [&window](const Toplevel& toplevel) {
    return ObjectHandle{
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
    ObjectHandle top = partsOf(toplevel);
    if (std::optional<Ref> shown = popupObject(top, window, point)) {
      top.ref = *std::move(shown);
      result.push_back(std::move(top));
    }
  }
  return result;
}

/// What shows in a popup that is no top-level object: an entry of an open menu (GTK 3, Qt), or the
/// popover of its size (GTK 4).
std::optional<Ref> HitTest::popupObject(const ObjectHandle& top, const x11::LocatedWindow& popup,
                                        Point point) {
  const Toolkit toolkit = reader_.toolkitOf(top);
  const bool bySize = toolkit == Toolkit::gtk4;
  std::vector<Ref> starts{top.ref};
  if (!bySize) {
    starts = relations_.contextMenus(top);
    if (const std::optional<Ref> bar = application_.menuBarBelow(top)) {
      starts.push_back(*bar);
    }
  }
  for (Ref& start : starts) {
    ObjectHandle from = top;
    from.ref = std::move(start);
    if (std::optional<Ref> found = shownInPopup(from, popup, point)) {
      return found;
    }
  }
  return std::nullopt;
}

std::optional<Ref> HitTest::shownInPopup(const ObjectHandle& start, const x11::LocatedWindow& popup,
                                         Point point) {
  const Toolkit toolkit = reader_.toolkitOf(start);
  const bool bySize = toolkit == Toolkit::gtk4;
  std::optional<Ref> found;
  searchBelow(reader_, start, Property::basics | Property::extents, kPopupSearch,
              [&](const ObjectHandle& object, const Properties& properties) {
                if (!isShowing(properties, toolkit) || (!bySize && !isMenuPart(properties))) {
                  return Visit::skip;
                }
                const std::optional<Rect> extents = plausible(properties.extents);
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

/// Chromium answers with the last result of its page, as long as that object's place holds the
/// point, and requests a new one of the page after it has answered. When the window has moved, the
/// first answer is an object that lies elsewhere by now, and the right one comes a moment later.
/// Firefox answers with the window alone until its page has told what is in it.
std::optional<Ref> HitTest::confirmedAt(const ObjectHandle& start, Point point) {
  std::optional<Ref> found = deepestAt(start, point);
  const Toolkit toolkit = reader_.toolkitOf(start);
  if (toolkit != Toolkit::chromium && toolkit != Toolkit::gecko) {
    return found;
  }
  const Instant end = reader_.clock().now() + start.timeout;
  const auto isPreliminary = [&] {
    return (toolkit == Toolkit::gecko && *found == start.ref) || !liesAt(start, *found, point);
  };
  while (found && isPreliminary()) {
    if (reader_.clock().now() >= end) {
      return found == start.ref ? found : std::nullopt;
    }
    reader_.clock().sleep(kPageAnswers);
    found = deepestAt(start, point);
  }
  return found;
}

bool HitTest::liesAt(const ObjectHandle& start, const Ref& ref, Point point) {
  ObjectHandle object = start;
  object.ref = ref;
  const PropertiesPtr properties = reader_.read(object, Property::extents);
  const std::optional<Rect> extents = properties ? plausible(properties->extents) : std::nullopt;
  return extents && extents->contains(point);
}

/// GTK 3 answers one level at a time, the other toolkits with the deepest object; requesting until
/// nothing deeper comes serves them all. Empty when that takes longer than the messaging time-out:
/// a shallower object must not pass for the one under the pointer.
std::optional<Ref> HitTest::deepestAt(const ObjectHandle& start, Point point) {
  const Instant end = reader_.clock().now() + start.timeout;
  std::vector<ObjectHandle> way{start};
  for (int depth = 0; depth < kMaxHitDepth; ++depth) {
    std::optional<Ref> next = childAt(way.back(), point);
    if (!next) {
      next = placedChildAt(way.back(), point);
    }
    if (!next || std::ranges::find(way, *next, &ObjectHandle::ref) != way.end()) {
      break;
    }
    way.push_back(start);
    way.back().ref = *std::move(next);
    if (reader_.clock().now() >= end) {
      return std::nullopt;
    }
  }
  if (reader_.toolkitOf(start) == Toolkit::gtk3) {
    if (std::optional<Ref> over = drawnOver(way, point)) {
      ObjectHandle from = start;
      from.ref = *std::move(over);
      return deepestAt(from, point);
    }
  }
  return way.back().ref;
}

std::optional<Ref> HitTest::childAt(const ObjectHandle& object, Point point) {
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
  std::optional<Ref> found;
  reader_.request(object, [&](Batch& batch) {
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

/// The child whose place holds the point, where the toolkit's own answer stops short. GTK 4 gives
/// no answer over parts of an entry that are no objects. In GTK 3 the page of a tab is a child of
/// the tab, far from where the tab is.
std::optional<Ref> HitTest::placedChildAt(const ObjectHandle& object, Point point) {
  const Toolkit toolkit = reader_.toolkitOf(object);
  const PropertiesPtr properties = reader_.read(object, Property::basics);
  const bool stopsShort = toolkit == Toolkit::gtk4 || (toolkit == Toolkit::gtk3 && properties &&
                                                       properties->is(Role::pageTabList));
  const std::optional<Point> offset = stopsShort ? relations_.offsetOf(object) : std::nullopt;
  if (!offset) {
    return std::nullopt;
  }
  const Point local{point.x - offset->x, point.y - offset->y};
  std::optional<Ref> found;
  searchBelow(
      reader_, object, Property::basics | Property::extents, kPlacedSearch,
      [&](const ObjectHandle& child, const Properties& its) {
        if (its.is(Role::pageTab) && toolkit == Toolkit::gtk3) {
          return Visit::descend;
        }
        const std::optional<Rect> extents = plausible(its.extents);
        // Later children are drawn over earlier ones.
        if (isShowing(its, toolkit) && its.drawn != false && extents && extents->contains(local)) {
          found = child.ref;
        }
        return Visit::skip;
      });
  return found;
}

/// What is drawn over the objects of a way down to a point. GTK 3 answers with the first child
/// whose place holds the point, and draws the later ones over it: what an overlay shows (a search
/// bar over a text), and the popovers of a window. Two rounds of requests, however long the way.
std::optional<Ref> HitTest::drawnOver(const std::vector<ObjectHandle>& way, Point point) {
  const std::vector<PropertiesPtr> properties =
      reader_.readAll(way, Property::basics | Property::extents | Property::children);
  std::vector<ObjectHandle> later;
  std::vector<Rect> places;  // Of their parents.
  for (std::size_t i = 0; i + 1 < way.size(); ++i) {
    const std::optional<Rect> place =
        properties[i] ? plausible(properties[i]->extents) : std::nullopt;
    if (!place || !overlapsItsChildren(*properties[i]) || !properties[i]->children) {
      continue;
    }
    const std::vector<Ref>& children = *properties[i]->children;
    auto child = std::ranges::find(children, way[i + 1].ref);
    for (child += child != children.end() ? 1 : 0;
         child != children.end() && later.size() < kPlacedSearch; ++child) {
      later.push_back(way[i]);
      later.back().ref = *child;
      places.push_back(*place);
    }
  }
  const std::vector<PropertiesPtr> theirs =
      reader_.readAll(later, Property::basics | Property::extents);
  std::optional<Ref> over;
  Rect parent;
  for (std::size_t i = 0; i < later.size(); ++i) {
    const std::optional<Rect> extents = theirs[i] ? plausible(theirs[i]->extents) : std::nullopt;
    // The outermost container's cover those of the ones inside it.
    if (!extents || !extents->contains(point) || !isShowing(*theirs[i], Toolkit::gtk3) ||
        (over && parent != places[i])) {
      continue;
    }
    // One that fills the whole container may be empty where the point is, and let it through.
    const bool fills = extents->width >= places[i].width && extents->height >= places[i].height;
    if (!fills || showsSomethingAt(later[i], point)) {
      over = later[i].ref;
      parent = places[i];
    }
  }
  return over;
}

/// Whether more than containers lies at the point.
bool HitTest::showsSomethingAt(const ObjectHandle& object, Point point) {
  const std::optional<Ref> deepest = deepestAt(object, point);
  if (!deepest) {
    return false;
  }
  ObjectHandle found = object;
  found.ref = *deepest;
  const PropertiesPtr its = reader_.read(found, Property::basics);
  return its && !isMereContainer(*its);
}

}  // namespace tarqo::lnx::atspi
