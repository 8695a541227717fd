#include "platform/linux/atspi/wire/bus.h"

#include <algorithm>
#include <cstdlib>

#include "platform/linux/base/bus_readiness.h"

namespace tarqo::lnx::atspi {
namespace {

using std::chrono::duration_cast;
using std::chrono::microseconds;

/// Calls in flight at once. More than this gains nothing and leaves a longer backlog in a target
/// that stops answering.
constexpr std::size_t kWindow = 256;

constexpr auto kConnectPatience = std::chrono::seconds(3);

/// For one answer of a bus that runs. The accessibility bus may have to be started first, and gets
/// all the time there is.
constexpr auto kHelloPatience = std::chrono::seconds(1);

constexpr auto kSlowFailure = std::chrono::milliseconds(200);
constexpr auto kRestAfterSlowFailure = std::chrono::seconds(2);

/// The time to a deadline, for sd-bus: never zero, which it takes for no limit.
microseconds until(Instant deadline) {
  return std::max(duration_cast<microseconds>(deadline - std::chrono::steady_clock::now()),
                  microseconds(1));
}

microseconds helloBefore(Instant deadline) {
  return std::min(until(deadline), microseconds(kHelloPatience));
}

std::uint64_t numberOf(microseconds limit) { return static_cast<std::uint64_t>(limit.count()); }

BusHandle connect(const std::string& address, Instant deadline) {
  sd_bus* made = nullptr;
  if (sd_bus_new(&made) < 0) {
    return nullptr;
  }
  BusHandle bus(made);
  if (sd_bus_set_address(made, address.c_str()) < 0 || sd_bus_set_bus_client(made, 1) < 0 ||
      sd_bus_set_method_call_timeout(made, numberOf(microseconds(kHelloPatience))) < 0 ||
      sd_bus_start(made) < 0 || !becomesReady(made, helloBefore(deadline))) {
    return nullptr;
  }
  // A bus that accepts connections but never says hello must not be taken for one that works.
  const char* name = nullptr;
  sd_bus_message* request = nullptr;
  if (sd_bus_message_new_method_call(made, &request, "org.freedesktop.DBus",
                                     "/org/freedesktop/DBus", "org.freedesktop.DBus",
                                     "GetId") < 0) {
    return nullptr;
  }
  const Message call(request);
  sd_bus_message* answer = nullptr;
  const int result = sd_bus_call(made, request, numberOf(helloBefore(deadline)), nullptr, &answer);
  const Message held(answer);
  if (result < 0 || sd_bus_get_unique_name(made, &name) < 0) {
    return nullptr;
  }
  return bus;
}

}  // namespace

bool Ref::empty() const { return path.empty() || path == "/org/a11y/atspi/null"; }

Ref registryRoot() { return {"org.a11y.atspi.Registry", kRootPath}; }

namespace {

/// The address of the accessibility bus, asked of the session bus; none when nobody tells it.
std::optional<std::string> accessibilityBusAddress(Instant deadline) {
  sd_bus* opened = nullptr;
  if (sd_bus_open_user(&opened) >= 0) {
    const BusHandle session(opened);
    sd_bus_message* made = nullptr;
    if (becomesReady(opened, helloBefore(deadline)) &&
        sd_bus_message_new_method_call(opened, &made, "org.a11y.Bus", "/org/a11y/bus",
                                       "org.a11y.Bus", "GetAddress") >= 0) {
      const Message call(made);
      sd_bus_message* answer = nullptr;
      const int asked = sd_bus_call(opened, made, numberOf(until(deadline)), nullptr, &answer);
      const Message reply(answer);
      const char* address = nullptr;
      if (asked >= 0 && sd_bus_message_read(answer, "s", &address) > 0 && *address != '\0') {
        return address;
      }
    }
  }
  const char* told = std::getenv("AT_SPI_BUS_ADDRESS");
  if (told != nullptr && *told != '\0') {
    return told;
  }
  return std::nullopt;
}

}  // namespace

BusHandle openAccessibilityBus(Duration patience) {
  const Instant deadline = std::chrono::steady_clock::now() + patience;
  const std::optional<std::string> address = accessibilityBusAddress(deadline);
  return address ? connect(*address, deadline) : nullptr;
}

sd_bus* Bus::connection() {
  if (bus_ && sd_bus_is_open(bus_.get()) <= 0) {
    bus_.reset();
  }
  const Instant started = std::chrono::steady_clock::now();
  if (!bus_ && started >= notBefore_) {
    bus_ = isPeer() ? openPeerConnection(application_) : openAccessibilityBus(kConnectPatience);
    ++generation_;
    const Instant ended = std::chrono::steady_clock::now();
    if (!bus_ && ended - started > kSlowFailure) {
      notBefore_ = ended + kRestAfterSlowFailure;
    }
  }
  return bus_.get();
}

void Bus::drop() { bus_.reset(); }

Message Batch::make(const Ref& target, const char* interface, const char* member) {
  sd_bus* bus = bus_.connection();
  const char* name = bus_.isPeer() ? nullptr : target.bus.c_str();
  sd_bus_message* made = nullptr;
  if (bus == nullptr || sd_bus_message_new_method_call(bus, &made, name, target.path.c_str(),
                                                       interface, member) < 0) {
    return nullptr;
  }
  return Message(made);
}

void Batch::send(Message message, ReplyHandler handler) {
  if (!message) {
    handler({});
    return;
  }
  waiting_.emplace_back(std::move(message), std::move(handler));
}

void Batch::call(const Ref& target, const char* interface, const char* member,
                 ReplyHandler handler) {
  send(make(target, interface, member), std::move(handler));
}

void Batch::callWithNumber(const Ref& target, Method method, std::int32_t number,
                           ReplyHandler handler) {
  Message message = make(target, method.interface, method.name);
  if (message) {
    sd_bus_message_append(message.get(), "i", number);
  }
  send(std::move(message), std::move(handler));
}

void Batch::property(const Ref& target, const char* interface, const char* name,
                     ReplyHandler handler) {
  Message message = make(target, "org.freedesktop.DBus.Properties", "Get");
  if (message) {
    sd_bus_message_append(message.get(), "ss", interface, name);
  }
  send(std::move(message), std::move(handler));
}

int Batch::onReply(sd_bus_message* reply, void* pending, sd_bus_error* /*error*/) {
  auto* answered = static_cast<Pending*>(pending);
  Batch& batch = *answered->batch;
  const ReplyHandler handler = std::move(answered->handler);
  batch.pending_.erase(answered->self);
  batch.lastAnswer_ = std::chrono::steady_clock::now();
  try {
    handler({reply, sd_bus_message_is_method_error(reply, nullptr) == 0});
  } catch (...) {
    // Nothing may pass through the C library that called; memory ran out, and the batch ends.
    batch.stopped_ = true;
  }
  return 1;
}

bool Batch::sendWaiting() {
  while (pending_.size() < kWindow && !waiting_.empty()) {
    auto [message, handler] = std::move(waiting_.front());
    waiting_.pop_front();
    pending_.emplace_back();
    Pending& pending = pending_.back();
    pending.batch = this;
    pending.self = std::prev(pending_.end());
    pending.handler = std::move(handler);
    sd_bus_slot* slot = nullptr;
    if (sd_bus_call_async(bus_.current(), &slot, message.get(), onReply, &pending, UINT64_MAX) <
        0) {
      pending_.pop_back();
      return false;
    }
    pending.slot.reset(slot);
  }
  return true;
}

bool Batch::waitForInput(BatchLimits limits) {
  const Instant now = std::chrono::steady_clock::now();
  const Instant until = std::min(limits.deadline, lastAnswer_ + limits.perAnswer);
  if (now >= until) {
    return false;
  }
  const auto left = duration_cast<microseconds>(until - now).count() + 1;
  sd_bus_wait(bus_.current(), static_cast<std::uint64_t>(left));
  return true;
}

BatchOutcome Batch::run(BatchLimits limits) {
  stopped_ = false;
  lastAnswer_ = std::chrono::steady_clock::now();
  while (!stopped_) {
    if (bus_.current() == nullptr || !sendWaiting()) {
      bus_.drop();
      return BatchOutcome::lost;
    }
    if (pending_.empty()) {
      return BatchOutcome::complete;
    }
    const int processed = sd_bus_process(bus_.current(), nullptr);
    if (processed < 0) {
      pending_.clear();
      bus_.drop();
      return BatchOutcome::lost;
    }
    if (processed == 0 && !waitForInput(limits)) {
      return BatchOutcome::timedOut;
    }
    if (processed > 0 && std::chrono::steady_clock::now() >= limits.deadline) {
      return BatchOutcome::timedOut;
    }
  }
  return BatchOutcome::complete;
}

}  // namespace tarqo::lnx::atspi
