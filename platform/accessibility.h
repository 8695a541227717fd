// The accessibility service: reads and drives the elements of another application's interface.
//
// The vocabulary is that of the protocol: roles ("AXButton"), attributes ("AXTitle"), actions
// ("AXPress") and notifications ("AXValueChanged"). A backend whose system speaks differently
// translates at its border.
//
// Worker thread only, but for the callback of an `Observer`. Every call that asks the target blocks
// for at most the messaging time-out of its application element and then gives the empty result: an
// error, a missing attribute, a dead or hung target all look like absence.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "platform/clock.h"
#include "platform/geometry.h"
#include "platform/process_id.h"

namespace tarqo {

/// What a backend knows of one accessibility object.
class ElementObject {
 public:
  virtual ~ElementObject() = default;

  /// True when both stand for the same object of the same application, however each was obtained.
  /// Costs no round trip.
  [[nodiscard]] virtual bool same(const ElementObject& other) const = 0;
};

/// One accessibility object of an application, held by shared reference. Holding one does not keep
/// the object alive in its application. Never null.
class Element {
 public:
  explicit Element(std::shared_ptr<const ElementObject> object) : object_(std::move(object)) {}

  [[nodiscard]] const ElementObject& object() const { return *object_; }

  bool operator==(const Element& other) const {
    return object_ == other.object_ || object_->same(*other.object_);
  }

 private:
  std::shared_ptr<const ElementObject> object_;
};

/// An absolute web or file address, as the application gave it.
struct Url {
  std::string absolute;

  bool operator==(const Url&) const = default;
};

/// A value of a type that the protocol makes no use of; it exists, that is all.
struct OtherValue {
  bool operator==(const OtherValue&) const = default;
};

struct Value;
using Values = std::vector<Value>;

/// The value of an attribute. Texts are UTF-8; points and sizes are in screen points.
struct Value {
  std::variant<std::string, bool, double, Point, Size, Url, Element, Values, OtherValue> is;

  template <typename T>
  [[nodiscard]] const T* as() const {
    return std::get_if<T>(&is);
  }
};

/// What became of an action.
enum class Performed {
  refused,       ///< Not offered, not taken, not sent: it has not happened and will not.
  taken,         ///< Taken without an error. Whether it had an effect, the system does not say.
  acknowledged,  ///< The application says that it did it. Nothing else need show that.
  pending        ///< Sent, and not answered in time: it is happening, or will yet.
};

/// Listens to one process. Destroying it ends the delivery: no callback runs or starts afterwards.
class Observer {
 public:
  virtual ~Observer() = default;

  /// Also reports `notification` of `element`; of an application element, that of every element of
  /// the application. False when the element or the name is not supported, harmless when repeated.
  virtual bool add(const Element& element, std::string_view notification) = 0;
};

/// Called with the notification's name on the main loop's thread, never on the worker.
using NotificationCallback = std::function<void(std::string_view notification)>;

/// How far a backend may read ahead.
struct TreeReadLimits {
  Instant deadline;
  std::size_t elements = 0;  ///< About as many as the caller will visit.
};

/// While it lives, the backend may answer reads from what it read ahead. Dropped with the scope.
class TreeRead {
 public:
  virtual ~TreeRead() = default;

  /// True once reading ahead has ended before all was read: the target failed to answer in time, or
  /// the deadline is near. What was read by then is still reported, and nothing else is requested:
  /// what looks empty from then on need not be.
  [[nodiscard]] virtual bool incomplete() const = 0;

  /// Ends the reading ahead for good: what was not read is asked live again, as without a scope.
  virtual void readLive() = 0;
};

class Accessibility {
 public:
  virtual ~Accessibility() = default;

  /// The application element of a process; calls through it and through elements reached from it
  /// wait for at most `messagingTimeout` each. Does not check that the process exists.
  [[nodiscard]] virtual Element application(Pid pid, Duration messagingTimeout) = 0;

  /// One attribute; null when it is unsupported, has no value, or could not be read.
  [[nodiscard]] virtual std::optional<Value> attribute(const Element& element,
                                                       std::string_view name) = 0;

  /// Many attributes in one round trip: one slot for each name, in order, null where that attribute
  /// failed. An empty list when the call as a whole failed.
  [[nodiscard]] virtual std::vector<std::optional<Value>> attributes(
      const Element& element, std::span<const std::string_view> names) = 0;

  /// The names of the actions the element offers, in its own order.
  [[nodiscard]] virtual std::vector<std::string> actionNames(const Element& element) = 0;

  /// Performs an action. Waits for the application's answer, for two messaging time-outs at most.
  /// An answer of the application to anything else is no answer to the action. What is `taken`,
  /// `acknowledged` or `pending` must not be done once more by other means.
  [[nodiscard]] virtual Performed perform(const Element& element, std::string_view action) = 0;

  /// Whether a key would harm the process now, because it is still inside an action that was
  /// `pending`: some toolkits stop for good when a key comes while the handler of an action waits
  /// in a loop of its own. Always false where keys are harmless. Costs no round trip to the target.
  [[nodiscard]] virtual bool isEndangeredByKeys(Pid pid) = 0;

  /// The window of the same application that keystrokes go to in place of `window`: a dialog that
  /// came up, say. Null when they go to `window` itself, to a popup or to another application, and
  /// where the system does not tell.
  [[nodiscard]] virtual std::optional<Element> otherKeyWindow(const Element& window) = 0;

  /// Sets an attribute; true when the application accepted the value. Where a backend has to type
  /// it, or to wait for a focus to be reported, this takes longer than a messaging time-out: as
  /// long as the keys need, and 1.5 s more.
  [[nodiscard]] virtual bool set(const Element& element, std::string_view name,
                                 const Value& value) = 0;

  /// Whether an attribute can be set; false when that could not be learnt.
  [[nodiscard]] virtual bool isSettable(const Element& element, std::string_view name) = 0;

  /// Whether an element without a settable value takes text from keys while it has the focus: a
  /// terminal, the text of some editors. False where the value of all such elements can be set.
  [[nodiscard]] virtual bool takesTextByKeys(const Element& element) = 0;

  /// How many points one click of a wheel moves what the element lies in, sideways and up or down,
  /// as its toolkit does it; empty when not known, and where a wheel has no clicks.
  [[nodiscard]] virtual std::optional<Size> wheelStep(const Element& element) = 0;

  /// The deepest element of any application at a point of the screen, as the pointer would meet it.
  [[nodiscard]] virtual std::optional<Element> elementAt(Point point) = 0;

  /// The process an element belongs to. Costs no round trip.
  [[nodiscard]] virtual std::optional<Pid> pidOf(const Element& element) = 0;

  /// Starts listening to a process; null when the system refuses.
  [[nodiscard]] virtual std::unique_ptr<Observer> observe(Pid pid,
                                                          NotificationCallback callback) = 0;

  /// Opens a scope for reading the tree under `root` (a window, a menu bar). The backend may read
  /// ahead, within the limits, but need not read what lies beneath hidden elements. It ends early
  /// enough for the caller to visit what was read before the deadline. `root` itself is read
  /// whatever the deadline, unless the target fails to answer. Null is allowed and means that
  /// nothing is read ahead. One scope at a time.
  [[nodiscard]] virtual std::unique_ptr<TreeRead> readTree(const Element& root,
                                                           const TreeReadLimits& limits) = 0;
};

}  // namespace tarqo
