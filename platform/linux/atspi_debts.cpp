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

bool AtspiDebts::send(Debt& debt, const AtspiElement::Parts& object, int index) {
  sd_bus* bus = bus_.connection();
  sd_bus_slot* slot = nullptr;
  const int sent = bus == nullptr ? -1
                                  : sd_bus_call_method_async(
                                        bus, &slot, object.ref.bus.c_str(), object.ref.path.c_str(),
                                        kAction, "DoAction", onAnswer, &debt, "i", index);
  debt.action.reset(slot);
  debt.generation = bus_.generation();
  return sent >= 0;
}

bool AtspiDebts::ping(Debt& debt, const AtspiElement::Parts& object) {
  sd_bus_slot* slot = nullptr;
  const int sent =
      bus_.current() == nullptr
          ? -1
          : sd_bus_call_method_async(bus_.current(), &slot, object.ref.bus.c_str(), kRootPath,
                                     kAccessible, "GetRole", onPing, &debt, "");
  debt.pinged.reset(slot);
  return sent >= 0;
}

bool AtspiDebts::waitFor(const bool& done, Duration patience) {
  const Instant deadline = std::chrono::steady_clock::now() + patience;
  while (!done) {
    const int processed = bus_.current() == nullptr ? -1 : sd_bus_process(bus_.current(), nullptr);
    const Instant now = std::chrono::steady_clock::now();
    if (processed < 0 || now >= deadline) {
      return done;
    }
    if (processed == 0) {
      const auto left = std::chrono::duration_cast<std::chrono::microseconds>(deadline - now);
      sd_bus_wait(bus_.current(), static_cast<std::uint64_t>(left.count()) + 1);
    }
  }
  return true;
}

bool AtspiDebts::perform(const AtspiElement::Parts& object, int index) {
  debts_.emplace_back();
  Debt& debt = debts_.back();
  debt.pid = object.pid;
  if (!send(debt, object, index)) {
    debts_.pop_back();
    return false;
  }
  bool acknowledged = waitFor(debt.answered, object.timeout);
  if (!acknowledged && ping(debt, object)) {
    waitFor(debt.alive, object.timeout);
    acknowledged = debt.answered;
  }
  debt.since = std::chrono::steady_clock::now();
  const bool taken = acknowledged ? debt.taken : debt.alive;
  if (acknowledged || debt.alive) {
    debts_.pop_back();
  }
  return taken;
}

void AtspiDebts::takeIn() {
  while (bus_.current() != nullptr && sd_bus_process(bus_.current(), nullptr) > 0) {
  }
}

bool AtspiDebts::owes(Pid pid) {
  takeIn();
  const Instant now = std::chrono::steady_clock::now();
  bool owed = false;
  for (auto debt = debts_.begin(); debt != debts_.end();) {
    // Answers to a connection that is gone never come.
    const bool settled = debt->answered || debt->alive || debt->generation != bus_.generation();
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
