#include "platform/linux/linux_permissions.h"

#include <chrono>
#include <cstdint>
#include <utility>

#include "platform/linux/base/sd_bus.h"

namespace tarqo::lnx {
namespace {

constexpr const char* kService = "org.a11y.Bus";
constexpr const char* kPath = "/org/a11y/bus";
constexpr const char* kStatus = "org.a11y.Status";
constexpr const char* kSwitch = "IsEnabled";
constexpr std::chrono::milliseconds kBusAnswerTime{500};

BusHandle sessionBus(Clock& clock) {
  sd_bus* opened = nullptr;
  if (sd_bus_open_user(&opened) < 0) {
    return nullptr;
  }
  BusHandle bus(opened);
  constexpr auto kLimit = std::chrono::microseconds(kBusAnswerTime).count();
  sd_bus_set_method_call_timeout(opened, static_cast<std::uint64_t>(kLimit));
  return becomesReady(opened, kBusAnswerTime, clock) ? std::move(bus) : nullptr;
}

bool isSwitchedOn(Clock& clock) {
  const BusHandle bus = sessionBus(clock);
  int on = 0;
  return bus &&
         sd_bus_get_property_trivial(bus.get(), kService, kPath, kStatus, kSwitch, nullptr, 'b',
                                     &on) >= 0 &&
         on != 0;
}

}  // namespace

bool LinuxPermissions::busAnswers() {
  for (int attempt = 0; attempt < 2; ++attempt) {  // The connection at hand may have died since.
    sd_bus* bus = bus_.connection();
    if (bus == nullptr) {
      return false;
    }
    const Message call = newCall(bus, {"org.freedesktop.DBus", "/org/freedesktop/DBus",
                                       "org.freedesktop.DBus.Peer", "Ping"});
    if (!call) {
      return false;
    }
    if (callAndWait(bus, call, kBusAnswerTime).code >= 0) {
      return true;
    }
    bus_.drop();
  }
  return false;
}

bool LinuxPermissions::accessibilityTrusted() {
  if (!busAnswers()) {
    return false;
  }
  if (switchedOnIn_ == bus_.generation()) {
    return true;
  }
  bool on = isSwitchedOn(clock_);
  if (!on && switchedOnIn_ >= 0) {
    promptForAccessibility();  // It was on: the bus has come back without it.
    on = isSwitchedOn(clock_);
  }
  if (on) {
    switchedOnIn_ = bus_.generation();
  }
  return on;
}

void LinuxPermissions::promptForAccessibility() {
  if (const BusHandle bus = sessionBus(clock_)) {
    sd_bus_set_property(bus.get(), kService, kPath, kStatus, kSwitch, nullptr, "b", 1);
  }
}

std::optional<std::string> LinuxPermissions::accessibilityObstacle() {
  if (!sessionBus(clock_)) {
    return "There is no D-Bus session to reach applications through. Start this helper inside the "
           "user's desktop session, with DBUS_SESSION_BUS_ADDRESS set, then run again.";
  }
  if (!busAnswers()) {
    return "The accessibility bus of this desktop session does not answer. Install at-spi2-core, "
           "log in to the desktop again, then run again.";
  }
  if (accessibilityTrusted()) {
    return std::nullopt;
  }
  return "Accessibility is switched off in this desktop session and could not be switched on. Set "
         "IsEnabled of org.a11y.Status on the session bus to true, then run again.";
}

}  // namespace tarqo::lnx
