#include "platform/linux/atspi/read/read_ahead.h"

#include "platform/linux/atspi/read/property_request.h"

#include <algorithm>

#include "platform/linux/atspi/translate/view.h"
#include "platform/linux/atspi/translate/visibility.h"
#include "platform/linux/atspi/wire/codec.h"

namespace tarqo::lnx::atspi {
namespace {

/// Objects read in one stretch. The walk seldom wants more than this, and what it does not want was
/// read in vain.
constexpr int kStretch = 2000;

/// Objects being read at once: enough to keep the target busy, few enough to keep to the walk's
/// order.
constexpr int kAtOnce = 48;

/// From this many objects on, reading the toolkit's whole cache costs less than reading each.
constexpr int kCacheWorthwhile = 150;

constexpr auto kCachePatience = std::chrono::milliseconds(1000);

/// The part of the walk's time in which no further object is read: half of it for the answers that
/// are under way, half for the walk over what was read, which costs a small part of reading it.
constexpr int kReservedShare = 4;
constexpr Duration kReservedAtMost = std::chrono::milliseconds(400);

bool hasCache(Toolkit toolkit) {
  // GTK 4 and Qt 5 answer with the root alone or nothing. GTK 3 has one, but is as fast without.
  return toolkit == Toolkit::chromium;
}

/// Whether an object that is reported as shown may be hidden all the same, which its place shows:
/// rows scrolled away (GTK 3), lists of closed boxes (Qt), pages of a stack (GTK 4).
bool isHiddenByPlaceOnly(const Properties& properties, Toolkit toolkit) {
  return toolkit == Toolkit::gtk4 || toolkit == Toolkit::qt ||
         (toolkit == Toolkit::gtk3 && isCellRole(properties.role));
}

/// Finds the children of every parent in the cache, where the cache lists all of them and in which
/// order.
class ChildrenFromCache {
 public:
  void add(const CacheItem& item) {
    counts_[item.ref] = item.childCount;
    children_[item.parent].emplace_back(item.index, item.ref);
  }

  [[nodiscard]] std::optional<std::vector<Ref>> of(const Ref& parent) {
    const int count = counts_[parent];
    std::vector<std::pair<int, Ref>>& listed = children_[parent];
    if (count != static_cast<int>(listed.size())) {
      return std::nullopt;
    }
    std::ranges::sort(listed, {}, [](const auto& child) { return child.first; });
    std::vector<Ref> result;
    for (std::size_t i = 0; i < listed.size(); ++i) {
      if (listed[i].first != static_cast<int>(i)) {
        return std::nullopt;
      }
      result.push_back(listed[i].second);
    }
    return result;
  }

 private:
  std::unordered_map<Ref, int, RefHash> counts_;
  std::unordered_map<Ref, std::vector<std::pair<int, Ref>>, RefHash> children_;
};

}  // namespace

PropertySet propertiesReadAhead() {
  return Property::basics | Property::name | Property::description | Property::identifier |
         Property::attributes | Property::children | Property::extents | Property::actions |
         Property::value | Property::address;
}

struct ReadAhead::Stretch {
  Batch& batch;
  const std::string& busName;
  Toolkit toolkit = Toolkit::other;
  int started = 0;
  int active = 0;
  int limit = kStretch;
};

ReadAhead::ReadAhead(const ObjectHandle& root, const TreeReadLimits& limits, Clock& clock)
    : clock_(clock), pid_(root.pid), root_(root.ref), elements_(limits.elements) {
  const Duration left = std::max(limits.deadline - clock_.now(), Duration::zero());
  const Duration reserved = std::min(left / kReservedShare, kReservedAtMost);
  openUntil_ = limits.deadline - reserved;
  answersUntil_ = limits.deadline - reserved / 2;
}

bool ReadAhead::isOver() const { return clock_.now() >= openUntil_; }

const std::shared_ptr<Properties>& ReadAhead::propertiesOf(const Ref& ref) {
  std::shared_ptr<Properties>& properties = properties_[ref];
  if (!properties) {
    properties = std::make_shared<Properties>();
  }
  return properties;
}

void ReadAhead::readFrom(const ObjectHandle& object, Toolkit toolkit, Bus& channel) {
  if (ended_ || propertiesOf(object.ref)->known.hasAll(propertiesReadAhead())) {
    return;
  }
  std::erase_if(ahead_, [&object](const Node& node) { return node.ref == object.ref; });
  ahead_.push_back({object.ref, object.inMenuBar, object.clip});
  int left = std::min(kStretch, static_cast<int>(elements_));
  bool atRoot = object.ref == root_;
  while (left > 0 && !ahead_.empty() && !ended_) {
    if (isOver() && !atRoot) {
      end();
      return;
    }
    const bool useCache = hasCache(toolkit) && !cacheTried_;
    Batch batch(channel);
    Stretch stretch{batch, object.ref.bus, toolkit};
    stretch.limit = useCache ? std::min(kCacheWorthwhile, left) : left;
    Instant until = answersUntil_;
    const Instant patience = clock_.now() + object.timeout;
    if (atRoot && until < patience) {
      until = patience;
      stretch.limit = 1;  // The rest has to do with the time there is.
    }
    start(stretch);
    if (batch.run({until, object.timeout}) != BatchOutcome::complete) {
      end();
      return;
    }
    atRoot = false;
    left -= stretch.started;
    if (useCache && left > 0 && !ahead_.empty()) {
      readCache(object, channel);
    }
  }
}

void ReadAhead::start(Stretch& stretch) {
  while (stretch.active < kAtOnce && stretch.started < stretch.limit && !ahead_.empty() &&
         (stretch.started == 0 || !isOver())) {
    const Node node = std::move(ahead_.back());
    ahead_.pop_back();
    open(stretch, node);
  }
}

void ReadAhead::open(Stretch& stretch, const Node& node) {
  const std::shared_ptr<Properties> properties = propertiesOf(node.ref);
  // What another process shows in there is read when the walk gets to it.
  if (properties->known.hasAll(propertiesReadAhead()) || node.ref.bus != stretch.busName) {
    return;
  }
  ++stretch.started;
  ++stretch.active;
  requestProperties(
      stretch.batch, {node.ref, stretch.toolkit, Property::roleAndStates}, properties,
      [this, &stretch, node, properties] { onRoleAndStates(stretch, node, properties); });
}

void ReadAhead::onRoleAndStates(Stretch& stretch, const Node& node,
                                const std::shared_ptr<Properties>& properties) {
  const bool shown =
      node.whole || isShowing(*properties, stretch.toolkit) || isWindowRole(properties->role);
  if (!properties->alive || !shown) {
    skip(stretch, *properties);
  } else if (isHiddenByPlaceOnly(*properties, stretch.toolkit)) {
    requestProperties(stretch.batch, {node.ref, stretch.toolkit, Property::extents}, properties,
                      [this, &stretch, node, properties] { onExtents(stretch, node, properties); });
  } else {
    requestAll(stretch, node, properties);
  }
}

void ReadAhead::onExtents(Stretch& stretch, const Node& node,
                          const std::shared_ptr<Properties>& properties) {
  // What lies outside of the window is scrolled away, unless it is in a popover.
  if (isWindow(*properties) && windows && windows->popups.empty()) {
    window_ = plausible(properties->extents);
  }
  const View view{.properties = *properties,
                  .toolkit = stretch.toolkit,
                  .inMenuBar = node.whole,
                  .clip = node.clip ? node.clip : window_};
  if (isHidden(view) && !isWindow(*properties)) {
    skip(stretch, *properties);
  } else {
    requestAll(stretch, node, properties);
  }
}

void ReadAhead::requestAll(Stretch& stretch, const Node& node,
                           const std::shared_ptr<Properties>& properties) {
  requestProperties(stretch.batch, {node.ref, stretch.toolkit, propertiesReadAhead(), !node.whole},
                    properties, [this, &stretch, node, properties] {
                      const std::optional<Rect> clip =
                          clipBelow(node.clip, *properties, stretch.toolkit);
                      if (properties->children) {
                        for (auto child = properties->children->rbegin();
                             child != properties->children->rend(); ++child) {
                          ahead_.push_back({*child, node.whole, clip});
                        }
                      }
                      --stretch.active;
                      start(stretch);
                    });
}

void ReadAhead::skip(Stretch& stretch, Properties& properties) {
  // Hidden objects are not read further, nor are their children.
  properties.known.add(propertiesReadAhead());
  --stretch.active;
  start(stretch);
}

void ReadAhead::readCache(const ObjectHandle& object, Bus& channel) {
  cacheTried_ = true;
  std::vector<CacheItem> items;
  Batch batch(channel);
  batch.call({object.ref.bus, "/org/a11y/atspi/cache"}, "org.a11y.atspi.Cache", "GetItems",
             [&items](Reply reply) {
               if (reply.ok) {
                 items = readCacheItems(reply.message);
               }
             });
  // The answer is one message that takes the target long to make.
  const Duration wait = std::max<Duration>(object.timeout, kCachePatience);
  if (batch.run({answersUntil_, wait}) != BatchOutcome::complete) {
    end();
    return;
  }
  ChildrenFromCache children;
  for (const CacheItem& item : items) {
    children.add(item);
  }
  for (CacheItem& item : items) {
    Properties& properties = *propertiesOf(item.ref);
    if (properties.known.has(Property::basics)) {
      continue;
    }
    properties.alive = true;
    properties.role = item.role;
    properties.states = item.states;
    properties.interfaces = item.interfaces;
    properties.name = std::move(item.name);
    properties.description = std::move(item.description);
    properties.parent = std::move(item.parent);
    properties.known.add(Property::basics | Property::name | Property::description |
                         Property::parent);
    properties.children = children.of(item.ref);
    if (properties.children) {
      properties.known.add(Property::children);
    }
  }
}

}  // namespace tarqo::lnx::atspi
