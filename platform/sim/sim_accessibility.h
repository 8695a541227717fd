// The simulated accessibility service: reads and drives the elements that a scene has built.
//
// Every call to an application counts as one round trip and costs what the application's facts say.
// Notifications are delivered while virtual time passes, whoever waits, since on a real desktop
// another thread hears them.
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/sim/sim_world.h"

namespace tarqo::sim {

class AccessibilityService final : public Accessibility {
 public:
  explicit AccessibilityService(World& world) : world_(world) {}

  // The scene.
  /// Makes `readTree` read the whole tree at once and answer from that until its end. Off, it reads
  /// nothing ahead.
  bool readsAhead = false;
  /// Of each tree read ahead, that many elements are read, in the order of the walk; then the
  /// target falls silent until the end of the read. Null: all are read.
  std::optional<std::size_t> silentAfter;
  bool hitTestFails = false;
  void hitTest(Point point, Node* result);  ///< At exactly that point; null: the test fails there.
  /// What lies there by the scene alone; null when no application element does.
  [[nodiscard]] Node* hit(Point point) const;
  /// What lies there, with what `hitTest` says of that point.
  [[nodiscard]] Node* scriptedHit(Point point) const;

  [[nodiscard]] Element application(Pid pid, Duration messagingTimeout) override;
  [[nodiscard]] std::optional<Value> attribute(const Element& element,
                                               std::string_view name) override;
  [[nodiscard]] std::vector<std::optional<Value>> attributes(
      const Element& element, std::span<const std::string_view> names) override;
  [[nodiscard]] std::vector<std::string> actionNames(const Element& element) override;
  [[nodiscard]] Performed perform(const Element& element, std::string_view action) override;
  [[nodiscard]] bool isEndangeredByKeys(Pid pid) override;
  [[nodiscard]] bool takesTextByKeys(const Element& element) override;
  [[nodiscard]] std::optional<Size> wheelStep(const Element& element) override;
  [[nodiscard]] std::optional<Element> otherKeyWindow(const Element& window) override;
  [[nodiscard]] bool set(const Element& element, std::string_view name,
                         const Value& value) override;
  [[nodiscard]] bool isSettable(const Element& element, std::string_view name) override;
  [[nodiscard]] std::optional<Element> elementAt(Point point) override;
  [[nodiscard]] std::optional<Pid> pidOf(const Element& element) override;
  [[nodiscard]] std::unique_ptr<Observer> observe(Pid pid, NotificationCallback callback) override;
  [[nodiscard]] std::unique_ptr<TreeRead> readTree(const Element& root,
                                                   const TreeReadLimits& limits) override;

 private:
  friend class ReadAhead;

  /// What was read ahead of one node.
  struct Copy {
    std::map<std::string, Value, std::less<>> attributes;
    std::vector<std::string> actions;
  };
  using Copies = std::map<std::shared_ptr<const Identity>, Copy>;

  /// The node that answers a call on `element`, after the call has cost its time; null when it
  /// fails.
  [[nodiscard]] Node* answering(const Element& element, Duration extra = {});
  [[nodiscard]] const Copy* copyOf(const Element& element) const;
  /// False when the element or the action is gone.
  bool carryOut(const Element& element, const std::string& name);
  bool copyTree(const Node& node, Copies& copies) const;

  World& world_;
  std::vector<std::pair<Point, Node*>> hitTests_;
  Copies copies_;        ///< Empty unless a tree read is open.
  bool silent_ = false;  ///< Nothing but the copies answers.
};

}  // namespace tarqo::sim
