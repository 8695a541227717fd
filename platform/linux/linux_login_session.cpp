#include "platform/linux/linux_login_session.h"

#include <cstdint>

#include "platform/linux/bus_readiness.h"

namespace tarqo::lnx {
namespace {

constexpr std::chrono::seconds kAbsenceRemembered{5};
constexpr std::chrono::microseconds kAnswerTime{std::chrono::milliseconds{100}};

constexpr const char* kLoginManager = "org.freedesktop.login1";
constexpr const char* kPropertiesInterface = "org.freedesktop.DBus.Properties";

struct DropMessage {
  void operator()(sd_bus_message* message) const { sd_bus_message_unref(message); }
};
using Message = std::unique_ptr<sd_bus_message, DropMessage>;

struct Call {
  const char* service;
  const char* path;
  const char* interface;
  const char* member;
};

/// The reply, perhaps to a call with two texts; null on an error, also when the time is over.
/// Starts no service that does not run yet.
Message callService(sd_bus* bus, const Call& call, const char* text1 = nullptr,
                    const char* text2 = nullptr) {
  sd_bus_message* made = nullptr;
  if (sd_bus_message_new_method_call(bus, &made, call.service, call.path, call.interface,
                                     call.member) < 0) {
    return nullptr;
  }
  const Message request(made);
  sd_bus_message_set_auto_start(made, 0);
  if (text1 != nullptr && sd_bus_message_append(made, "ss", text1, text2) < 0) {
    return nullptr;
  }
  sd_bus_message* reply = nullptr;
  if (sd_bus_call(bus, made, static_cast<std::uint64_t>(kAnswerTime.count()), nullptr, &reply) <
      0) {
    return nullptr;
  }
  return Message(reply);
}

Message readProperty(sd_bus* bus, const char* path, const char* interface, const char* property) {
  return callService(bus, {kLoginManager, path, kPropertiesInterface, "Get"}, interface, property);
}

std::optional<bool> readFlag(sd_bus* bus, const std::string& session, const char* property) {
  const Message reply =
      readProperty(bus, session.c_str(), "org.freedesktop.login1.Session", property);
  int value = 0;
  if (!reply || sd_bus_message_read(reply.get(), "v", "b", &value) < 0) {
    return std::nullopt;
  }
  return value != 0;
}

}  // namespace

sd_bus* OptionalService::bus() {
  if (absentSince_ && std::chrono::steady_clock::now() - *absentSince_ < kAbsenceRemembered) {
    return nullptr;
  }
  absentSince_.reset();
  if (!bus_) {
    sd_bus* opened = nullptr;
    const int result =
        kind_ == Bus::system ? sd_bus_open_system(&opened) : sd_bus_open_user(&opened);
    bus_.reset(opened);
    if (result < 0 || !becomesReady(opened, kAnswerTime)) {
      wasAbsent();
    }
  }
  return bus_.get();
}

void OptionalService::wasAbsent() {
  bus_.reset();
  absentSince_ = std::chrono::steady_clock::now();
}

std::string LinuxLoginSession::sessionPath(sd_bus* bus) {
  // Not the helper's own session, which may be that of a remote shell, or none at all.
  const Message reply = readProperty(bus, "/org/freedesktop/login1/user/self",
                                     "org.freedesktop.login1.User", "Display");
  const char* name = nullptr;
  const char* path = nullptr;
  if (!reply || sd_bus_message_read(reply.get(), "v", "(so)", &name, &path) < 0 || *name == '\0') {
    return {};
  }
  return path;
}

LoginSession LinuxLoginSession::readLoginManager() {
  LoginSession session;
  sd_bus* bus = loginManager_.bus();
  if (bus == nullptr) {
    return session;
  }
  const std::string path = sessionPath(bus);
  if (path.empty()) {
    loginManager_.wasAbsent();
    return session;
  }
  session.locked = readFlag(bus, path, "LockedHint");
  session.onConsole = readFlag(bus, path, "Active");
  return session;
}

std::optional<bool> LinuxLoginSession::readScreenSaver() {
  sd_bus* bus = screenSaver_.bus();
  if (bus == nullptr) {
    return std::nullopt;
  }
  const Message reply =
      callService(bus, {"org.freedesktop.ScreenSaver", "/org/freedesktop/ScreenSaver",
                        "org.freedesktop.ScreenSaver", "GetActive"});
  int active = 0;
  if (!reply || sd_bus_message_read(reply.get(), "b", &active) < 0) {
    screenSaver_.wasAbsent();
    return std::nullopt;
  }
  return active != 0;
}

LoginSession LinuxLoginSession::read() {
  LoginSession session = readLoginManager();
  // Either may know of a lock that the other was not told of.
  if (const auto covered = readScreenSaver()) {
    session.locked = *covered || session.locked.value_or(false);
  }
  return session;
}

}  // namespace tarqo::lnx
