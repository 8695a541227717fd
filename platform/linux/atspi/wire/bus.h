// A connection to the accessibility bus, and batches of calls that travel on it at once.
//
// Thread-confined: everything of one connection happens on the thread that made it. A bus that is
// not there or goes away is no error: calls fail, and the next use tries to connect again.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <list>
#include <optional>
#include <string>

#include "platform/clock.h"
#include "platform/linux/atspi/wire/peer_connection.h"
#include "platform/linux/base/backoff.h"
#include "platform/linux/base/sd_bus.h"

namespace tarqo::lnx::atspi {

/// One object on the bus: the unique name of the connection that holds it, and its path there.
struct Ref {
  std::string bus;
  std::string path;

  bool operator==(const Ref&) const = default;

  /// AT-SPI writes "no object" as a null path.
  [[nodiscard]] bool empty() const;
};

struct RefHash {
  std::size_t operator()(const Ref& ref) const {
    return std::hash<std::string>()(ref.path) * 31 + std::hash<std::string>()(ref.bus);
  }
};

inline constexpr const char* kAccessible = "org.a11y.atspi.Accessible";
inline constexpr const char* kAction = "org.a11y.atspi.Action";
inline constexpr const char* kApplication = "org.a11y.atspi.Application";
inline constexpr const char* kCollection = "org.a11y.atspi.Collection";
inline constexpr const char* kComponent = "org.a11y.atspi.Component";
inline constexpr const char* kDocument = "org.a11y.atspi.Document";
inline constexpr const char* kEditableText = "org.a11y.atspi.EditableText";
inline constexpr const char* kSelection = "org.a11y.atspi.Selection";
inline constexpr const char* kTable = "org.a11y.atspi.Table";
inline constexpr const char* kText = "org.a11y.atspi.Text";
inline constexpr const char* kValue = "org.a11y.atspi.Value";
inline constexpr const char* kRootPath = "/org/a11y/atspi/accessible/root";

/// The object below which every application registers.
[[nodiscard]] Ref registryRoot();

class Bus {
 public:
  /// To the accessibility bus. `clock` is kept and outlives this.
  explicit Bus(Clock& clock) : clock_(clock) {}

  /// To one application, past the bus, at the address it reported, which is not empty.
  Bus(PeerAddress application, Clock& clock)
      : clock_(clock), application_(std::move(application)) {}

  /// The connection; made when it is not open. Null when there is no session bus or no
  /// accessibility bus on it. Waits for at most 3 s, when the accessibility bus must be started
  /// first; after an attempt that was slow to fail, the next is made 2 s later.
  [[nodiscard]] sd_bus* connection();

  /// The connection as it is now; null when it was never made, failed or was dropped.
  [[nodiscard]] sd_bus* current() const { return bus_.get(); }

  /// Whether what is sent goes to one application, whoever it is addressed to.
  [[nodiscard]] bool isPeer() const { return !application_.text.empty(); }

  /// Gives up a connection that failed. The next use makes a new one.
  void drop();

  [[nodiscard]] Clock& clock() { return clock_; }

  /// Counts the connections made: what was read through an earlier one may not hold any more.
  [[nodiscard]] int generation() const { return generation_; }

 private:
  Clock& clock_;
  PeerAddress application_;  ///< Empty for the bus.
  BusHandle bus_;
  int generation_ = 0;
  Backoff afterSlowFailure_;
};

/// A new connection to the accessibility bus, whose address the session bus reports; null when it
/// cannot be made within `patience`.
[[nodiscard]] BusHandle openAccessibilityBus(Duration patience, Clock& clock);

/// The answer to one call. Read it before the handler returns.
struct Reply {
  sd_bus_message* message = nullptr;  ///< Null when the call could not be sent.
  bool ok = false;                    ///< False for an error answer too.
};
using ReplyHandler = std::function<void(Reply)>;

enum class BatchOutcome {
  complete,  ///< Every call was answered, be it with an error.
  timedOut,  ///< An answer was not there in time; the rest was given up.
  lost       ///< The connection failed.
};

struct Method {
  const char* interface;
  const char* name;
};

/// How long a batch may last.
struct BatchLimits {
  Instant deadline;      ///< For the batch as a whole.
  Duration perAnswer{};  ///< Between two answers.
};

/// Calls that are sent without awaiting each other's answers. Answers are handled in `run`, and a
/// handler may add further calls. Calls that are unanswered when it is destroyed are forgotten.
class Batch {
 public:
  explicit Batch(Bus& bus) : bus_(bus) {}
  Batch(const Batch&) = delete;
  Batch& operator=(const Batch&) = delete;

  /// A call to be filled with arguments and given to `send`; null when there is no bus.
  [[nodiscard]] Message make(const Ref& target, const char* interface, const char* member);

  void send(Message message, ReplyHandler handler);

  /// A call without arguments.
  void call(const Ref& target, const char* interface, const char* member, ReplyHandler handler);

  /// A call with a number as its argument.
  void callWithNumber(const Ref& target, Method method, std::int32_t number, ReplyHandler handler);

  /// Reads a property; the answer is a variant.
  void property(const Ref& target, const char* interface, const char* name, ReplyHandler handler);

  [[nodiscard]] BatchOutcome run(BatchLimits limits);

  /// Stops `run` after the handler that calls this.
  void stop() { stopped_ = true; }

 private:
  struct Pending {
    Batch* batch = nullptr;
    ReplyHandler handler;
    Slot slot;
    std::list<Pending>::iterator self;
  };

  static int onReply(sd_bus_message* reply, void* pending, sd_bus_error* error);
  [[nodiscard]] bool sendWaiting();
  [[nodiscard]] bool waitForInput(BatchLimits limits);

  Bus& bus_;
  std::deque<std::pair<Message, ReplyHandler>> waiting_;
  std::list<Pending> pending_;
  Instant lastAnswer_ = kDistantPast;
  bool stopped_ = false;
};

}  // namespace tarqo::lnx::atspi
