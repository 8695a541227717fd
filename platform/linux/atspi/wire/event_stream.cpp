#include "platform/linux/atspi/wire/event_stream.h"

#include <algorithm>
#include <exception>
#include <future>
#include <memory>
#include <set>

#include "platform/linux/atspi/wire/codec.h"

namespace tarqo::lnx::atspi {
namespace {

constexpr auto kConnectionPatience = std::chrono::seconds(1);

/// A connection that was lost is tried again on the loop that everything else waits for: briefly
/// and seldom. A bus that takes longer to start has started by the next time.
constexpr auto kReconnectPatience = std::chrono::milliseconds(300);
constexpr auto kReconnectRest = std::chrono::seconds(1);

/// Messages handled before the loop's other work has its turn. Taking one costs some 10 us, and a
/// page that loads sends tens of thousands.
constexpr int kMaxMessagesARound = 300;

/// Events that may wait for their sender's process id.
constexpr std::size_t kMaxWithoutPid = 200;

/// Objects whose role is requested at once. A page that comes to show announces all that is on it.
constexpr std::size_t kMaxRoleRequests = 32;

constexpr std::string_view kEventPrefix = "org.a11y.atspi.Event.";

}  // namespace

EventStream::EventStream(LinuxMainLoop& loop, EventReceiver& receiver, Clock& clock)
    : loop_(loop), receiver_(receiver), clock_(clock) {
  loop_.add(*this);
}

bool EventStream::awaitConnection() {
  auto answer = std::make_shared<std::promise<bool>>();
  std::future<bool> ready = answer->get_future();
  loop_.post([this, answer] { answer->set_value(connect(kConnectionPatience)); });
  return ready.wait_for(kConnectionPatience) == std::future_status::ready && ready.get();
}

bool EventStream::connect(Duration patience) {
  if (bus_ && sd_bus_is_open(bus_.get()) > 0) {
    return true;
  }
  disconnect();
  try {
    bus_ = openAccessibilityBus(patience, clock_);
    if (bus_ && subscribe()) {
      return true;
    }
  } catch (const std::exception&) {
    // Out of memory: nothing may pass through the main loop, and the next attempt may do better.
  }
  disconnect();
  return false;
}

void EventStream::disconnect() {
  slots_.clear();
  pids_.clear();
  withoutPid_.clear();
  bus_.reset();
  behind_ = false;
  roleRequests_.clear();  // The connection's callbacks, which are gone with it, point at them.
  receiver_.disconnected();
}

bool EventStream::subscribe() {
  std::set<std::string_view> matched;
  for (const EventKind& kind : receiver_.kinds()) {
    // Registering makes the toolkits send at all; the match makes the bus pass it on to us.
    if (sd_bus_call_method_async(bus_.get(), nullptr, "org.a11y.atspi.Registry",
                                 "/org/a11y/atspi/registry", "org.a11y.atspi.Registry",
                                 "RegisterEvent", nullptr, nullptr, "sass",
                                 std::string(kind.registryName).c_str(), 0, "") < 0) {
      return false;
    }
    std::string rule =
        "type='signal',interface='" + std::string(kEventPrefix) + std::string(kind.interface) + "'";
    if (kind.interface == "Object") {
      rule += ",member='" + std::string(kind.member) + "'";
      if (!matched.insert(kind.member).second) {
        continue;
      }
    } else if (!matched.insert(kind.interface).second) {
      continue;
    }
    sd_bus_slot* slot = nullptr;
    if (sd_bus_add_match_async(bus_.get(), &slot, rule.c_str(), onSignal, nullptr, this) < 0) {
      return false;
    }
    slots_.emplace_back(slot);
  }
  return true;
}

int EventStream::descriptor() { return bus_ ? sd_bus_get_fd(bus_.get()) : -1; }

short EventStream::events() {
  const int wanted = bus_ ? sd_bus_get_events(bus_.get()) : 0;
  return static_cast<short>(std::max(wanted, 0));
}

std::optional<Instant> EventStream::deadline() {
  if (!bus_) {
    return retry_ ? std::optional(retry_->end()) : std::nullopt;
  }
  if (behind_) {
    return kDistantPast;
  }
  std::uint64_t microseconds = UINT64_MAX;
  if (sd_bus_get_timeout(bus_.get(), &microseconds) <= 0 || microseconds == UINT64_MAX) {
    return std::nullopt;
  }
  // The steady clock and sd-bus count from the same moment.
  return Instant(std::chrono::microseconds(microseconds));
}

void EventStream::serve() {
  if (!bus_) {
    reconnect();
    return;
  }
  int processed = 1;
  for (int left = kMaxMessagesARound; processed > 0 && left > 0; --left) {
    processed = sd_bus_process(bus_.get(), nullptr);
  }
  behind_ = processed > 0;
  if (processed < 0) {
    disconnect();
    retry_.emplace();
  }
}

void EventStream::reconnect() {
  if (!retry_ || retry_->isRunning(clock_.now())) {
    return;
  }
  retry_.reset();
  if (receiver_.isNeeded() && !connect(kReconnectPatience)) {
    retry_.emplace().start(clock_.now(), kReconnectRest);
  }
}

int EventStream::onSignal(sd_bus_message* signal, void* self, sd_bus_error* /*error*/) {
  try {
    static_cast<EventStream*>(self)->take(signal);
  } catch (...) {
    // Out of memory: one event less, nothing may pass through the C library.
  }
  return 0;
}

void EventStream::take(sd_bus_message* signal) {
  const char* interface = sd_bus_message_get_interface(signal);
  const char* member = sd_bus_message_get_member(signal);
  const char* sender = sd_bus_message_get_sender(signal);
  const char* path = sd_bus_message_get_path(signal);
  const char* detail = nullptr;
  std::int32_t first = 0;
  if (interface == nullptr || member == nullptr || sender == nullptr || path == nullptr ||
      !std::string_view(interface).starts_with(kEventPrefix) ||
      sd_bus_message_read(signal, "si", &detail, &first) <= 0) {
    return;
  }
  const std::optional<std::size_t> kind =
      receiver_.kindOf(std::string_view(interface).substr(kEventPrefix.size()), member, detail);
  if (!kind) {
    return;
  }
  const Event event{{sender, path}, *kind, first != 0};
  const auto known = pids_.find(sender);
  if (known != pids_.end()) {
    receiver_.receive(known->second, event);
    return;
  }
  std::vector<Event>& waiting = withoutPid_[sender];
  if (waiting.empty()) {
    requestPid(sender);
  }
  if (waiting.size() < kMaxWithoutPid) {
    waiting.push_back(event);
  }
}

void EventStream::requestPid(const std::string& sender) {
  sd_bus_slot* slot = nullptr;
  if (sd_bus_call_method_async(bus_.get(), &slot, "org.freedesktop.DBus", "/org/freedesktop/DBus",
                               "org.freedesktop.DBus", "GetConnectionUnixProcessID", onPid, this,
                               "s", sender.c_str()) >= 0) {
    sd_bus_slot_set_description(slot, sender.c_str());
    sd_bus_slot_set_floating(slot, 1);
    sd_bus_slot_unref(slot);
  }
}

int EventStream::onPid(sd_bus_message* reply, void* self, sd_bus_error* /*error*/) {
  auto* stream = static_cast<EventStream*>(self);
  try {
    const char* sender = nullptr;
    sd_bus_slot* slot = sd_bus_get_current_slot(stream->bus_.get());
    if (slot == nullptr || sd_bus_slot_get_description(slot, &sender) < 0) {
      return 1;
    }
    const std::string name = sender;
    const std::vector<Event> waiting = std::move(stream->withoutPid_[name]);
    stream->withoutPid_.erase(name);
    const auto pid =
        sd_bus_message_is_method_error(reply, nullptr) == 0 ? readNumber(reply) : std::nullopt;
    if (pid) {
      stream->pids_[name] = static_cast<Pid>(*pid);
      for (const Event& event : waiting) {
        stream->receiver_.receive(static_cast<Pid>(*pid), event);
      }
    }
  } catch (...) {
    // Out of memory: the events that waited are lost, nothing may pass through the C library.
  }
  return 1;
}

void EventStream::requestRole(const Ref& object, std::function<void(std::uint32_t role)> done) {
  if (roleRequests_.size() >= kMaxRoleRequests) {
    return;
  }
  RoleRequest& request = roleRequests_.emplace_back(RoleRequest{this, std::move(done)});
  if (sd_bus_call_method_async(bus_.get(), nullptr, object.bus.c_str(), object.path.c_str(),
                               kAccessible, "GetRole", onRole, &request, "") < 0) {
    roleRequests_.pop_back();
  }
}

int EventStream::onRole(sd_bus_message* reply, void* request, sd_bus_error* /*error*/) {
  auto* answered = static_cast<RoleRequest*>(request);
  EventStream& stream = *answered->stream;
  try {
    const auto done = std::move(answered->done);
    stream.roleRequests_.remove_if(
        [answered](const RoleRequest& each) { return &each == answered; });
    const auto role =
        sd_bus_message_is_method_error(reply, nullptr) == 0 ? readNumber(reply) : std::nullopt;
    if (role) {
      done(*role);
    }
  } catch (...) {
    // Out of memory: one event less, nothing may pass through the C library.
  }
  return 1;
}

}  // namespace tarqo::lnx::atspi
