// Actions that an application was asked to perform and has not acknowledged.
//
// A handler that runs long, or opens a dialog and waits in it, keeps its application from
// answering. The action then happened, or will happen as soon as the application goes on; whoever
// takes it for refused and clicks instead makes it happen twice. So an application that owes an
// answer is kept from being clicked: hit tests in it find nothing.
//
// Worker thread only.
#pragma once

#include <list>
#include <memory>
#include <string>

#include "platform/accessibility.h"
#include "platform/linux/atspi_bus.h"
#include "platform/linux/atspi_element.h"
#include "platform/linux/atspi_facts.h"

namespace tarqo::lnx {

class AtspiDebts {
 public:
  explicit AtspiDebts(AtspiBus& bus) : bus_(bus) {}
  AtspiDebts(const AtspiDebts&) = delete;
  AtspiDebts& operator=(const AtspiDebts&) = delete;

  /// Performs the action of that index. True when the application acknowledged it, or answers other
  /// questions while it is busy with it: answers come in order, so it has begun. False when it
  /// refused, and when it is silent; then it owes the answer. Waits for two time-outs at most.
  ///
  /// GTK 3 and its relatives run the handler within their dispatch of the very connection the
  /// action came in on, and hear nothing on it until the handler returns; a dialog that the handler
  /// waits for could never be read. There the action goes over a connection of its own.
  [[nodiscard]] Performed perform(const AtspiElement::Parts& object, int index, Toolkit toolkit);

  /// Whether a process owes an answer. What was owed and has been paid meanwhile is still told
  /// once, within `kMemory`: the caller may ask on behalf of the very action that was not
  /// acknowledged.
  [[nodiscard]] bool owes(Pid pid);

 private:
  struct Debt {
    Pid pid = 0;
    int generation = 0;
    BusHandle direct;  ///< The action's own connection; null when it went over the bus.
    Slot action;
    Slot pinged;
    bool answered = false;
    bool taken = false;  ///< The answer was yes.
    bool alive = false;  ///< The question after the action was answered.
    bool told = false;   ///< Somebody was kept from clicking because of it.
    Instant since = kDistantPast;
  };

  static int onAnswer(sd_bus_message* reply, void* debt, sd_bus_error* error);
  static int onPing(sd_bus_message* reply, void* debt, sd_bus_error* error);
  [[nodiscard]] bool openDirect(Debt& debt, const AtspiElement::Parts& object);
  [[nodiscard]] sd_bus* busOf(const Debt& debt) const;
  [[nodiscard]] bool send(Debt& debt, const AtspiElement::Parts& object, int index);
  [[nodiscard]] bool ping(Debt& debt, const AtspiElement::Parts& object);
  void waitFor(const Debt& debt, const bool& done, Duration patience);
  void takeIn();

  AtspiBus& bus_;
  std::list<Debt> debts_;
};

}  // namespace tarqo::lnx
