#include "platform/linux/linux_permissions.h"

#include <utility>

#include "platform/linux/base/bus_readiness.h"

namespace tarqo::lnx {
namespace {

constexpr const char* kService = "org.a11y.Bus";
constexpr const char* kPath = "/org/a11y/bus";
constexpr const char* kStatus = "org.a11y.Status";
constexpr const char* kSwitch = "IsEnabled";
constexpr std::uint64_t kAnswerMicroseconds = 500'000;

BusHandle sessionBus() {
  sd_bus* opened = nullptr;
  if (sd_bus_open_user(&opened) < 0) {
    return nullptr;
  }
  BusHandle bus(opened);
  sd_bus_set_method_call_timeout(opened, kAnswerMicroseconds);
  return becomesReady(opened, std::chrono::microseconds(kAnswerMicroseconds)) ? std::move(bus)
                                                                              : nullptr;
}

bool isSwitchedOn() {
  const BusHandle bus = sessionBus();
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
    sd_bus_message* asked = nullptr;
    if (sd_bus_message_new_method_call(bus, &asked, "org.freedesktop.DBus", "/org/freedesktop/DBus",
                                       "org.freedesktop.DBus.Peer", "Ping") < 0) {
      return false;
    }
    const Message call(asked);
    sd_bus_message* answered = nullptr;
    const int result = sd_bus_call(bus, asked, kAnswerMicroseconds, nullptr, &answered);
    const Message answer(answered);
    if (result >= 0) {
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
  bool on = isSwitchedOn();
  if (!on && switchedOnIn_ >= 0) {
    promptForAccessibility();  // It was on: the bus has come back without it.
    on = isSwitchedOn();
  }
  if (on) {
    switchedOnIn_ = bus_.generation();
  }
  return on;
}

void LinuxPermissions::promptForAccessibility() {
  if (const BusHandle bus = sessionBus()) {
    sd_bus_set_property(bus.get(), kService, kPath, kStatus, kSwitch, nullptr, "b", 1);
  }
}

std::optional<std::string> LinuxPermissions::accessibilityObstacle() {
  if (!sessionBus()) {
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
