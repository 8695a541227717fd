#include "platform/linux/linux_login_session.h"

#include <cerrno>
#include <chrono>
#include <string>
#include <utility>

namespace tarqo::lnx {
namespace {

constexpr std::chrono::seconds kAbsenceRest{5};
constexpr std::chrono::milliseconds kBusyRest{500};
constexpr std::chrono::milliseconds kAnswerTime{100};
constexpr std::chrono::milliseconds kFirstAnswerTime{1000};

Message readProperty(OptionalService& service, const char* path, const char* interface,
                     const char* property) {
  return service.call({"org.freedesktop.login1", path, "org.freedesktop.DBus.Properties", "Get"},
                      interface, property);
}

/// A property of a session; empty when the service does not answer.
std::optional<bool> readFlag(OptionalService& service, const std::string& session,
                             const char* property) {
  const Message reply =
      readProperty(service, session.c_str(), "org.freedesktop.login1.Session", property);
  int value = 0;
  if (!reply || sd_bus_message_read(reply.get(), "v", "b", &value) < 0) {
    return std::nullopt;
  }
  return value != 0;
}

/// The object of the session that shows the user's desktop; empty when there is no such session.
std::string sessionPath(OptionalService& service) {
  // Not the helper's own session: that may be a remote shell's, or the helper may be in no session.
  const Message reply = readProperty(service, "/org/freedesktop/login1/user/self",
                                     "org.freedesktop.login1.User", "Display");
  const char* name = nullptr;
  const char* path = nullptr;
  if (!reply || sd_bus_message_read(reply.get(), "v", "(so)", &name, &path) < 0 || *name == '\0') {
    return {};
  }
  return path;
}

}  // namespace

sd_bus* OptionalService::connection() {
  if (afterFailure_.isRunning(clock_.now())) {
    return nullptr;
  }
  if (!bus_) {
    sd_bus* opened = nullptr;
    const int result =
        kind_ == Bus::system ? sd_bus_open_system(&opened) : sd_bus_open_user(&opened);
    bus_.reset(opened);
    if (result < 0 || !becomesReady(opened, patience(), clock_)) {
      note(-ENOTCONN);
    }
  }
  return bus_.get();
}

Message OptionalService::call(const MethodCall& method, const char* text1, const char* text2) {
  sd_bus* bus = connection();
  if (bus == nullptr) {
    return nullptr;
  }
  const Message message = newCall(bus, method);
  int result = message ? sd_bus_message_set_auto_start(message.get(), 0) : -ENOMEM;
  if (result >= 0 && text1 != nullptr) {
    result = sd_bus_message_append(message.get(), "ss", text1, text2);
  }
  CallResult answer{result, nullptr};
  if (result >= 0) {
    answer = callAndWait(bus, message, patience());
  }
  note(answer.code);
  return std::move(answer.reply);
}

Duration OptionalService::patience() const {
  return state_ == State::unknown ? kFirstAnswerTime : kAnswerTime;
}

/// Remembers what came of a call, as sd-bus reports it: an answer (0 or more), that the time was
/// over, or that nobody can answer.
void OptionalService::note(int result) {
  hasAnswered_ = hasAnswered_ || result != -ETIMEDOUT;
  if (result >= 0) {
    state_ = State::answering;
  } else if (result == -ETIMEDOUT) {
    state_ = State::busy;
    afterFailure_.start(clock_.now(), kBusyRest);
  } else {
    state_ = State::absent;
    afterFailure_.start(clock_.now(), kAbsenceRest);
    bus_.reset();
  }
}

LinuxLoginSession::LinuxLoginSession()
    : loginManager_(OptionalService::Bus::system, systemClock_),
      screenSaver_(OptionalService::Bus::session, systemClock_) {}

LinuxLoginSession::LinuxLoginSession(Clock& clock)
    : loginManager_(OptionalService::Bus::system, clock),
      screenSaver_(OptionalService::Bus::session, clock) {}

std::optional<LoginSession> LinuxLoginSession::readLoginManager() {
  const std::string path = sessionPath(loginManager_);
  const auto locked = path.empty() ? std::nullopt : readFlag(loginManager_, path, "LockedHint");
  if (!locked) {
    return std::nullopt;
  }
  LoginSession session = lastLogin_.value_or(LoginSession{});
  session.locked = locked;
  if (const auto active = readFlag(loginManager_, path, "Active")) {
    session.onConsole = active;
  }
  return session;
}

std::optional<bool> LinuxLoginSession::readScreenSaver() {
  const Message reply =
      screenSaver_.call({"org.freedesktop.ScreenSaver", "/org/freedesktop/ScreenSaver",
                         "org.freedesktop.ScreenSaver", "GetActive"});
  int active = 0;
  if (!reply || sd_bus_message_read(reply.get(), "b", &active) < 0) {
    return std::nullopt;
  }
  return active != 0;
}

LoginSession LinuxLoginSession::read() {
  if (const auto login = readLoginManager(); login || !loginManager_.isBusy()) {
    lastLogin_ = login;
  }
  if (const auto covered = readScreenSaver(); covered || !screenSaver_.isBusy()) {
    lastCovered_ = covered;
  }
  LoginSession session = lastLogin_.value_or(LoginSession{});
  const bool isUnknown = loginManager_.hasNeverAnswered() || screenSaver_.hasNeverAnswered();
  // Either may know of a lock that the other does not report.
  if (lastCovered_ || isUnknown) {
    session.locked = isUnknown || lastCovered_.value_or(false) || session.locked.value_or(false);
  }
  return session;
}

}  // namespace tarqo::lnx
