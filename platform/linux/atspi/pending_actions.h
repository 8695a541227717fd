// Actions that an application was sent and may still be inside.
//
// ATK's bridge, which GTK 3, Chromium and many others use, performs a request inside its dispatch
// of the connection that the request came in on. It answers an action before it begins with it, and
// any other request when it is done. A handler that opens a dialog and waits for it in a loop of
// its own keeps that dispatch from ending. When a key comes then, the bridge consults the registry
// about it in yet another loop, and there dispatches whatever has arrived on its connections. On
// the one that is in dispatch already it waits for itself, for good. From then on the
// handler's own loop would do the same, without a key.
//
// So a request gets a connection of its own, on which nothing else arrives: nothing else is sent on
// it, and it is not closed, not even by the end of this process, before the application is out of
// the request. No message says when that is. A handler that waits for the user has opened a window;
// so an application that answers over the bus, and has no window that it did not have before, is
// taken to be out.
//
// Worker thread only.
#pragma once

#include <functional>
#include <list>
#include <vector>

#include "platform/accessibility.h"
#include "platform/linux/atspi/translate/properties.h"
#include "platform/linux/atspi/wire/bus.h"
#include "platform/linux/atspi/wire/connection_keeper.h"
#include "platform/linux/atspi/wire/object_handle.h"

namespace tarqo::lnx::atspi {

/// A request to an object that may set its application's handlers going.
struct ActionRequest {
  Method method;
  std::function<void(sd_bus_message*)> writeArguments;  ///< Null when the method takes none.
  bool answeredFirst = false;                           ///< ATK's bridge answers, then acts.
};

class PendingActions {
 public:
  /// `bus` is kept and outlives this.
  explicit PendingActions(Bus& bus) : bus_(bus) {}
  PendingActions(const PendingActions&) = delete;
  PendingActions& operator=(const PendingActions&) = delete;
  /// Connections that an application may be inside of are kept open by processes of their own.
  ~PendingActions();

  /// Sends the request and waits until it is answered; where the answer comes before the action,
  /// also until the application answers other requests again. Waits until the deadline at most.
  /// `pending` also when the application, or its connection, ended before it answered: a handler
  /// may do just that.
  [[nodiscard]] Performed perform(const ObjectHandle& object, Toolkit toolkit,
                                  const ActionRequest& request, Instant deadline);

  /// The same within one messaging time-out; true when the application reports success. Setting a
  /// value or the focus runs handlers as a press does: one may open a dialog and wait in it.
  [[nodiscard]] bool performWithinTimeout(const ObjectHandle& object, Toolkit toolkit,
                                          const ActionRequest& request);

  /// Whether a process is inside a request to ATK's bridge that came over the bus, because it
  /// offered no other connection. Costs no round trip.
  [[nodiscard]] bool isEndangeredByKeys(Pid pid);

 private:
  enum class Answer { absent, yes, no, lost };

  struct PendingAction {
    Pid pid = 0;
    int generation = 0;
    bool answeredFirst = false;
    Instant since = kDistantPast;
    std::vector<Ref> windowsBefore;
    BusHandle peer;  ///< The request's own connection; null when it went over the bus.
    ConnectionKeeper keeper;
    Slot call;
    Slot probe;
    Answer answer = Answer::absent;
    bool hasReturned = false;  ///< The application answers other requests again, or has ended.
    std::vector<Ref> windowsAfter;
  };

  static int onAnswer(sd_bus_message* reply, void* action, sd_bus_error* error);
  static int onWindows(sd_bus_message* reply, void* action, sd_bus_error* error);
  [[nodiscard]] bool prepare(PendingAction& action, const ObjectHandle& object, Instant deadline);
  [[nodiscard]] bool send(PendingAction& action, const ObjectHandle& object,
                          const ActionRequest& request);
  void awaitAnswer(PendingAction& action, Instant deadline);
  void awaitReturn(PendingAction& action, const ObjectHandle& object, Instant deadline);
  [[nodiscard]] bool isFinished(const PendingAction& action) const;
  void processReplies();
  void closeFinished(Pid pid, const std::vector<Ref>& windows);

  Bus& bus_;
  std::list<PendingAction> actions_;
};

}  // namespace tarqo::lnx::atspi
