#include "platform/linux/atspi/pending_actions.h"

#include <algorithm>
#include <string>
#include <string_view>

#include "platform/linux/atspi/wire/codec.h"
#include "platform/linux/base/bus_readiness.h"

namespace tarqo::lnx {
namespace {

using std::chrono::duration_cast;
using std::chrono::microseconds;
using std::chrono::steady_clock;

/// Within this nearly every application is done; for the others a process is made that keeps the
/// connection.
constexpr auto kUsual = std::chrono::milliseconds(30);

/// How long a connection is kept open at least: a handler may serve the bus before it opens its
/// window.
constexpr auto kRest = std::chrono::seconds(2);

/// What stands in for an answer when the application or the connection ended.
constexpr std::string_view kNoReply = "org.freedesktop.DBus.Error.NoReply";

bool usesAtkBridge(Toolkit toolkit) { return toolkit != Toolkit::gtk4 && toolkit != Toolkit::qt; }

/// The answer to setting a property is empty.
bool saysYes(sd_bus_message* reply) {
  return sd_bus_message_is_empty(reply) > 0 || readBool(reply).value_or(false);
}

bool includesAll(const std::vector<AtspiRef>& all, const std::vector<AtspiRef>& some) {
  return std::ranges::all_of(
      some, [&all](const AtspiRef& ref) { return std::ranges::find(all, ref) != all.end(); });
}

/// Serves a connection until `done`, the deadline, or its end.
template <typename Condition>
void serve(sd_bus* bus, Instant deadline, Condition done) {
  while (!done()) {
    const int processed = bus == nullptr ? -1 : sd_bus_process(bus, nullptr);
    const Instant now = steady_clock::now();
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
template <typename Debt>
bool sendAsync(sd_bus* bus, sd_bus_message* message, Slot& slot, sd_bus_message_handler_t handler,
               Debt* debt) {
  sd_bus_slot* made = nullptr;
  const int sent = sd_bus_call_async(bus, &made, message, handler, debt, UINT64_MAX);
  slot.reset(made);
  return sent >= 0;
}

/// Takes in what has arrived.
void drain(sd_bus* bus) {
  while (bus != nullptr && sd_bus_process(bus, nullptr) > 0) {
  }
}

}  // namespace

AtspiDebts::~AtspiDebts() {
  for (Debt& debt : debts_) {
    debt.keeper.abandon();
  }
}

int AtspiDebts::onAnswer(sd_bus_message* reply, void* debt, sd_bus_error* /*error*/) {
  Answer& answer = static_cast<Debt*>(debt)->answer;
  if (const sd_bus_error* error = sd_bus_message_get_error(reply)) {
    answer = error->name == kNoReply ? Answer::lost : Answer::no;
  } else {
    answer = saysYes(reply) ? Answer::yes : Answer::no;
  }
  return 1;
}

int AtspiDebts::onWindows(sd_bus_message* reply, void* debt, sd_bus_error* /*error*/) {
  auto* asked = static_cast<Debt*>(debt);
  asked->isBack = true;  // An application that has ended is out of the deed as well.
  asked->windowsAfter = readRefs(reply).value_or(std::vector<AtspiRef>());
  return 1;
}

/// Learns what there is before the deed, and opens its connection. False when the application does
/// not answer. One that offers no connection is asked over the bus.
bool AtspiDebts::prepare(Debt& debt, const AtspiElement::Parts& object, Instant deadline) {
  std::string address;
  AtspiBatch batch(bus_);
  const AtspiRef root{object.ref.bus, kRootPath};
  batch.call(root, kApplication, "GetApplicationBusAddress", [&address](Reply reply) {
    address = (reply.ok ? readText(reply.message) : std::nullopt).value_or("");
  });
  batch.call(root, kAccessible, "GetChildren", [&debt](Reply reply) {
    debt.windowsBefore =
        (reply.ok ? readRefs(reply.message) : std::nullopt).value_or(std::vector<AtspiRef>());
  });
  if (batch.run({deadline, object.timeout}) != BatchOutcome::complete) {
    return false;
  }
  closeOver(object.pid, debt.windowsBefore);
  debt.direct = openApplication({std::move(address), object.pid});
  return !debt.direct || becomesReady(debt.direct.get(),
                                      duration_cast<microseconds>(deadline - steady_clock::now()));
}

bool AtspiDebts::send(Debt& debt, const AtspiElement::Parts& object, const AtspiDeed& deed) {
  sd_bus* bus = debt.direct ? debt.direct.get() : bus_.connection();
  debt.generation = bus_.generation();
  debt.answeredFirst = deed.answeredFirst;
  debt.since = steady_clock::now();
  sd_bus_message* made = nullptr;
  if (bus == nullptr || sd_bus_message_new_method_call(
                            bus, &made, debt.direct ? nullptr : object.ref.bus.c_str(),
                            object.ref.path.c_str(), deed.method.interface, deed.method.name) < 0) {
    return false;
  }
  const Message request(made);
  if (deed.writeArguments) {
    deed.writeArguments(made);
  }
  return sendAsync(bus, made, debt.call, onAnswer, &debt);
}

void AtspiDebts::awaitAnswer(Debt& debt, Instant deadline) {
  serve(debt.direct ? debt.direct.get() : bus_.current(), deadline,
        [&debt] { return debt.answer != Answer::none; });
}

/// Waits until the application answers what was asked after its answer to the deed.
void AtspiDebts::awaitReturn(Debt& debt, const AtspiElement::Parts& object, Instant deadline) {
  const Instant usual = std::min(steady_clock::now() + kUsual, deadline);
  const auto isBack = [&debt] { return debt.isBack; };
  AtspiBatch batch(bus_);
  const Message question = batch.make({object.ref.bus, kRootPath}, kAccessible, "GetChildren");
  if (question && sendAsync(bus_.current(), question.get(), debt.question, onWindows, &debt)) {
    serve(bus_.current(), usual, isBack);
  }
  if (debt.direct && !(debt.isBack && includesAll(debt.windowsBefore, debt.windowsAfter))) {
    debt.keeper.keep(sd_bus_get_fd(debt.direct.get()));
  }
  serve(bus_.current(), deadline, isBack);
}

Performed AtspiDebts::perform(const AtspiElement::Parts& object, Toolkit toolkit,
                              const AtspiDeed& deed, Instant deadline) {
  takeIn();
  Debt& debt = debts_.emplace_back();
  debt.pid = object.pid;
  const bool bridged = usesAtkBridge(toolkit);
  if ((bridged && !prepare(debt, object, deadline)) || !send(debt, object, deed)) {
    debts_.pop_back();
    return Performed::refused;
  }
  awaitAnswer(debt, std::min(steady_clock::now() + kUsual, deadline));
  if (debt.answer == Answer::none && debt.direct) {
    debt.keeper.keep(sd_bus_get_fd(debt.direct.get()));
  }
  awaitAnswer(debt, deadline);
  const bool mayHaveBegun = bridged && deed.answeredFirst && debt.answer == Answer::yes;
  if (mayHaveBegun) {
    awaitReturn(debt, object, deadline);
  }
  const Answer answer = mayHaveBegun && !debt.isBack ? Answer::none : debt.answer;
  if (!bridged || isOver(debt)) {
    debts_.pop_back();
  }
  switch (answer) {
    case Answer::yes:
      return Performed::acknowledged;
    case Answer::no:
      return Performed::refused;
    case Answer::none:
    case Answer::lost:
      break;
  }
  return Performed::pending;
}

bool AtspiDebts::isAccepted(const AtspiElement::Parts& object, Toolkit toolkit,
                            const AtspiDeed& deed) {
  return perform(object, toolkit, deed, steady_clock::now() + object.timeout) ==
         Performed::acknowledged;
}

/// Whether nothing more can come of a deed, but for what only the application's windows tell.
bool AtspiDebts::isOver(const Debt& debt) const {
  const bool isCut =
      debt.direct ? sd_bus_is_open(debt.direct.get()) <= 0 : debt.generation != bus_.generation();
  const bool isDone =
      debt.answer != Answer::none && !(debt.answeredFirst && debt.answer == Answer::yes);
  return isCut || isDone || (!debt.direct && debt.isBack);
}

void AtspiDebts::takeIn() {
  if (!debts_.empty()) {
    drain(bus_.current());
  }
  std::erase_if(debts_, [this](const Debt& debt) {
    drain(debt.direct.get());
    return isOver(debt);
  });
}

/// Closes the connections of deeds that an application with these windows is out of.
void AtspiDebts::closeOver(Pid pid, const std::vector<AtspiRef>& windows) {
  const Instant now = steady_clock::now();
  std::erase_if(debts_, [&](const Debt& debt) {
    return debt.pid == pid && debt.answer == Answer::yes && now - debt.since > kRest &&
           includesAll(debt.windowsBefore, windows);
  });
}

bool AtspiDebts::isEndangeredByKeys(Pid pid) {
  takeIn();
  return std::ranges::any_of(debts_,
                             [pid](const Debt& debt) { return debt.pid == pid && !debt.direct; });
}

}  // namespace tarqo::lnx
