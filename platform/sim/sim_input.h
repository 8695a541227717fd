// Simulated input: events are written down, and act on the scene as a device's own would.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/input_events.h"
#include "platform/sim/sim_accessibility.h"
#include "platform/sim/sim_world.h"

namespace tarqo::sim {

/// The pointer: where it is, and what its buttons do to what lies under it.
class Pointer {
 public:
  Pointer(World& world, AccessibilityService& accessibility)
      : world_(world), accessibility_(accessibility) {}

  std::optional<Point> location{Point{0, 0}};  ///< None: it cannot be read.

  void handle(const MouseEvent& event);

 private:
  void pressed(Node& node);
  void clicked(Node& node, int clickState);
  void rightClicked(Node& node);

  World& world_;
  AccessibilityService& accessibility_;
  Node* leftDown_ = nullptr;
  Node* rightDown_ = nullptr;
};

/// The keyboard: its events go to the application in front, or to the one that has grabbed it.
class Keyboard {
 public:
  explicit Keyboard(World& world) : world_(world) {}

  void handle(const KeyEvent& event);
  void handle(const TextEvent& event);

 private:
  /// Whoever gets the keys; null when nobody does, or hangs because of this one.
  [[nodiscard]] App* receiver() const;

  World& world_;
};

class InputEventsService final : public InputEvents {
 public:
  InputEventsService(World& world, AccessibilityService& accessibility)
      : pointer(world, accessibility),
        keyboard_(world),
        world_(world),
        accessibility_(accessibility) {}

  Pointer pointer;
  /// The text that each source was made for, in order.
  std::vector<std::string> sourceTexts;

  /// Called with each event when it is about to be posted, before it is judged whom it would reach:
  /// what happens on the desktop between the helper's last look and its event.
  std::function<void(const InputEvent&)> beforePost;

  /// The process that gets all keystrokes, or all the pointer's events; null while nobody has
  /// grabbed them.
  void grabKeyboard(std::optional<Pid> owner) { world_.keyboardGrab = owner; }
  void grabPointer(std::optional<Pid> owner) { world_.pointerGrab = owner; }

  /// A system whose content does not move by being dragged.
  bool scrollsByWheelAlone = false;

  // Faults: what cannot be created.
  bool refusesSources = false;
  bool refusesMouse = false;
  bool refusesButtonsUp = false;  ///< Of the mouse's events those that let go of a button.
  bool refusesKeys = false;
  bool refusesKeysUp = false;  ///< Of the key events those that let go of a key.
  bool refusesText = false;
  bool refusesScroll = false;

  [[nodiscard]] std::unique_ptr<EventSource> makeSource(const std::string& text) override;
  [[nodiscard]] std::unique_ptr<CreatedEvent> create(EventSource* source,
                                                     const InputEvent& event) override;
  void post(const CreatedEvent& event) override;
  [[nodiscard]] bool postTo(Pid receiver, const CreatedEvent& event) override;
  [[nodiscard]] bool scrollsByDragging() override { return !scrollsByWheelAlone; }
  [[nodiscard]] std::optional<Point> pointerLocation() override { return pointer.location; }

 private:
  [[nodiscard]] bool refuses(const InputEvent& event) const;
  [[nodiscard]] std::optional<Pid> receiverOf(const InputEvent& event) const;
  void deliver(const InputEvent& event);

  Keyboard keyboard_;
  World& world_;
  AccessibilityService& accessibility_;
};

/// How the event log writes an event: "move 412,300", "down(1) 412,300", "drag 10,20",
/// "rightDown(1) 5,5", "key 36 down flags=0x0", "text 한 down", "scroll -120".
[[nodiscard]] std::string eventText(const InputEvent& event);

}  // namespace tarqo::sim
