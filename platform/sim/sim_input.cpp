#include "platform/sim/sim_input.h"

#include <cstdio>
#include <utility>

namespace tarqo::sim {
namespace {

class SimulatedSource final : public EventSource {};

class SimulatedEvent final : public CreatedEvent {
 public:
  explicit SimulatedEvent(InputEvent event) : event_(std::move(event)) {}
  [[nodiscard]] const InputEvent& event() const { return event_; }

 private:
  InputEvent event_;
};

template <typename... Handlers>
struct Overloaded : Handlers... {
  using Handlers::operator()...;
};
template <typename... Handlers>
Overloaded(Handlers...) -> Overloaded<Handlers...>;

const char* nameOf(MouseEventType type) {
  switch (type) {
    case MouseEventType::moved:
      return "move";
    case MouseEventType::leftDown:
      return "down";
    case MouseEventType::leftUp:
      return "up";
    case MouseEventType::leftDragged:
      return "drag";
    case MouseEventType::rightDown:
      return "rightDown";
    case MouseEventType::rightUp:
      return "rightUp";
  }
  return "";
}

bool letsGo(MouseEventType type) {
  return type == MouseEventType::leftUp || type == MouseEventType::rightUp;
}

// The nearest element, from the one under the pointer upward, that does something when clicked.
template <typename Predicate>
Node& nearest(Node& node, const Predicate& responds) {
  for (Node* each = &node; each != nullptr; each = each->parent()) {
    if (responds(*each)) {
      return *each;
    }
  }
  return node;
}

}  // namespace

std::string eventText(const InputEvent& event) {
  return std::visit(
      Overloaded{
          [](const MouseEvent& mouse) {
            std::string text = nameOf(mouse.type);
            if (mouse.clickState != 0) {
              text += "(" + std::to_string(mouse.clickState) + ")";
            }
            return text + " " + numberText(mouse.at.x) + "," + numberText(mouse.at.y);
          },
          [](const KeyEvent& key) {
            char flags[32];
            std::snprintf(flags, sizeof flags, "0x%llx",
                          static_cast<unsigned long long>(key.modifiers));
            return "key " + std::to_string(key.keyCode) + (key.down ? " down" : " up") +
                   " flags=" + flags;
          },
          [](const TextEvent& text) { return "text " + text.text + (text.down ? " down" : " up"); },
          [](const ScrollEvent& scroll) {
            return scroll.sideways == 0 ? "scroll " + std::to_string(scroll.pixels)
                                        : "scroll sideways " + std::to_string(scroll.sideways);
          },
      },
      event);
}

void Pointer::handle(const MouseEvent& event) {
  location = event.at;
  Node* under = accessibility_.hit(event.at);
  if (world_.pointerGrab && under != nullptr && under->app().pid() != *world_.pointerGrab) {
    under = nullptr;
  }
  switch (event.type) {
    case MouseEventType::moved:
    case MouseEventType::leftDragged:
      break;
    case MouseEventType::leftDown:
      leftDown_ = under;
      if (under != nullptr) {
        pressed(*under);
      }
      break;
    case MouseEventType::leftUp:
      if (under != nullptr && under == std::exchange(leftDown_, nullptr)) {
        clicked(*under, event.clickState);
      }
      break;
    case MouseEventType::rightDown:
      rightDown_ = under;
      break;
    case MouseEventType::rightUp:
      if (under != nullptr && under == std::exchange(rightDown_, nullptr)) {
        rightClicked(*under);
      }
      break;
  }
}

// As on a real desktop, a button going down brings the window forward and moves the focus.
void Pointer::pressed(Node& node) {
  App& app = node.app();
  if (world_.frontmost != &app) {
    app.requestFront();
  }
  for (Node* each = &node; each != nullptr; each = each->parent()) {
    if (each->attributes_.contains("AXFocused")) {
      each->focus();
      break;
    }
  }
}

void Pointer::clicked(Node& node, int clickState) {
  Node& target = nearest(node, [](const Node& each) {
    return each.onClick_ != nullptr || each.findAction("AXPress") != nullptr;
  });
  ++target.clicks_;
  if (target.onClick_ && !target.app().facts.hung) {
    // A copy: the effect may remove the node or script it anew.
    const std::function<void(int)> effect = target.onClick_;
    effect(clickState);
  }
}

void Pointer::rightClicked(Node& node) {
  Node& target = nearest(node, [](const Node& each) { return each.onRightClick_ != nullptr; });
  ++target.rightClicks_;
  if (target.onRightClick_ && !target.app().facts.hung) {
    const std::function<void()> effect = target.onRightClick_;
    effect();
  }
}

App* Keyboard::receiver() const {
  const std::optional<Pid> pid = world_.keyReceiver();
  App* app = pid ? world_.appOf(*pid) : nullptr;
  if (app != nullptr && app->isEndangeredByKeys()) {
    app->facts.hung = true;
    return nullptr;
  }
  return app;
}

void Keyboard::handle(const KeyEvent& event) {
  if (App* app = receiver(); app != nullptr && app->onKey_) {
    app->onKey_(event);
  }
}

void Keyboard::handle(const TextEvent& event) {
  const App* app = receiver();
  Node* focused = app == nullptr ? nullptr : app->focusedNode();
  if (event.down && focused != nullptr) {
    focused->value(focused->readText("AXValue") + event.text);
    focused->announce("AXValueChanged");
  }
}

bool InputEventsService::refuses(const InputEvent& event) const {
  return std::visit(
      Overloaded{
          [this](const MouseEvent& mouse) {
            return refusesMouse || (refusesButtonsUp && letsGo(mouse.type));
          },
          [this](const KeyEvent& key) { return refusesKeys || (refusesKeysUp && !key.down); },
          [this](const TextEvent&) { return refusesText; },
          [this](const ScrollEvent&) { return refusesScroll; },
      },
      event);
}

std::unique_ptr<EventSource> InputEventsService::makeSource(const std::string& text) {
  sourceTexts.push_back(text);
  return refusesSources ? nullptr : std::make_unique<SimulatedSource>();
}

std::unique_ptr<CreatedEvent> InputEventsService::create(EventSource* /*source*/,
                                                         const InputEvent& event) {
  return refuses(event) ? nullptr : std::make_unique<SimulatedEvent>(event);
}

void InputEventsService::post(const CreatedEvent& event) {
  if (const auto* created = dynamic_cast<const SimulatedEvent*>(&event)) {
    if (beforePost) {
      beforePost(created->event());
    }
    deliver(created->event());
  }
}

bool InputEventsService::postTo(Pid receiver, const CreatedEvent& event) {
  const auto* created = dynamic_cast<const SimulatedEvent*>(&event);
  if (created == nullptr) {
    return false;
  }
  if (beforePost) {
    beforePost(created->event());
  }
  if (receiverOf(created->event()) != receiver) {
    return false;
  }
  deliver(created->event());
  return true;
}

std::optional<Pid> InputEventsService::receiverOf(const InputEvent& event) const {
  const auto* mouse = std::get_if<MouseEvent>(&event);
  if (mouse == nullptr && !std::holds_alternative<ScrollEvent>(event)) {
    return world_.keyReceiver();
  }
  if (world_.pointerGrab) {
    return world_.pointerGrab;
  }
  const std::optional<Point> at = mouse != nullptr ? mouse->at : pointer.location;
  if (!at) {
    return std::nullopt;
  }
  for (const ServerWindow* window : world_.windows.shown()) {
    const WindowInfo& info = window->info;
    if (info.layer == 0 && !window->desktopElement && info.bounds && info.bounds->contains(*at)) {
      return info.ownerPid;
    }
  }
  const Node* node = accessibility_.scriptedHit(*at);
  return node == nullptr ? std::nullopt : std::optional(node->app().pid());
}

void InputEventsService::deliver(const InputEvent& event) {
  world_.eventLog.note(Topic::input, eventText(event));
  std::visit(Overloaded{
                 [this](const MouseEvent& mouse) { pointer.handle(mouse); },
                 [this](const KeyEvent& key) { keyboard_.handle(key); },
                 [this](const TextEvent& text) { keyboard_.handle(text); },
                 [](const ScrollEvent&) {},
             },
             event);
}

}  // namespace tarqo::sim
