#include "platform/sim/sim_node.h"

#include <algorithm>
#include <utility>

#include "platform/sim/sim_element.h"
#include "platform/sim/sim_world.h"

namespace tarqo::sim {

Node::Node(App& app, std::string role)
    : app_(app), identity_(std::make_shared<Identity>(Identity{this})) {
  with("AXRole", Value{std::move(role)});
  with("AXEnabled", Value{true});
}

Node::~Node() { identity_->node = nullptr; }

Node& Node::at(const Rect& frame) {
  with("AXPosition", Value{Point{frame.x, frame.y}});
  return with("AXSize", Value{Size{frame.width, frame.height}});
}

Node& Node::withoutFrame() { return without("AXPosition").without("AXSize"); }

Node& Node::with(const std::string& name, Value value) {
  attributes_[name].value = std::move(value);
  unsupported_.erase(name);
  return *this;
}

Node& Node::without(const std::string& name) {
  attributes_.erase(name);
  unsupported_.insert(name);
  return *this;
}

Node& Node::settable(const std::string& name, bool settable) {
  attributes_[name].settable = settable;
  return *this;
}

Node& Node::takingTextByKeys() {
  takesTextByKeys_ = true;
  return *this;
}

Node& Node::onSet(const std::string& name, std::function<void(const Value&)> effect) {
  attributes_[name].onSet = sharing(std::move(effect));
  return settable(name);
}

Node& Node::failing(const std::string& name, bool failing) {
  attributes_[name].failing = failing;
  return *this;
}

Node& Node::refusingSet(const std::string& name) {
  attributes_[name].refusesSet = true;
  return settable(name);
}

Node& Node::settableUnknown(const std::string& name) {
  attributes_[name].settableUnknown = true;
  return *this;
}

Node& Node::failingBatch() {
  failingBatch_ = true;
  return *this;
}

Node& Node::failingActionNames() {
  failingActionNames_ = true;
  return *this;
}

Node& Node::withoutPid() {
  withoutPid_ = true;
  return *this;
}

void Node::moveBy(double dx, double dy) {
  if (const std::optional<Rect> mine = frame()) {
    at({mine->x + dx, mine->y + dy, mine->width, mine->height});
  }
  for (Node* child : children_) {
    child->moveBy(dx, dy);
  }
}

void Node::remove() {
  if (parent_ != nullptr) {
    std::erase(parent_->children_, this);
  }
  if (app_.focusedNode_ == this) {
    app_.focusedNode_ = nullptr;
  }
  removed_ = true;
  identity_->node = nullptr;
  while (!children_.empty()) {
    children_.back()->remove();
  }
}

void Node::recreate() {
  identity_->node = nullptr;
  identity_ = std::make_shared<Identity>(Identity{this});
}

void Node::focus() { app_.focusNode(this); }

void Node::announce(const std::string& notification, Duration delay) {
  app_.world_.clock.after(delay, [this, identity = identity_, notification] {
    app_.world_.deliver(app_, identity, notification);
  });
}

Action* Node::findAction(const std::string& name) const {
  const auto found = std::find_if(actions_.begin(), actions_.end(),
                                  [&](const auto& action) { return action->name() == name; });
  return found == actions_.end() ? nullptr : found->get();
}

std::vector<std::string> Node::offeredActions() const {
  std::vector<std::string> names;
  if (!failingActionNames_) {
    for (const auto& action : actions_) {
      names.push_back(action->name());
    }
  }
  return names;
}

Action& Node::action(const std::string& name) {
  if (Action* existing = findAction(name)) {
    return *existing;
  }
  actions_.push_back(std::make_unique<Action>(name));
  return *actions_.back();
}

Node& Node::withoutAction(const std::string& name) {
  std::erase_if(actions_, [&](const auto& action) { return action->name() == name; });
  return *this;
}

Node& Node::onPress(std::function<void()> effect) {
  const std::function<void()> one = sharing(std::move(effect));
  onClick_ = [one](int) { one(); };
  action("AXPress").effect(one);
  return *this;
}

Node& Node::onClick(std::function<void(int clickState)> effect) {
  onClick_ = sharing(std::move(effect));
  return *this;
}

Node& Node::onRightClick(std::function<void()> effect) {
  onRightClick_ = sharing(std::move(effect));
  return *this;
}

std::optional<Value> Node::read(const std::string& name) const {
  if (unsupported_.contains(name)) {
    return std::nullopt;
  }
  const auto found = attributes_.find(name);
  if (found != attributes_.end() && found->second.failing) {
    return std::nullopt;
  }
  return found != attributes_.end() && found->second.value ? found->second.value : derived(name);
}

std::optional<Value> Node::derived(const std::string& name) const {
  if (name == "AXChildren") {
    Values elements;
    for (const Node* child : children_) {
      elements.push_back(Value{child->element()});
    }
    return Value{std::move(elements)};
  }
  if (name == "AXParent" && parent_ != nullptr) {
    return Value{parent_->element()};
  }
  const auto focus = attributes_.find("AXFocused");
  if (name == "AXFocused" && (focus != attributes_.end() || app_.focusedNode() == this)) {
    return Value{app_.focusedNode() == this};
  }
  return std::nullopt;
}

std::vector<std::string> Node::derivedNames() const {
  return {"AXChildren", "AXParent", "AXFocused"};
}

std::vector<std::string> Node::attributeNames() const {
  std::vector<std::string> names = derivedNames();
  for (const auto& [name, attribute] : attributes_) {
    names.push_back(name);
  }
  return names;
}

bool Node::take(const std::string& name, const Value& value) {
  const auto found = attributes_.find(name);
  if (found == attributes_.end() || !found->second.settable || found->second.refusesSet) {
    return false;
  }
  const bool* flag = value.as<bool>();
  if (found->second.onSet) {
    // A copy: the effect may script the attribute anew.
    const std::function<void(const Value&)> effect = found->second.onSet;
    effect(value);
  } else if (name == "AXFocused" && flag != nullptr) {
    app_.focusNode(*flag ? this : nullptr);
  } else {
    found->second.value = value;
    if (name == "AXValue") {
      announce("AXValueChanged");
    }
  }
  return true;
}

std::string Node::readText(const std::string& name) const {
  const std::optional<Value> value = read(name);
  const auto* text = value ? value->as<std::string>() : nullptr;
  return text == nullptr ? "" : *text;
}

std::optional<Rect> Node::frame() const {
  const std::optional<Value> position = read("AXPosition");
  const std::optional<Value> size = read("AXSize");
  const auto* origin = position ? position->as<Point>() : nullptr;
  const auto* extent = size ? size->as<Size>() : nullptr;
  if (origin == nullptr || extent == nullptr) {
    return std::nullopt;
  }
  return Rect{origin->x, origin->y, extent->width, extent->height};
}

Element Node::element() const {
  return Element(std::make_shared<const NodeHandle>(app_.pid(), identity_));
}

std::string Node::name() const {
  const std::string title = readText("AXTitle");
  return readText("AXRole") + (title.empty() ? "" : " \"" + title + "\"");
}

}  // namespace tarqo::sim
