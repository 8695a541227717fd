// The events of the accessibility bus, on the main loop's own connection.
//
// All of this happens on the main loop's thread, but for `awaitConnection`. When the connection is
// lost while somebody needs it, it is tried again about once a second.
#pragma once

#include <cstdint>
#include <functional>
#include <list>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "platform/linux/atspi/wire/bus.h"
#include "platform/linux/base/backoff.h"
#include "platform/linux/linux_main_loop.h"

namespace tarqo::lnx::atspi {

/// One kind of event. What a toolkit sends of it is decided by the registry, what the bus passes on
/// by interface and member.
struct EventKind {
  std::string_view interface;     ///< After "org.a11y.atspi.Event.".
  std::string_view member;        ///< Used for the interface "Object" alone.
  std::string_view registryName;  ///< "object:state-changed:focused" and the like.
};

struct Event {
  Ref object;
  std::size_t kind = 0;  ///< As `EventReceiver::kindOf` gave it.
  bool gained = false;   ///< Whether a state began; false when it ended.
};

/// Where events go to. Called on the main loop's thread.
class EventReceiver {
 public:
  virtual ~EventReceiver() = default;

  /// What to subscribe to.
  [[nodiscard]] virtual std::vector<EventKind> kinds() = 0;

  /// The receiver's number for an event; empty for events of no interest. Called for every event,
  /// of which a page that loads sends tens of thousands.
  [[nodiscard]] virtual std::optional<std::size_t> kindOf(std::string_view interface,
                                                          std::string_view member,
                                                          std::string_view detail) = 0;

  virtual void receive(Pid pid, const Event& event) = 0;

  /// The connection is gone: the next one gives its own names to objects.
  virtual void disconnected() = 0;

  /// Whether a lost connection is worth making again. Called while there is no connection.
  [[nodiscard]] virtual bool isNeeded() = 0;
};

class EventStream final : public LoopSource {
 public:
  /// All are kept and outlive this. Connects when `awaitConnection` is first called.
  EventStream(LinuxMainLoop& loop, EventReceiver& receiver, Clock& clock);
  EventStream(const EventStream&) = delete;
  EventStream& operator=(const EventStream&) = delete;

  /// Has the main loop connect, and waits for it for at most a second; false when there is no
  /// accessibility bus. Any thread but the main loop's.
  [[nodiscard]] bool awaitConnection();

  /// Requests the role of an object and passes it on; `done` is not called when the object does not
  /// answer, when the connection is lost, and when too many requests are under way.
  void requestRole(const Ref& object, std::function<void(std::uint32_t role)> done);

  int descriptor() override;
  short events() override;
  std::optional<Instant> deadline() override;
  void serve() override;

 private:
  struct RoleRequest {
    EventStream* stream = nullptr;
    std::function<void(std::uint32_t role)> done;
  };

  [[nodiscard]] bool connect(Duration patience);
  [[nodiscard]] bool subscribe();
  static int onSignal(sd_bus_message* signal, void* self, sd_bus_error* error);
  static int onPid(sd_bus_message* reply, void* self, sd_bus_error* error);
  static int onRole(sd_bus_message* reply, void* request, sd_bus_error* error);
  void take(sd_bus_message* signal);
  void requestPid(const std::string& sender);
  void disconnect();
  void reconnect();

  LinuxMainLoop& loop_;
  EventReceiver& receiver_;
  Clock& clock_;
  BusHandle bus_;
  bool behind_ = false;           ///< More messages may be there than the last round took.
  std::optional<Backoff> retry_;  ///< Until when not to connect again; empty when nobody needs it.
  std::vector<Slot> slots_;
  std::unordered_map<std::string, Pid> pids_;  ///< By the sender's unique name.
  std::unordered_map<std::string, std::vector<Event>> withoutPid_;  ///< Sender's process not known.
  std::list<RoleRequest> roleRequests_;
};

}  // namespace tarqo::lnx::atspi
