// Owners of what the D-Bus library hands out, and calls on connections that may be stuck.
//
// A connection and its messages belong to one thread.
#pragma once

#include <systemd/sd-bus.h>

#include <memory>

#include "platform/clock.h"

namespace tarqo::lnx {

struct BusUnref {
  void operator()(sd_bus* bus) const { sd_bus_close_unref(bus); }
};
struct MessageUnref {
  void operator()(sd_bus_message* message) const { sd_bus_message_unref(message); }
};
struct SlotUnref {
  void operator()(sd_bus_slot* slot) const { sd_bus_slot_unref(slot); }
};
using BusHandle = std::unique_ptr<sd_bus, BusUnref>;
using Message = std::unique_ptr<sd_bus_message, MessageUnref>;
using Slot = std::unique_ptr<sd_bus_slot, SlotUnref>;

/// Waits, with a limit, until a new D-Bus connection is ready for calls; false when it fails or
/// `limit` has passed. Without this the first call would wait for a stuck bus for 90 s, sd-bus's
/// own limit, although the call has a shorter one.
[[nodiscard]] bool becomesReady(sd_bus* bus, Duration limit, Clock& clock);

/// A method of an object. `service` is null on a connection without a bus.
struct MethodCall {
  const char* service;
  const char* path;
  const char* interface;
  const char* member;
};

/// A call to be filled with arguments; null when the connection cannot make one.
[[nodiscard]] Message newCall(sd_bus* bus, const MethodCall& call);

/// What came of a call, as sd-bus reports it: negative for an error answer and when no answer came
/// in time.
struct CallResult {
  int code = 0;
  Message reply;  ///< Null when `code` is negative.
};

/// Sends a call, which is not null, and waits for its answer.
[[nodiscard]] CallResult callAndWait(sd_bus* bus, const Message& call, Duration limit);

}  // namespace tarqo::lnx
