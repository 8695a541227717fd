// Owners of what the D-Bus library hands out.
#pragma once

#include <systemd/sd-bus.h>

#include <memory>

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

}  // namespace tarqo::lnx
