#include "platform/linux/base/sd_bus.h"

#include <algorithm>
#include <chrono>
#include <cstdint>

namespace tarqo::lnx {
namespace {

using std::chrono::duration_cast;
using std::chrono::microseconds;

}  // namespace

bool becomesReady(sd_bus* bus, Duration limit, Clock& clock) {
  const Instant deadline = clock.now() + limit;
  while (sd_bus_is_ready(bus) == 0) {
    const auto left = duration_cast<microseconds>(deadline - clock.now());
    const int progress = sd_bus_process(bus, nullptr);
    if (progress < 0 || left.count() <= 0) {
      return false;
    }
    if (progress == 0 && sd_bus_wait(bus, static_cast<std::uint64_t>(left.count())) < 0) {
      return false;
    }
  }
  return sd_bus_is_ready(bus) > 0;
}

Message newCall(sd_bus* bus, const MethodCall& call) {
  sd_bus_message* made = nullptr;
  if (sd_bus_message_new_method_call(bus, &made, call.service, call.path, call.interface,
                                     call.member) < 0) {
    return nullptr;
  }
  return Message(made);
}

CallResult callAndWait(sd_bus* bus, const Message& call, Duration limit) {
  // sd-bus takes zero for no limit.
  const auto left = std::max(duration_cast<microseconds>(limit), microseconds(1));
  sd_bus_message* reply = nullptr;
  const int code =
      sd_bus_call(bus, call.get(), static_cast<std::uint64_t>(left.count()), nullptr, &reply);
  return {code, Message(reply)};
}

}  // namespace tarqo::lnx
