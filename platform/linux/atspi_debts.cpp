#include "platform/linux/atspi_debts.h"

#include "platform/linux/atspi_codec.h"

namespace tarqo::lnx {
namespace {

/// Longer than the core needs from an action that was not acknowledged to the hit test after it.
constexpr auto kMemory = std::chrono::seconds(2);

}  // namespace

int AtspiDebts::onAnswer(sd_bus_message* reply, void* debt, sd_bus_error* /*error*/) {
  auto* answered = static_cast<Debt*>(debt);
  answered->answered = true;
  answered->taken =
      sd_bus_message_is_method_error(reply, nullptr) == 0 && readBool(reply).value_or(false);
  return 1;
}

int AtspiDebts::onPing(sd_bus_message* reply, void* debt, sd_bus_error* /*error*/) {
  static_cast<Debt*>(debt)->alive = sd_bus_message_is_method_error(reply, nullptr) == 0;
  return 1;
}

/// False when the application does not answer. An application that offers no connection of its own
/// is asked over the bus.
bool AtspiDebts::openDirect(Debt& debt, const AtspiElement::Parts& object) {
  std::string address;
  AtspiBatch batch(bus_);
  batch.call({object.ref.bus, kRootPath}, kApplication, "GetApplicationBusAddress",
             [&address](Reply reply) {
               address = (reply.ok ? readText(reply.message) : std::nullopt).value_or("");
             });
  const Instant now = std::chrono::steady_clock::now();
  if (batch.run({now + object.timeout, object.timeout}) != BatchOutcome::complete) {
    return false;
  }
  debt.direct = openApplication({std::move(address), object.pid});
  return true;
}

sd_bus* AtspiDebts::busOf(const Debt& debt) const {
  return debt.direct ? debt.direct.get() : bus_.current();
}

bool AtspiDebts::send(Debt& debt, const AtspiElement::Parts& object, int index) {
  sd_bus* bus = debt.direct ? debt.direct.get() : bus_.connection();
  debt.generation = bus_.generation();
  if (bus == nullptr) {
    return false;
  }
  sd_bus_slot* slot = nullptr;
  const int sent = sd_bus_call_method_async(
      bus, &slot, debt.direct ? nullptr : object.ref.bus.c_str(), object.ref.path.c_str(), kAction,
      "DoAction", onAnswer, &debt, "i", index);
  debt.action.reset(slot);
  return sent >= 0;
}

bool AtspiDebts::ping(Debt& debt, const AtspiElement::Parts& object) {
  sd_bus* bus = busOf(debt);
  if (bus == nullptr) {
    return false;
  }
  sd_bus_slot* slot = nullptr;
  const int sent =
      sd_bus_call_method_async(bus, &slot, debt.direct ? nullptr : object.ref.bus.c_str(),
                               kRootPath, kAccessible, "GetRole", onPing, &debt, "");
  debt.pinged.reset(slot);
  return sent >= 0;
}

void AtspiDebts::waitFor(const Debt& debt, const bool& done, Duration patience) {
  const Instant deadline = std::chrono::steady_clock::now() + patience;
  while (!done) {
    sd_bus* bus = busOf(debt);
    const int processed = bus == nullptr ? -1 : sd_bus_process(bus, nullptr);
    const Instant now = std::chrono::steady_clock::now();
    if (processed < 0 || now >= deadline) {
      return;
    }
    if (processed == 0) {
      const auto left = std::chrono::duration_cast<std::chrono::microseconds>(deadline - now);
      sd_bus_wait(bus, static_cast<std::uint64_t>(left.count()) + 1);
    }
  }
}

Performed AtspiDebts::perform(const AtspiElement::Parts& object, int index, Toolkit toolkit) {
  debts_.emplace_back();
  Debt& debt = debts_.back();
  debt.pid = object.pid;
  const bool apart = toolkit == Toolkit::gtk3 || toolkit == Toolkit::other;
  if ((apart && !openDirect(debt, object)) || !send(debt, object, index)) {
    debts_.pop_back();
    return Performed::refused;
  }
  waitFor(debt, debt.answered, object.timeout);
  if (!debt.answered && ping(debt, object)) {
    waitFor(debt, debt.alive, object.timeout);
  }
  debt.since = std::chrono::steady_clock::now();
  const Performed performed = !debt.answered ? Performed::pending
                              : debt.taken   ? Performed::acknowledged
                                             : Performed::refused;
  if (debt.answered || debt.alive) {
    debts_.pop_back();
  }
  return performed;
}

void AtspiDebts::takeIn() {
  while (bus_.current() != nullptr && sd_bus_process(bus_.current(), nullptr) > 0) {
  }
  for (const Debt& debt : debts_) {
    while (debt.direct && sd_bus_process(debt.direct.get(), nullptr) > 0) {
    }
  }
}

bool AtspiDebts::owes(Pid pid) {
  takeIn();
  const Instant now = std::chrono::steady_clock::now();
  bool owed = false;
  for (auto debt = debts_.begin(); debt != debts_.end();) {
    // Answers to a connection that is gone never come.
    const bool settled = debt->answered || debt->alive ||
                         (debt->direct ? sd_bus_is_open(debt->direct.get()) <= 0
                                       : debt->generation != bus_.generation());
    const bool stillMatters = !settled || (!debt->told && now - debt->since < kMemory);
    if (debt->pid == pid && stillMatters) {
      debt->told = true;
      owed = true;
    }
    debt = settled && (debt->pid == pid || !stillMatters) ? debts_.erase(debt) : std::next(debt);
  }
  return owed;
}

}  // namespace tarqo::lnx
