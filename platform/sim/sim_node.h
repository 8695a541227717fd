// One element of a simulated application's accessibility tree, as a scene builds and changes it.
//
// Attributes are what the scene gives; AXChildren, AXParent and AXFocused follow from the scene
// unless it gives them too. A removed node stays valid for the scene, but every read of it fails.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "platform/accessibility.h"
#include "platform/sim/sim_action.h"

namespace tarqo::sim {

class App;
class Node;

/// What makes an element the same one; ends when the node is removed or re-created.
struct Identity {
  Node* node = nullptr;
};

class Node {
 public:
  Node(App& app, std::string role);
  Node(const Node&) = delete;
  Node& operator=(const Node&) = delete;
  virtual ~Node();

  // Building. A new child has a title when one is given, is enabled, and lies in a row of its own
  // below its elder siblings inside this node's frame (no frame when this node has none).
  Node& add(const std::string& role, const std::string& title = "");
  Node& button(const std::string& title);          ///< Offers AXPress.
  Node& link(const std::string& title);            ///< Offers AXPress.
  Node& label(const std::string& text);            ///< AXStaticText; the text is its AXValue.
  Node& textField(const std::string& value = "");  ///< AXValue and AXFocused can be set.
  Node& secureField();
  Node& checkBox(const std::string& title, bool checked);
  Node& group(const std::string& title = "") { return add("AXGroup", title); }
  Node& menuItem(const std::string& title);  ///< Of a menu; offers AXPress and has no frame.
  Node& submenu(const std::string& title);   ///< Yields the AXMenu below a new menu item.

  // Facts; coordinates are screen points.
  Node& at(const Rect& frame);
  Node& withoutFrame();
  Node& with(const std::string& name, Value value);  ///< Any attribute, of any type.
  Node& without(const std::string& name);            ///< Unsupported from now on.
  Node& value(const std::string& text) { return with("AXValue", Value{text}); }
  Node& identifier(const std::string& text) { return with("AXIdentifier", Value{text}); }
  Node& title(const std::string& text) { return with("AXTitle", Value{text}); }
  Node& enabled(bool enabled) { return with("AXEnabled", Value{enabled}); }
  Node& hidden(bool hidden) { return with("AXHidden", Value{hidden}); }
  Node& settable(const std::string& name, bool settable = true);
  Node& takingTextByKeys();  ///< A terminal: its value cannot be set, and keys go into it.
  /// What setting the attribute does, instead of keeping the value.
  Node& onSet(const std::string& name, std::function<void(const Value&)> effect);

  // Change.
  void moveBy(double dx, double dy);  ///< With everything beneath it.
  void remove();                      ///< With everything beneath it.
  void recreate();                    ///< As if it had been replaced by an equal element.
  void focus();                       ///< Gives it its application's keyboard focus.
  /// Announces a notification of this element after `delay`.
  void announce(const std::string& notification, Duration delay = kLatency);

  // Actions and the pointer.
  Action& action(const std::string& name);  ///< Offers the action; see sim_action.h.
  Node& withoutAction(const std::string& name);
  /// What the control does, whether pressed through accessibility or clicked.
  Node& onPress(std::function<void()> effect);
  Node& onClick(std::function<void(int clickState)> effect);  ///< When clicked with the pointer.
  Node& onRightClick(std::function<void()> effect);

  // Faults.
  Node& failing(const std::string& name, bool failing = true);  ///< Reading it is an error.
  Node& refusingSet(const std::string& name);      ///< Settable by its word, but never taken.
  Node& settableUnknown(const std::string& name);  ///< Asking whether it can be set is an error.
  Node& failingBatch();                            ///< `attributes` fails as a whole.
  Node& failingActionNames();
  Node& withoutPid();

  // What happened to it.
  [[nodiscard]] int presses() const { return presses_; }  ///< AXPress taken.
  [[nodiscard]] int clicks() const { return clicks_; }    ///< Left clicks that landed on it.
  [[nodiscard]] int activations() const { return presses_ + clicks_; }
  [[nodiscard]] int rightClicks() const { return rightClicks_; }

  // Reading, for the scene and the services; free of cost and of the faults of its application.
  [[nodiscard]] std::optional<Value> read(const std::string& name) const;
  [[nodiscard]] std::string readText(const std::string& name) const;
  [[nodiscard]] std::optional<Rect> frame() const;
  [[nodiscard]] const std::vector<Node*>& children() const { return children_; }
  [[nodiscard]] Node* parent() const { return parent_; }
  [[nodiscard]] App& app() const { return app_; }
  [[nodiscard]] bool removed() const { return removed_; }
  [[nodiscard]] bool takesTextByKeys() const { return takesTextByKeys_; }
  [[nodiscard]] Element element() const;
  [[nodiscard]] const std::shared_ptr<Identity>& identity() const { return identity_; }
  /// `AXButton "Save"`: how the event log names it.
  [[nodiscard]] std::string name() const;

 protected:
  /// An attribute that follows from the scene.
  [[nodiscard]] virtual std::optional<Value> derived(const std::string& name) const;
  /// The names that `derived` knows.
  [[nodiscard]] virtual std::vector<std::string> derivedNames() const;

 private:
  friend class AccessibilityService;
  friend class Pointer;
  friend class App;

  struct Attribute {
    std::optional<Value> value;
    bool failing = false;
    bool settable = false;
    bool refusesSet = false;
    bool settableUnknown = false;
    std::function<void(const Value&)> onSet;
  };

  [[nodiscard]] std::vector<std::string> attributeNames() const;
  [[nodiscard]] std::vector<std::string> offeredActions() const;
  [[nodiscard]] Action* findAction(const std::string& name) const;
  bool take(const std::string& name, const Value& value);

  App& app_;
  std::shared_ptr<Identity> identity_;
  Node* parent_ = nullptr;
  std::vector<Node*> children_;
  std::map<std::string, Attribute, std::less<>> attributes_;
  std::set<std::string, std::less<>> unsupported_;
  std::vector<std::unique_ptr<Action>> actions_;
  std::function<void(int)> onClick_;
  std::function<void()> onRightClick_;
  bool takesTextByKeys_ = false;
  bool removed_ = false;
  bool failingBatch_ = false;
  bool failingActionNames_ = false;
  bool withoutPid_ = false;
  int presses_ = 0;
  int clicks_ = 0;
  int rightClicks_ = 0;
};

}  // namespace tarqo::sim
