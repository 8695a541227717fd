// Applications to read and drive, as the Accessibility API shows them.
//
// A test says what each element answers and reads what was asked of it, with the messaging time-out
// of the reference that was used. One thread, but for `Applications::notify`, which plays the main
// loop.
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tests/platform/mac/standin/core_foundation.h"

namespace standin {

/// What an element answers to one question.
struct Answer {
  AXError error = kAXErrorSuccess;
  Owned value;  ///< Handed out even beside an error, as nothing forbids.
};

struct Node {
  std::map<std::string, Answer> attributes;  ///< Others are unsupported.
  /// The whole answer to a question for many; else it is made from `attributes`.
  std::optional<Answer> batch;
  Answer actionNames;
  std::map<std::string, AXError> actions;  ///< What performing gives; others are unsupported.
  std::map<std::string, Answer> settable;  ///< The value is a boolean.
  std::map<std::string, AXError> takes;    ///< What setting gives; others are unsupported.
  std::map<std::string, Owned> taken;      ///< What was set.
  AXError pidError = kAXErrorSuccess;
  std::map<std::string, AXError> subscriptionErrors;
};

/// A call that may ask an application.
struct Call {
  std::string what;   ///< "read AXTitle", "perform AXPress", "hit"
  int node = 0;       ///< 0 for the system-wide element.
  float seconds = 0;  ///< How long it may wait; 0 for as long as the system lets it.
};

class Applications {
 public:
  static Applications& instance();
  void reset();

  /// The node with that number in an application; 1 is the application itself.
  [[nodiscard]] Node& node(pid_t pid, int number);
  /// A new reference to a node.
  [[nodiscard]] Owned element(pid_t pid, int number);

  std::vector<Call> calls;
  std::vector<std::string> asked() const;  ///< `what` of every call.

  AXError hitError = kAXErrorSuccess;
  Owned hit;
  std::pair<float, float> hitPoint;

  // Observers.
  AXError observerError = kAXErrorSuccess;
  bool observerIsNull = false;
  /// Runs after the loop has picked a notification up and before it calls back.
  std::function<void()> beforeDelivery;
  /// Plays the main loop: calls back every observer of the process that subscribed to this and
  /// whose source is on the loop. The number of callbacks.
  int notify(pid_t pid, int number, const std::string& notification);
  [[nodiscard]] std::size_t sourcesOnTheLoop() const;

 private:
  std::map<std::pair<pid_t, int>, Node> nodes_;
};

}  // namespace standin
