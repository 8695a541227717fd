#include "platform/linux/linux_login_session.h"

#include <cerrno>
#include <cstdint>

#include "platform/linux/base/bus_handles.h"
#include "platform/linux/base/bus_readiness.h"

namespace tarqo::lnx {
namespace {

using SteadyClock = std::chrono::steady_clock;

constexpr std::chrono::seconds kAbsenceRemembered{5};
constexpr std::chrono::milliseconds kBusyLeftAlone{500};
constexpr std::chrono::milliseconds kAnswerTime{100};
constexpr std::chrono::milliseconds kFirstAnswerTime{1000};

constexpr const char* kLoginManager = "org.freedesktop.login1";
constexpr const char* kPropertiesInterface = "org.freedesktop.DBus.Properties";

struct Call {
  const char* service;
  const char* path;
  const char* interface;
  const char* member;
  /// The texts to call it with; null for none.
  const char* text1 = nullptr;
  const char* text2 = nullptr;
};

/// The reply; null when there is none in time, which the service hears of, too. Starts no service
/// that does not run yet.
Message ask(OptionalService& service, sd_bus* bus, const Call& call) {
  sd_bus_message* made = nullptr;
  int result = sd_bus_message_new_method_call(bus, &made, call.service, call.path, call.interface,
                                              call.member);
  const Message request(made);
  if (result >= 0) {
    result = sd_bus_message_set_auto_start(made, 0);
  }
  if (result >= 0 && call.text1 != nullptr) {
    result = sd_bus_message_append(made, "ss", call.text1, call.text2);
  }
  sd_bus_message* reply = nullptr;
  if (result >= 0) {
    result = sd_bus_call(bus, made, static_cast<std::uint64_t>(service.patience().count()), nullptr,
                         &reply);
  }
  service.heard(result);
  return Message(result >= 0 ? reply : nullptr);
}

Call readOf(const char* path, const char* interface, const char* property) {
  return {kLoginManager, path, kPropertiesInterface, "Get", interface, property};
}

/// A property of a session; none when it does not tell.
std::optional<bool> readFlag(OptionalService& service, sd_bus* bus, const std::string& session,
                             const char* property) {
  const Message reply =
      ask(service, bus, readOf(session.c_str(), "org.freedesktop.login1.Session", property));
  int value = 0;
  if (!reply || sd_bus_message_read(reply.get(), "v", "b", &value) < 0) {
    return std::nullopt;
  }
  return value != 0;
}

/// The object of the session that shows the user's desktop; empty when there is none.
std::string sessionPath(OptionalService& service, sd_bus* bus) {
  // Not the helper's own session, which may be that of a remote shell, or none at all.
  const Message reply =
      ask(service, bus,
          readOf("/org/freedesktop/login1/user/self", "org.freedesktop.login1.User", "Display"));
  const char* name = nullptr;
  const char* path = nullptr;
  if (!reply || sd_bus_message_read(reply.get(), "v", "(so)", &name, &path) < 0 || *name == '\0') {
    return {};
  }
  return path;
}

}  // namespace

sd_bus* OptionalService::bus() {
  if (SteadyClock::now() < leftAloneUntil_) {
    return nullptr;
  }
  if (!bus_) {
    sd_bus* opened = nullptr;
    const int result =
        kind_ == Bus::system ? sd_bus_open_system(&opened) : sd_bus_open_user(&opened);
    bus_.reset(opened);
    if (result < 0 || !becomesReady(opened, patience())) {
      heard(-ENOTCONN);
    }
  }
  return bus_.get();
}

std::chrono::microseconds OptionalService::patience() const {
  return state_ == State::unknown ? kFirstAnswerTime : kAnswerTime;
}

void OptionalService::heard(int result) {
  hasTold_ = hasTold_ || result != -ETIMEDOUT;
  if (result >= 0) {
    state_ = State::answering;
  } else if (result == -ETIMEDOUT) {
    state_ = State::busy;
    leftAloneUntil_ = SteadyClock::now() + kBusyLeftAlone;
  } else {
    state_ = State::absent;
    leftAloneUntil_ = SteadyClock::now() + kAbsenceRemembered;
    bus_.reset();
  }
}

std::optional<LoginSession> LinuxLoginSession::askLoginManager() {
  sd_bus* bus = loginManager_.bus();
  if (bus == nullptr) {
    return std::nullopt;
  }
  const std::string path = sessionPath(loginManager_, bus);
  const auto locked =
      path.empty() ? std::nullopt : readFlag(loginManager_, bus, path, "LockedHint");
  if (!locked) {
    return std::nullopt;
  }
  LoginSession session = lastLogin_.value_or(LoginSession{});
  session.locked = locked;
  if (const auto active = readFlag(loginManager_, bus, path, "Active")) {
    session.onConsole = active;
  }
  return session;
}

std::optional<bool> LinuxLoginSession::askScreenSaver() {
  sd_bus* bus = screenSaver_.bus();
  if (bus == nullptr) {
    return std::nullopt;
  }
  const Message reply = ask(screenSaver_, bus,
                            {"org.freedesktop.ScreenSaver", "/org/freedesktop/ScreenSaver",
                             "org.freedesktop.ScreenSaver", "GetActive"});
  int active = 0;
  if (!reply || sd_bus_message_read(reply.get(), "b", &active) < 0) {
    return std::nullopt;
  }
  return active != 0;
}

LoginSession LinuxLoginSession::read() {
  if (const auto told = askLoginManager(); told || !loginManager_.isBusy()) {
    lastLogin_ = told;
  }
  if (const auto told = askScreenSaver(); told || !screenSaver_.isBusy()) {
    lastCovered_ = told;
  }
  LoginSession session = lastLogin_.value_or(LoginSession{});
  const bool untold = loginManager_.neverTold() || screenSaver_.neverTold();
  // Either may know of a lock that the other was not told of.
  if (lastCovered_ || untold) {
    session.locked = untold || lastCovered_.value_or(false) || session.locked.value_or(false);
  }
  return session;
}

}  // namespace tarqo::lnx
