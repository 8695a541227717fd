#include "platform/linux/atspi/read/read_ahead.h"

#include <algorithm>

#include "platform/linux/atspi/translate/translate.h"
#include "platform/linux/atspi/wire/codec.h"

namespace tarqo::lnx {
namespace {

/// Objects asked in one stretch. The walk seldom wants more than this, and what it does not want
/// was read in vain.
constexpr int kStretch = 2000;

/// Objects under way at once: enough to keep the target busy, few enough to keep to the walk's
/// order.
constexpr int kAtOnce = 48;

/// From this many objects on, reading the toolkit's whole cache costs less than asking each.
constexpr int kCacheWorthwhile = 150;

constexpr auto kCachePatience = std::chrono::milliseconds(1000);

/// What is left of the walk's time when no further object is asked: half of it for the answers that
/// are under way, half for the walk over what was read, which costs a small part of reading it.
constexpr int kReservedShare = 4;
constexpr Duration kReservedAtMost = std::chrono::milliseconds(400);

bool hasCache(Toolkit toolkit) {
  // GTK 4 and Qt 5 answer with the root alone or nothing. GTK 3 has one, but is as fast without.
  return toolkit == Toolkit::chromium;
}

/// Whether an object that is said to be shown may be none the less, which its place tells: rows
/// scrolled away (GTK 3), lists of closed boxes (Qt), pages of a stack (GTK 4).
bool onlyPlaceTellsHidden(const AtspiFacts& facts, Toolkit toolkit) {
  return toolkit == Toolkit::gtk4 || toolkit == Toolkit::qt ||
         (toolkit == Toolkit::gtk3 && isCellRole(facts.role));
}

/// Gives every parent the children that the cache lists for it, where it lists all of them and says
/// in which order.
class ChildrenFromCache {
 public:
  void add(const CacheItem& item) {
    counts_[item.ref] = item.childCount;
    children_[item.parent].emplace_back(item.index, item.ref);
  }

  [[nodiscard]] std::optional<std::vector<AtspiRef>> of(const AtspiRef& parent) {
    const int count = counts_[parent];
    std::vector<std::pair<int, AtspiRef>>& listed = children_[parent];
    if (count != static_cast<int>(listed.size())) {
      return std::nullopt;
    }
    std::ranges::sort(listed, {}, [](const auto& child) { return child.first; });
    std::vector<AtspiRef> result;
    for (std::size_t i = 0; i < listed.size(); ++i) {
      if (listed[i].first != static_cast<int>(i)) {
        return std::nullopt;
      }
      result.push_back(listed[i].second);
    }
    return result;
  }

 private:
  std::unordered_map<AtspiRef, int, AtspiRefHash> counts_;
  std::unordered_map<AtspiRef, std::vector<std::pair<int, AtspiRef>>, AtspiRefHash> children_;
};

}  // namespace

FactSet factsReadAhead() {
  return Fact::kind | Fact::name | Fact::description | Fact::identifier | Fact::attributes |
         Fact::children | Fact::extents | Fact::actions | Fact::value | Fact::address;
}

struct AtspiTree::Stretch {
  AtspiBatch& batch;
  const std::string& busName;
  Toolkit toolkit = Toolkit::other;
  int started = 0;
  int active = 0;
  int limit = kStretch;
};

AtspiTree::AtspiTree(const AtspiElement::Parts& root, const TreeReadLimits& limits)
    : pid_(root.pid), root_(root.ref), elements_(limits.elements) {
  const Duration left =
      std::max(limits.deadline - std::chrono::steady_clock::now(), Duration::zero());
  const Duration reserved = std::min(left / kReservedShare, kReservedAtMost);
  openUntil_ = limits.deadline - reserved;
  answersUntil_ = limits.deadline - reserved / 2;
}

bool AtspiTree::isOver() const { return std::chrono::steady_clock::now() >= openUntil_; }

const std::shared_ptr<AtspiFacts>& AtspiTree::factsOf(const AtspiRef& ref) {
  std::shared_ptr<AtspiFacts>& facts = facts_[ref];
  if (!facts) {
    facts = std::make_shared<AtspiFacts>();
  }
  return facts;
}

void AtspiTree::readAhead(const AtspiElement::Parts& object, Toolkit toolkit, AtspiBus& channel) {
  if (ended_ || factsOf(object.ref)->known.hasAll(factsReadAhead())) {
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
    AtspiBatch batch(channel);
    Stretch stretch{batch, object.ref.bus, toolkit};
    stretch.limit = useCache ? std::min(kCacheWorthwhile, left) : left;
    Instant until = answersUntil_;
    const Instant patience = std::chrono::steady_clock::now() + object.timeout;
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

void AtspiTree::start(Stretch& stretch) {
  while (stretch.active < kAtOnce && stretch.started < stretch.limit && !ahead_.empty() &&
         (stretch.started == 0 || !isOver())) {
    const Node node = std::move(ahead_.back());
    ahead_.pop_back();
    open(stretch, node);
  }
}

void AtspiTree::open(Stretch& stretch, const Node& node) {
  const std::shared_ptr<AtspiFacts> facts = factsOf(node.ref);
  // What another process shows in there is read when the walk gets to it.
  if (facts->known.hasAll(factsReadAhead()) || node.ref.bus != stretch.busName) {
    return;
  }
  ++stretch.started;
  ++stretch.active;
  askFacts(stretch.batch, {node.ref, stretch.toolkit, Fact::look}, facts,
           [this, &stretch, node, facts] { lookKnown(stretch, node, facts); });
}

void AtspiTree::lookKnown(Stretch& stretch, const Node& node,
                          const std::shared_ptr<AtspiFacts>& facts) {
  const bool shown = node.whole || isShowing(*facts, stretch.toolkit) || isWindowRole(facts->role);
  if (!facts->alive || !shown) {
    passBy(stretch, *facts);
  } else if (onlyPlaceTellsHidden(*facts, stretch.toolkit)) {
    askFacts(stretch.batch, {node.ref, stretch.toolkit, Fact::extents}, facts,
             [this, &stretch, node, facts] { placeKnown(stretch, node, facts); });
  } else {
    askAll(stretch, node, facts);
  }
}

void AtspiTree::placeKnown(Stretch& stretch, const Node& node,
                           const std::shared_ptr<AtspiFacts>& facts) {
  // What lies outside of the window is scrolled away, unless it is in a popover.
  if (isWindow(*facts) && windows && windows->popups.empty()) {
    window_ = plausible(facts->extents);
  }
  const AtspiView view{.facts = *facts,
                       .toolkit = stretch.toolkit,
                       .inMenuBar = node.whole,
                       .clip = node.clip ? node.clip : window_};
  if (isHidden(view) && !isWindow(*facts)) {
    passBy(stretch, *facts);
  } else {
    askAll(stretch, node, facts);
  }
}

void AtspiTree::askAll(Stretch& stretch, const Node& node,
                       const std::shared_ptr<AtspiFacts>& facts) {
  askFacts(stretch.batch, {node.ref, stretch.toolkit, factsReadAhead(), !node.whole}, facts,
           [this, &stretch, node, facts] {
             const std::optional<Rect> clip = clipBelow(node.clip, *facts, stretch.toolkit);
             if (facts->children) {
               for (auto child = facts->children->rbegin(); child != facts->children->rend();
                    ++child) {
                 ahead_.push_back({*child, node.whole, clip});
               }
             }
             --stretch.active;
             start(stretch);
           });
}

void AtspiTree::passBy(Stretch& stretch, AtspiFacts& facts) {
  // Nobody looks below what is hidden, and of itself nothing more is asked.
  facts.known.add(factsReadAhead());
  --stretch.active;
  start(stretch);
}

void AtspiTree::readCache(const AtspiElement::Parts& object, AtspiBus& channel) {
  cacheTried_ = true;
  std::vector<CacheItem> items;
  AtspiBatch batch(channel);
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
    AtspiFacts& facts = *factsOf(item.ref);
    if (facts.known.has(Fact::kind)) {
      continue;
    }
    facts.alive = true;
    facts.role = item.role;
    facts.states = item.states;
    facts.interfaces = item.interfaces;
    facts.name = std::move(item.name);
    facts.description = std::move(item.description);
    facts.parent = std::move(item.parent);
    facts.known.add(Fact::kind | Fact::name | Fact::description | Fact::parent);
    facts.children = children.of(item.ref);
    if (facts.children) {
      facts.known.add(Fact::children);
    }
  }
}

}  // namespace tarqo::lnx
