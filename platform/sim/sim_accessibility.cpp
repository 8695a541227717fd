#include "platform/sim/sim_accessibility.h"

#include <algorithm>
#include <utility>

#include "platform/sim/sim_element.h"

namespace tarqo::sim {
namespace {

const NodeHandle* handleOf(const Element& element) {
  return dynamic_cast<const NodeHandle*>(&element.object());
}

std::string shortText(const Value& value) {
  if (const auto* text = value.as<std::string>()) {
    return *text;
  }
  if (const auto* flag = value.as<bool>()) {
    return *flag ? "true" : "false";
  }
  if (const auto* number = value.as<double>()) {
    return numberText(*number);
  }
  return "a value";
}

class ListeningObserver final : public Observer {
 public:
  ListeningObserver(World& world, std::shared_ptr<Listener> listener)
      : world_(world), listener_(std::move(listener)) {}

  bool add(const Element& element, std::string_view notification) override {
    const NodeHandle* handle = handleOf(element);
    App* app = world_.appOf(listener_->pid);
    const std::string name(notification);
    if (app != nullptr && app->facts.ignoresSubscriptions) {
      world_.clock.advance(app->messagingTimeout());
      return false;
    }
    if (handle == nullptr || handle->node() == nullptr || app == nullptr ||
        &handle->node()->app() != app || app->facts.hung ||
        app->facts.unsupportedNotifications.contains(name)) {
      return false;
    }
    const bool whole = handle->node() == &app->node();
    listener_->subscriptions.emplace(whole ? nullptr : handle->identity(), name);
    return true;
  }

 private:
  World& world_;
  std::shared_ptr<Listener> listener_;
};

}  // namespace

/// Answers reads from what was read ahead until it ends.
class ReadAhead final : public TreeRead {
 public:
  ReadAhead(AccessibilityService& service, AccessibilityService::Copies copies, bool complete)
      : service_(service), complete_(complete) {
    service_.copies_ = std::move(copies);
    service_.silent_ = !complete;
  }
  ReadAhead(const ReadAhead&) = delete;
  ReadAhead& operator=(const ReadAhead&) = delete;
  ~ReadAhead() override {
    service_.copies_.clear();
    service_.silent_ = false;
  }

  [[nodiscard]] bool incomplete() const override { return !complete_ || service_.silent_; }
  void readLive() override {
    complete_ = !incomplete();
    service_.silent_ = false;
  }

 private:
  AccessibilityService& service_;
  bool complete_;
};

Element AccessibilityService::application(Pid pid, Duration messagingTimeout) {
  App* app = world_.appOf(pid);
  if (app == nullptr) {
    return Element(std::make_shared<const NodeHandle>(pid, nullptr));
  }
  app->messagingTimeout_ = messagingTimeout;
  return app->node().element();
}

Node* AccessibilityService::answering(const Element& element, Duration extra) {
  const NodeHandle* handle = handleOf(element);
  App* app = handle == nullptr ? nullptr : world_.appOf(handle->pid());
  if (app == nullptr || silent_) {
    return nullptr;
  }
  ++app->calls_;
  while (!app->afterCalls_.empty() && app->afterCalls_.begin()->first <= app->calls_) {
    const auto due = app->afterCalls_.extract(app->afterCalls_.begin());
    due.mapped()();
  }
  const Duration cost = app->facts.eachCallTakes + extra;
  const bool late = app->facts.hung || cost > app->messagingTimeout_;
  const Duration waited = late ? app->messagingTimeout_ : cost;
  if (waited > Duration::zero()) {
    world_.clock.advance(waited);
  }
  if (late && !copies_.empty()) {
    silent_ = true;  // Within a scope, one silence ends the asking.
  }
  // Asked anew: the application may have ended, and the element gone, while the call waited.
  return late || app->terminated() ? nullptr : handle->node();
}

const AccessibilityService::Copy* AccessibilityService::copyOf(const Element& element) const {
  const NodeHandle* handle = handleOf(element);
  if (copies_.empty() || handle == nullptr) {
    return nullptr;
  }
  const auto found = copies_.find(handle->identity());
  return found == copies_.end() ? nullptr : &found->second;
}

std::optional<Value> AccessibilityService::attribute(const Element& element,
                                                     std::string_view name) {
  if (const Copy* copy = copyOf(element)) {
    const auto found = copy->attributes.find(name);
    return found == copy->attributes.end() ? std::nullopt : std::optional(found->second);
  }
  const Node* node = answering(element);
  return node == nullptr ? std::nullopt : node->read(std::string(name));
}

std::vector<std::optional<Value>> AccessibilityService::attributes(
    const Element& element, std::span<const std::string_view> names) {
  std::vector<std::optional<Value>> result;
  if (copyOf(element) != nullptr) {
    for (const std::string_view name : names) {
      result.push_back(attribute(element, name));
    }
    return result;
  }
  const Node* node = answering(element);
  if (node == nullptr || node->failingBatch_) {
    return result;
  }
  for (const std::string_view name : names) {
    result.push_back(node->read(std::string(name)));
  }
  return result;
}

std::vector<std::string> AccessibilityService::actionNames(const Element& element) {
  if (const Copy* copy = copyOf(element)) {
    return copy->actions;
  }
  const Node* node = answering(element);
  return node == nullptr ? std::vector<std::string>{} : node->offeredActions();
}

Performed AccessibilityService::perform(const Element& element, std::string_view action) {
  const NodeHandle* handle = handleOf(element);
  const Node* target = handle == nullptr ? nullptr : handle->node();
  const std::string name(action);
  world_.eventLog.note(Topic::accessibility,
                       "perform " + name + " " + (target == nullptr ? "nothing" : target->name()));
  Node* node = answering(element);
  if (node == nullptr) {
    const App* app = handle == nullptr ? nullptr : world_.appOf(handle->pid());
    return app != nullptr && handle->node() != nullptr && !silent_ ? Performed::pending
                                                                   : Performed::refused;
  }
  const Action* script = node->findAction(name);
  if (script == nullptr || script->refused_) {
    return Performed::refused;
  }
  App& app = node->app();
  const Duration takes = script->takes_;
  const Duration patience = app.messagingTimeout_ * (app.facts.acknowledgesActions ? 2 : 1);
  if (takes > patience) {
    ++app.unfinishedActions_;
    world_.clock.after(takes, [this, &app, element, name] {
      --app.unfinishedActions_;
      carryOut(element, name);
    });
    world_.clock.advance(patience);
    return Performed::pending;
  }
  world_.clock.advance(takes);
  if (!carryOut(element, name)) {
    return Performed::refused;
  }
  return app.facts.acknowledgesActions ? Performed::acknowledged : Performed::taken;
}

bool AccessibilityService::isEndangeredByKeys(Pid pid) {
  const App* app = world_.appOf(pid);
  return app != nullptr && app->isEndangeredByKeys();
}

bool AccessibilityService::takesTextByKeys(const Element& element) {
  const NodeHandle* handle = handleOf(element);
  const Node* node = handle == nullptr ? nullptr : handle->node();
  return node != nullptr && node->takesTextByKeys();
}

std::optional<Size> AccessibilityService::wheelStep(const Element& /*element*/) {
  return std::nullopt;
}

std::optional<Element> AccessibilityService::otherKeyWindow(const Element& window) {
  const auto pid = pidOf(window);
  const App* app = pid ? world_.appOf(*pid) : nullptr;
  if (app == nullptr || !app->facts.tellsKeyWindow || app->focusedWindow() == nullptr) {
    return std::nullopt;
  }
  Element focused = app->focusedWindow()->element();
  return focused == window ? std::nullopt : std::optional(std::move(focused));
}

// The element may have gone since the application was asked.
bool AccessibilityService::carryOut(const Element& element, const std::string& name) {
  const NodeHandle* handle = handleOf(element);
  Node* node = world_.appOf(handle->pid()) == nullptr ? nullptr : handle->node();
  Action* action = node == nullptr ? nullptr : node->findAction(name);
  if (action == nullptr || action->refused_) {
    return false;
  }
  if (name == "AXPress") {
    ++node->presses_;
  }
  for (const auto& [notification, delay] : action->announced_) {
    node->announce(notification, delay);
  }
  if (action->effect_ && action->effectDelay_ == Duration::zero()) {
    // A copy: the effect may give the action another effect, or remove it.
    const std::function<void()> effect = action->effect_;
    effect();
  } else if (action->effect_) {
    world_.clock.after(action->effectDelay_, action->effect_);
  }
  return true;
}

bool AccessibilityService::set(const Element& element, std::string_view name, const Value& value) {
  const NodeHandle* handle = handleOf(element);
  const std::string attribute(name);
  const std::string target =
      handle == nullptr || handle->node() == nullptr ? "nothing" : handle->node()->name();
  world_.eventLog.note(Topic::accessibility,
                       "set " + attribute + " " + target + " = " + shortText(value));
  Node* node = answering(element);
  return node != nullptr && node->take(attribute, value);
}

bool AccessibilityService::isSettable(const Element& element, std::string_view name) {
  const Node* node = answering(element);
  if (node == nullptr) {
    return false;
  }
  const auto found = node->attributes_.find(name);
  return found != node->attributes_.end() && found->second.settable &&
         !found->second.settableUnknown;
}

std::optional<Pid> AccessibilityService::pidOf(const Element& element) {
  const NodeHandle* handle = handleOf(element);
  if (handle == nullptr || (handle->node() != nullptr && handle->node()->withoutPid_)) {
    return std::nullopt;
  }
  return handle->pid();
}

std::unique_ptr<Observer> AccessibilityService::observe(Pid pid, NotificationCallback callback) {
  const App* app = world_.appOf(pid);
  if (app == nullptr || app->facts.refusesObservers) {
    return nullptr;
  }
  std::erase_if(world_.listeners, [](const auto& each) { return each.expired(); });
  auto listener = std::make_shared<Listener>(Listener{pid, std::move(callback), {}});
  world_.listeners.push_back(listener);
  return std::make_unique<ListeningObserver>(world_, std::move(listener));
}

std::unique_ptr<TreeRead> AccessibilityService::readTree(const Element& root,
                                                         const TreeReadLimits& limits) {
  if (!readsAhead || world_.clock.now() >= limits.deadline) {
    return nullptr;
  }
  const NodeHandle* handle = handleOf(root);
  App* app = handle == nullptr ? nullptr : world_.appOf(handle->pid());
  if (app == nullptr) {
    return nullptr;
  }
  // One round trip, given up at the deadline.
  const Duration own =
      std::exchange(app->messagingTimeout_,
                    std::min(app->messagingTimeout_, limits.deadline - world_.clock.now()));
  const Node* node = answering(root);
  app->messagingTimeout_ = own;
  if (node == nullptr) {
    return nullptr;
  }
  Copies copies;
  const bool complete = copyTree(*node, copies);
  return std::make_unique<ReadAhead>(*this, std::move(copies), complete);
}

// Whether all was copied.
bool AccessibilityService::copyTree(const Node& node, Copies& copies) const {
  if (copies.size() == silentAfter) {
    return false;
  }
  Copy copy;
  for (const std::string& name : node.attributeNames()) {
    if (std::optional<Value> value = node.read(name)) {
      copy.attributes.emplace(name, *std::move(value));
    }
  }
  copy.actions = node.offeredActions();
  copies.emplace(node.identity(), std::move(copy));
  return std::ranges::all_of(node.children(),
                             [&](const Node* child) { return copyTree(*child, copies); });
}

}  // namespace tarqo::sim
