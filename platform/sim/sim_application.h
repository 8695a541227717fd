// A running application of the simulated desktop, and its windows.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/input_events.h"
#include "platform/sim/sim_node.h"
#include "platform/sim/sim_windows.h"
#include "platform/workspace.h"

namespace tarqo::sim {

struct World;

/// A window: its accessibility element, and behind it the window server's window.
class Window final : public Node {
 public:
  Window(App& app, const Rect& frame);

  /// With its content and its window-server window, which keeps whatever difference it has.
  void moveTo(Point origin);
  void resize(Size size);
  void minimize(bool minimized = true);  ///< Minimised windows are not on the screen.
  void close();
  void toFront();  ///< In front of every window, without activating its application.
  Window& shows(const std::string& address);  ///< Its AXDocument.
  [[nodiscard]] ServerWindow& server() { return *server_; }
  [[nodiscard]] bool minimized() const { return minimized_; }

 protected:
  [[nodiscard]] std::optional<Value> derived(const std::string& name) const override;
  [[nodiscard]] std::vector<std::string> derivedNames() const override;

 private:
  ServerWindow* server_;
  bool minimized_ = false;
};

/// What a scene may change at any time, in plain sight.
struct AppFacts {
  std::optional<std::string> bundleId;
  std::optional<std::string> bundlePath;
  std::optional<std::string> localizedName;
  ActivationPolicy policy = ActivationPolicy::regular;
  bool hidden = false;
  bool unhides = true;
  /// How long it takes to come to the front when asked; null when it never does.
  std::optional<Duration> comesToFront = Duration::zero();

  Duration eachCallTakes{};  ///< Every accessibility call costs that much.
  bool hung = false;         ///< Every accessibility call costs the messaging time-out, in vain.
  bool refusesObservers = false;
  bool refusesHitTest = false;
  std::set<std::string> unsupportedNotifications;
  /// Every subscription costs the messaging time-out, in vain.
  bool ignoresSubscriptions = false;
  /// Acknowledges every action performed on it, like a toolkit that announces no button press.
  bool acknowledgesActions = false;
  /// Hangs for good when a key comes while it is inside an action that `perform` did not await.
  bool hangsAtKeysInActions = false;
  /// The system tells which of its windows keystrokes go to: the focused one.
  bool tellsKeyWindow = false;
};

class App {
 public:
  AppFacts facts;

  App(World& world, Pid pid, std::uint64_t instance);
  App(const App&) = delete;
  App& operator=(const App&) = delete;
  ~App();

  /// What the last who asked waits for at most.
  [[nodiscard]] Duration messagingTimeout() const { return messagingTimeout_; }

  /// A new window, behind those of the application in front, else in front of all.
  Window& window(const Rect& frame, const std::string& title = "");
  /// The menu below a new title in the menu bar, for menu items and submenus.
  Node& menu(const std::string& title);
  [[nodiscard]] Node& menuBar();
  [[nodiscard]] Node* menuBarOrNull() const { return menuBar_; }
  /// The application element.
  [[nodiscard]] Node& node() { return *node_; }

  void focusWindow(Window* window);  ///< Null: no window has the focus.
  void focusNode(Node* node);        ///< Null: no element has the focus.
  void bringToFront();               ///< At once, with its windows, whatever its behaviour.
  void requestFront();               ///< As it behaves.
  /// Ends the process; `stillListed` leaves it in the workspace's list for a while, as systems do.
  void kill(bool stillListed = false);
  void announce(const std::string& notification, Duration delay = kLatency);

  /// Runs `deed` when `calls` more accessibility calls have arrived, before the last is answered.
  void afterCalls(int calls, std::function<void()> deed);
  [[nodiscard]] int calls() const { return calls_; }  ///< Round trips so far.
  /// Keystrokes that reach it; typed text goes to the focused element's AXValue by itself.
  void onKey(std::function<void(const KeyEvent&)> effect) { onKey_ = std::move(effect); }

  [[nodiscard]] Pid pid() const { return pid_; }
  [[nodiscard]] ApplicationId id() const { return {pid_, instance_}; }
  [[nodiscard]] RunningApplication running() const;
  [[nodiscard]] bool terminated() const { return terminated_; }
  [[nodiscard]] bool listed() const { return !terminated_ || stillListed_; }
  [[nodiscard]] const std::vector<Window*>& windows() const { return windows_; }
  [[nodiscard]] Window* focusedWindow() const { return focusedWindow_; }
  [[nodiscard]] Node* focusedNode() const { return focusedNode_; }
  [[nodiscard]] World& world() const { return world_; }
  /// Whether it is inside an action whose end `perform` did not await, and a key would hang it.
  [[nodiscard]] bool isEndangeredByKeys() const {
    return facts.hangsAtKeysInActions && unfinishedActions_ > 0;
  }

 private:
  friend class Node;
  friend class Window;
  friend class AccessibilityService;
  friend class Keyboard;

  Node& adopt(std::unique_ptr<Node> node);

  World& world_;
  const Pid pid_;
  const std::uint64_t instance_;
  std::vector<std::unique_ptr<Node>> nodes_;  ///< All there ever were, so that references hold.
  Node* node_ = nullptr;
  Node* menuBar_ = nullptr;
  std::vector<Window*> windows_;
  Window* focusedWindow_ = nullptr;
  Node* focusedNode_ = nullptr;
  bool terminated_ = false;
  bool stillListed_ = false;
  Duration messagingTimeout_ = std::chrono::seconds(1);
  int calls_ = 0;
  int unfinishedActions_ = 0;
  std::multimap<int, std::function<void()>> afterCalls_;
  std::function<void(const KeyEvent&)> onKey_;
};

}  // namespace tarqo::sim
