#include "platform/linux/atspi/wire/bus.h"

#include <algorithm>
#include <cstdlib>

namespace tarqo::lnx::atspi {
namespace {

/// Calls in flight at once. More than this gains nothing and leaves a longer backlog in a target
/// that stops answering.
constexpr std::size_t kWindow = 256;

constexpr auto kConnectPatience = std::chrono::seconds(3);

/// For one answer of a bus that runs. The accessibility bus may have to be started first, and gets
/// all the time there is.
constexpr auto kHelloPatience = std::chrono::seconds(1);

constexpr auto kSlowFailure = std::chrono::milliseconds(200);
constexpr auto kRestAfterSlowFailure = std::chrono::seconds(2);

BusHandle connect(const std::string& address, Instant deadline, Clock& clock) {
  const auto patience = [&] { return std::min<Duration>(deadline - clock.now(), kHelloPatience); };
  sd_bus* made = nullptr;
  if (sd_bus_new(&made) < 0) {
    return nullptr;
  }
  BusHandle bus(made);
  constexpr auto kLimit = std::chrono::microseconds(kHelloPatience).count();
  if (sd_bus_set_address(made, address.c_str()) < 0 || sd_bus_set_bus_client(made, 1) < 0 ||
      sd_bus_set_method_call_timeout(made, static_cast<std::uint64_t>(kLimit)) < 0 ||
      sd_bus_start(made) < 0 || !becomesReady(made, patience(), clock)) {
    return nullptr;
  }
  // A bus that accepts connections but never says hello must not be taken for one that works.
  const Message call = newCall(
      made, {"org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "GetId"});
  const char* name = nullptr;
  if (!call || callAndWait(made, call, patience()).code < 0 ||
      sd_bus_get_unique_name(made, &name) < 0) {
    return nullptr;
  }
  return bus;
}

/// The address of the accessibility bus, as the session bus reports it; empty when nobody does.
std::optional<std::string> accessibilityBusAddress(Instant deadline, Clock& clock) {
  sd_bus* opened = nullptr;
  if (sd_bus_open_user(&opened) >= 0) {
    const BusHandle session(opened);
    const Duration patience = std::min<Duration>(deadline - clock.now(), kHelloPatience);
    const Message call =
        becomesReady(opened, patience, clock)
            ? newCall(opened, {"org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress"})
            : nullptr;
    if (call) {
      const CallResult result = callAndWait(opened, call, deadline - clock.now());
      const char* address = nullptr;
      if (result.code >= 0 && sd_bus_message_read(result.reply.get(), "s", &address) > 0 &&
          *address != '\0') {
        return address;
      }
    }
  }
  const char* fromEnvironment = std::getenv("AT_SPI_BUS_ADDRESS");
  if (fromEnvironment != nullptr && *fromEnvironment != '\0') {
    return fromEnvironment;
  }
  return std::nullopt;
}

}  // namespace

bool Ref::empty() const { return path.empty() || path == "/org/a11y/atspi/null"; }

Ref registryRoot() { return {"org.a11y.atspi.Registry", kRootPath}; }

BusHandle openAccessibilityBus(Duration patience, Clock& clock) {
  const Instant deadline = clock.now() + patience;
  const std::optional<std::string> address = accessibilityBusAddress(deadline, clock);
  return address ? connect(*address, deadline, clock) : nullptr;
}

sd_bus* Bus::connection() {
  if (bus_ && sd_bus_is_open(bus_.get()) <= 0) {
    bus_.reset();
  }
  if (bus_) {
    return bus_.get();
  }
  const Instant started = clock_.now();
  if (!afterSlowFailure_.isRunning(started)) {
    bus_ = isPeer() ? openPeerConnection(application_)
                    : openAccessibilityBus(kConnectPatience, clock_);
    ++generation_;
    const Instant ended = clock_.now();
    if (!bus_ && ended - started > kSlowFailure) {
      afterSlowFailure_.start(ended, kRestAfterSlowFailure);
    }
  }
  return bus_.get();
}

void Bus::drop() { bus_.reset(); }

Message Batch::make(const Ref& target, const char* interface, const char* member) {
  sd_bus* bus = bus_.connection();
  if (bus == nullptr) {
    return nullptr;
  }
  const char* name = bus_.isPeer() ? nullptr : target.bus.c_str();
  return newCall(bus, {name, target.path.c_str(), interface, member});
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
  batch.lastAnswer_ = batch.bus_.clock().now();
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
  const Instant now = bus_.clock().now();
  const Instant until = std::min(limits.deadline, lastAnswer_ + limits.perAnswer);
  if (now >= until) {
    return false;
  }
  const auto left = std::chrono::duration_cast<std::chrono::microseconds>(until - now).count() + 1;
  sd_bus_wait(bus_.current(), static_cast<std::uint64_t>(left));
  return true;
}

BatchOutcome Batch::run(BatchLimits limits) {
  stopped_ = false;
  lastAnswer_ = bus_.clock().now();
  while (!stopped_) {
    if (bus_.current() == nullptr || !sendWaiting()) {
      bus_.drop();
      return BatchOutcome::lost;
    }
    if (pending_.empty()) {
      return BatchOutcome::complete;
    }
    const int processed = sd_bus_process(bus_.current(), nullptr);
    // To the calls that a lost connection leaves open the library itself would answer with errors,
    // which would pass for those of the application.
    if (processed < 0 || sd_bus_is_open(bus_.current()) <= 0) {
      pending_.clear();
      bus_.drop();
      return BatchOutcome::lost;
    }
    if (processed == 0 && !waitForInput(limits)) {
      return BatchOutcome::timedOut;
    }
    if (processed > 0 && bus_.clock().now() >= limits.deadline) {
      return BatchOutcome::timedOut;
    }
  }
  return BatchOutcome::complete;
}

}  // namespace tarqo::lnx::atspi
