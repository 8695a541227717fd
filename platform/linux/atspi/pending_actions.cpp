#include "platform/linux/atspi/pending_actions.h"

#include <algorithm>
#include <string>
#include <string_view>

#include "platform/linux/atspi/wire/codec.h"

namespace tarqo::lnx::atspi {
namespace {

using std::chrono::duration_cast;
using std::chrono::microseconds;

/// Within this nearly every application is done. For the others a process is made that keeps the
/// connection.
constexpr auto kUsual = std::chrono::milliseconds(30);

/// How long a connection is kept open at least: a handler may serve the bus before it opens its
/// window.
constexpr auto kRest = std::chrono::seconds(2);

/// What stands in for an answer when the application or the connection ended.
constexpr std::string_view kNoReply = "org.freedesktop.DBus.Error.NoReply";

bool usesAtkBridge(Toolkit toolkit) { return toolkit != Toolkit::gtk4 && toolkit != Toolkit::qt; }

/// The answer to setting a property is empty.
bool isYes(sd_bus_message* reply) {
  return sd_bus_message_is_empty(reply) > 0 || readBool(reply).value_or(false);
}

bool includesAll(const std::vector<Ref>& all, const std::vector<Ref>& some) {
  return std::ranges::all_of(
      some, [&all](const Ref& ref) { return std::ranges::find(all, ref) != all.end(); });
}

/// Serves a connection until `done`, the deadline, or its end.
template <typename Condition>
void serve(sd_bus* bus, Instant deadline, Clock& clock, Condition done) {
  while (!done()) {
    const int processed = bus == nullptr ? -1 : sd_bus_process(bus, nullptr);
    const Instant now = clock.now();
    if (processed < 0 || now >= deadline) {
      return;
    }
    if (processed == 0) {
      const auto left = duration_cast<microseconds>(deadline - now);
      sd_bus_wait(bus, static_cast<std::uint64_t>(left.count()) + 1);
    }
  }
}

/// Without a time limit: what sd-bus makes up for an answer that is late must not pass for one.
template <typename PendingAction>
bool sendAsync(sd_bus* bus, sd_bus_message* message, Slot& slot, sd_bus_message_handler_t handler,
               PendingAction* action) {
  sd_bus_slot* made = nullptr;
  const int sent = sd_bus_call_async(bus, &made, message, handler, action, UINT64_MAX);
  slot.reset(made);
  return sent >= 0;
}

/// Takes in what has arrived.
void drain(sd_bus* bus) {
  while (bus != nullptr && sd_bus_process(bus, nullptr) > 0) {
  }
}

}  // namespace

PendingActions::~PendingActions() {
  for (PendingAction& action : actions_) {
    action.keeper.abandon();
  }
}

int PendingActions::onAnswer(sd_bus_message* reply, void* pending, sd_bus_error* /*error*/) {
  Answer& answer = static_cast<PendingAction*>(pending)->answer;
  if (const sd_bus_error* error = sd_bus_message_get_error(reply)) {
    answer = error->name == kNoReply ? Answer::lost : Answer::no;
  } else {
    answer = isYes(reply) ? Answer::yes : Answer::no;
  }
  return 1;
}

int PendingActions::onWindows(sd_bus_message* reply, void* pending, sd_bus_error* /*error*/) {
  auto* action = static_cast<PendingAction*>(pending);
  action->hasReturned = true;  // An application that has ended is out of the request as well.
  action->windowsAfter = readRefs(reply).value_or(std::vector<Ref>());
  return 1;
}

/// Reads which windows there are before the request, and opens its connection. False when the
/// application does not answer. For one that offers no connection the bus is used.
bool PendingActions::prepare(PendingAction& action, const ObjectHandle& object, Instant deadline) {
  std::string address;
  Batch batch(bus_);
  const Ref root{object.ref.bus, kRootPath};
  batch.call(root, kApplication, "GetApplicationBusAddress", [&address](Reply reply) {
    address = (reply.ok ? readText(reply.message) : std::nullopt).value_or("");
  });
  batch.call(root, kAccessible, "GetChildren", [&action](Reply reply) {
    action.windowsBefore =
        (reply.ok ? readRefs(reply.message) : std::nullopt).value_or(std::vector<Ref>());
  });
  if (batch.run({deadline, object.timeout}) != BatchOutcome::complete) {
    return false;
  }
  closeFinished(object.pid, action.windowsBefore);
  action.peer = openPeerConnection({std::move(address), object.pid});
  return !action.peer ||
         becomesReady(action.peer.get(), deadline - bus_.clock().now(), bus_.clock());
}

bool PendingActions::send(PendingAction& action, const ObjectHandle& object,
                          const ActionRequest& request) {
  sd_bus* bus = action.peer ? action.peer.get() : bus_.connection();
  action.generation = bus_.generation();
  action.answeredFirst = request.answeredFirst;
  action.since = bus_.clock().now();
  if (bus == nullptr) {
    return false;
  }
  const Message message =
      newCall(bus, {action.peer ? nullptr : object.ref.bus.c_str(), object.ref.path.c_str(),
                    request.method.interface, request.method.name});
  if (!message) {
    return false;
  }
  if (request.writeArguments) {
    request.writeArguments(message.get());
  }
  return sendAsync(bus, message.get(), action.call, onAnswer, &action);
}

void PendingActions::awaitAnswer(PendingAction& action, Instant deadline) {
  serve(action.peer ? action.peer.get() : bus_.current(), deadline, bus_.clock(),
        [&action] { return action.answer != Answer::absent; });
}

/// Waits until the application answers the probe that was sent after its answer to the request.
void PendingActions::awaitReturn(PendingAction& action, const ObjectHandle& object,
                                 Instant deadline) {
  const Instant usual = std::min(bus_.clock().now() + kUsual, deadline);
  const auto hasReturned = [&action] { return action.hasReturned; };
  Batch batch(bus_);
  const Message probe = batch.make({object.ref.bus, kRootPath}, kAccessible, "GetChildren");
  if (probe && sendAsync(bus_.current(), probe.get(), action.probe, onWindows, &action)) {
    serve(bus_.current(), usual, bus_.clock(), hasReturned);
  }
  if (action.peer &&
      !(action.hasReturned && includesAll(action.windowsBefore, action.windowsAfter))) {
    action.keeper.keep(sd_bus_get_fd(action.peer.get()));
  }
  serve(bus_.current(), deadline, bus_.clock(), hasReturned);
}

Performed PendingActions::perform(const ObjectHandle& object, Toolkit toolkit,
                                  const ActionRequest& request, Instant deadline) {
  processReplies();
  PendingAction& action = actions_.emplace_back();
  action.pid = object.pid;
  const bool bridged = usesAtkBridge(toolkit);
  if ((bridged && !prepare(action, object, deadline)) || !send(action, object, request)) {
    actions_.pop_back();
    return Performed::refused;
  }
  awaitAnswer(action, std::min(bus_.clock().now() + kUsual, deadline));
  if (action.answer == Answer::absent && action.peer) {
    action.keeper.keep(sd_bus_get_fd(action.peer.get()));
  }
  awaitAnswer(action, deadline);
  const bool mayHaveBegun = bridged && request.answeredFirst && action.answer == Answer::yes;
  if (mayHaveBegun) {
    awaitReturn(action, object, deadline);
  }
  const Answer answer = mayHaveBegun && !action.hasReturned ? Answer::absent : action.answer;
  if (!bridged || isFinished(action)) {
    actions_.pop_back();
  }
  switch (answer) {
    case Answer::yes:
      return Performed::acknowledged;
    case Answer::no:
      return Performed::refused;
    case Answer::absent:
    case Answer::lost:
      break;
  }
  return Performed::pending;
}

bool PendingActions::performWithinTimeout(const ObjectHandle& object, Toolkit toolkit,
                                          const ActionRequest& request) {
  return perform(object, toolkit, request, bus_.clock().now() + object.timeout) ==
         Performed::acknowledged;
}

/// Whether nothing more is expected of a request, except what only the application's windows show.
bool PendingActions::isFinished(const PendingAction& action) const {
  const bool isCut =
      action.peer ? sd_bus_is_open(action.peer.get()) <= 0 : action.generation != bus_.generation();
  const bool isDone =
      action.answer != Answer::absent && !(action.answeredFirst && action.answer == Answer::yes);
  return isCut || isDone || (!action.peer && action.hasReturned);
}

void PendingActions::processReplies() {
  if (!actions_.empty()) {
    drain(bus_.current());
  }
  std::erase_if(actions_, [this](const PendingAction& action) {
    drain(action.peer.get());
    return isFinished(action);
  });
}

/// Closes the connections of requests that an application with these windows is out of.
void PendingActions::closeFinished(Pid pid, const std::vector<Ref>& windows) {
  const Instant now = bus_.clock().now();
  std::erase_if(actions_, [&](const PendingAction& action) {
    return action.pid == pid && action.answer == Answer::yes && now - action.since > kRest &&
           includesAll(action.windowsBefore, windows);
  });
}

bool PendingActions::isEndangeredByKeys(Pid pid) {
  processReplies();
  return std::ranges::any_of(
      actions_, [pid](const PendingAction& action) { return action.pid == pid && !action.peer; });
}

}  // namespace tarqo::lnx::atspi
