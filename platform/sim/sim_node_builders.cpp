#include "platform/sim/sim_application.h"
#include "platform/sim/sim_node.h"

namespace tarqo::sim {
namespace {

// Rows of controls below one another, clear of a title bar.
constexpr double kInset = 20;
constexpr double kFirstRow = 40;
constexpr double kRowHeight = 24;
constexpr double kRowPitch = 32;
constexpr double kRowWidth = 160;

Rect rowOf(const Rect& parent, std::size_t index) {
  const double y = parent.minY() + kFirstRow + kRowPitch * static_cast<double>(index);
  return {parent.minX() + kInset, y, kRowWidth, kRowHeight};
}

}  // namespace

Node& Node::add(const std::string& role, const std::string& title) {
  Node& child = app_.adopt(std::make_unique<Node>(app_, role));
  if (!title.empty()) {
    child.title(title);
  }
  if (const std::optional<Rect> mine = frame()) {
    child.at(rowOf(*mine, children_.size()));
  }
  child.parent_ = this;
  children_.push_back(&child);
  return child;
}

Node& Node::button(const std::string& title) {
  Node& child = add("AXButton", title);
  child.action("AXPress");
  return child;
}

Node& Node::link(const std::string& title) {
  Node& child = add("AXLink", title);
  child.action("AXPress");
  return child;
}

Node& Node::label(const std::string& text) { return add("AXStaticText").value(text); }

Node& Node::textField(const std::string& value) {
  return add("AXTextField").value(value).settable("AXValue").settable("AXFocused");
}

Node& Node::secureField() { return textField().with("AXSubrole", Value{"AXSecureTextField"}); }

Node& Node::checkBox(const std::string& title, bool checked) {
  Node& child = add("AXCheckBox", title).with("AXValue", Value{checked ? 1.0 : 0.0});
  child.onPress([&child] {
    const std::optional<Value> value = child.read("AXValue");
    const auto* number = value ? value->as<double>() : nullptr;
    child.with("AXValue", Value{number != nullptr && *number == 0 ? 1.0 : 0.0});
    child.announce("AXValueChanged");
  });
  return child;
}

Node& Node::menuItem(const std::string& title) {
  Node& child = add("AXMenuItem", title).withoutFrame();
  child.action("AXPress");
  return child;
}

Node& Node::submenu(const std::string& title) { return menuItem(title).add("AXMenu"); }

}  // namespace tarqo::sim
