// Deeds that an application was asked to do and may still be inside.
//
// ATK's bridge, which GTK 3, Chromium and many others use, does a deed inside its dispatch of the
// connection that the request came in on. It answers an action before it begins with it, and any
// other deed when it is done. A handler that opens a dialog and waits for it in a loop of its own
// keeps that dispatch from ending. When a key comes then, the bridge asks the registry about it in
// yet another loop and dispatches there whatever has arrived on its connections; on the one that is
// in dispatch already it waits for itself, for good. From then on the handler's own loop would do
// the same, without a key.
//
// So a deed goes over a connection of its own, on which nothing arrives meanwhile: nothing else is
// sent on it, and it is not closed, not even by the end of this process, before the application is
// out of it. Nothing tells that outright. A handler that waits for the user has opened a window; so
// an application that answers over the bus and has no window that it did not have before is taken
// to be out.
//
// Worker thread only.
#pragma once

#include <functional>
#include <list>
#include <vector>

#include "platform/accessibility.h"
#include "platform/linux/atspi/read/element.h"
#include "platform/linux/atspi/read/properties.h"
#include "platform/linux/atspi/wire/bus.h"
#include "platform/linux/atspi/wire/connection_keeper.h"

namespace tarqo::lnx {

/// A request to an object that may set its application's handlers going.
struct AtspiDeed {
  AtspiMethod method;
  std::function<void(sd_bus_message*)> writeArguments;  ///< Null when there are none.
  bool answeredFirst = false;                           ///< ATK's bridge answers, then acts.
};

class AtspiDebts {
 public:
  explicit AtspiDebts(AtspiBus& bus) : bus_(bus) {}
  AtspiDebts(const AtspiDebts&) = delete;
  AtspiDebts& operator=(const AtspiDebts&) = delete;
  /// Connections that an application may be inside of are kept open by processes of their own.
  ~AtspiDebts();

  /// Sends the request, waits until it is answered and, where the answer comes first, until the
  /// application answers other questions again; both until the deadline. `pending` also when the
  /// application ended, or its connection, before it answered: a handler may do just that.
  [[nodiscard]] Performed perform(const AtspiElement::Parts& object, Toolkit toolkit,
                                  const AtspiDeed& deed, Instant deadline);

  /// The same within one messaging time-out; true when the application says that it did as asked. A
  /// value or the focus sets handlers going as a press does: one may open a dialog and wait in it.
  [[nodiscard]] bool isAccepted(const AtspiElement::Parts& object, Toolkit toolkit,
                                const AtspiDeed& deed);

  /// Whether a process is inside a deed of ATK's bridge that came over the bus, because it offered
  /// no other connection. Costs no round trip.
  [[nodiscard]] bool isEndangeredByKeys(Pid pid);

 private:
  enum class Answer { none, yes, no, lost };

  struct Debt {
    Pid pid = 0;
    int generation = 0;
    bool answeredFirst = false;
    Instant since = kDistantPast;
    std::vector<AtspiRef> windowsBefore;
    BusHandle direct;  ///< The deed's own connection; null when it went over the bus.
    ConnectionKeeper keeper;
    Slot call;
    Slot question;
    Answer answer = Answer::none;
    bool isBack = false;  ///< The application answers other questions again, or has ended.
    std::vector<AtspiRef> windowsAfter;
  };

  static int onAnswer(sd_bus_message* reply, void* debt, sd_bus_error* error);
  static int onWindows(sd_bus_message* reply, void* debt, sd_bus_error* error);
  [[nodiscard]] bool prepare(Debt& debt, const AtspiElement::Parts& object, Instant deadline);
  [[nodiscard]] bool send(Debt& debt, const AtspiElement::Parts& object, const AtspiDeed& deed);
  void awaitAnswer(Debt& debt, Instant deadline);
  void awaitReturn(Debt& debt, const AtspiElement::Parts& object, Instant deadline);
  [[nodiscard]] bool isOver(const Debt& debt) const;
  void takeIn();
  void closeOver(Pid pid, const std::vector<AtspiRef>& windows);

  AtspiBus& bus_;
  std::list<Debt> debts_;
};

}  // namespace tarqo::lnx
