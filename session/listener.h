// What the target says that it has done: its notifications, and its answers to actions.
#pragma once

#include <array>
#include <memory>
#include <string_view>

#include "platform/platform.h"
#include "session/journal.h"

namespace tarqo {

/// The notifications the helper subscribes to.
inline constexpr std::array<std::string_view, 17> WATCHED{"AXMenuOpened",
                                                          "AXMenuClosed",
                                                          "AXMenuItemSelected",
                                                          "AXFocusedUIElementChanged",
                                                          "AXValueChanged",
                                                          "AXTitleChanged",
                                                          "AXLayoutChanged",
                                                          "AXRowCountChanged",
                                                          "AXSelectedRowsChanged",
                                                          "AXSelectedChildrenChanged",
                                                          "AXCreated",
                                                          "AXUIElementDestroyed",
                                                          "AXWindowCreated",
                                                          "AXWindowResized",
                                                          "AXWindowMoved",
                                                          "AXApplicationActivated",
                                                          "AXSelectedTextChanged"};

/// Stands in the journal for an action that the target acknowledged: toolkits that announce nothing
/// when a button is pressed still report that they did it.
inline constexpr std::string_view kActionAcknowledged = "AXActionAcknowledged";

/// Worker thread only; notifications arrive on the main loop's thread.
class Listener {
 public:
  explicit Listener(const Platform& platform) : platform_(platform) {}

  /// Subscribes to a process and to the `WATCHED` notifications of its application, instead of any
  /// other. A process that cannot be observed leaves nobody listening.
  void listen(Pid pid, const Element& app);
  void stop() {
    observer_.reset();
    isHeard_ = false;
  }
  /// Whether anything can be heard: a starting application may refuse every subscription.
  [[nodiscard]] bool isListening() const { return observer_ != nullptr && isHeard_; }

  /// Subscribes to the `WATCHED` notifications of an element: of the application once more, since
  /// those that it refused while it started it may take by now, and of its window. False once it
  /// keeps one subscription waiting as long as a call may take: it would keep the others waiting as
  /// well. Nothing when the process is not observed.
  bool watch(const Element& element);

  /// Whether the process is observed, so that there is something to subscribe with.
  [[nodiscard]] bool isObserving() const { return observer_ != nullptr; }

  /// What was heard after `since`.
  [[nodiscard]] Journal::Heard heardSince(Instant since) const { return journal_.lastHeard(since); }

  /// Performs an action, and notes an acknowledgement of it.
  Performed perform(const Element& element, std::string_view action);

 private:
  const Platform& platform_;
  Journal journal_;
  /// Declared after the journal it writes to, so that it falls silent first.
  std::unique_ptr<Observer> observer_;
  bool isHeard_ = false;  ///< Whether any subscription was taken.
};

}  // namespace tarqo
