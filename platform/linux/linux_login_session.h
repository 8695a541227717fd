// The login session: locked or not, by the session manager of the system and by the screen saver of
// the desktop.
#pragma once

#include <systemd/sd-bus.h>

#include <chrono>
#include <memory>
#include <optional>
#include <string>

#include "platform/window_server.h"

namespace tarqo::lnx {

struct CloseBus {
  void operator()(sd_bus* bus) const { sd_bus_close_unref(bus); }
};

/// A service on a bus that may well not exist. A missing one costs nothing: it is not asked again
/// for some seconds. Worker thread only.
class OptionalService {
 public:
  enum class Bus { system, session };

  explicit OptionalService(Bus bus) : kind_(bus) {}

  /// The bus to ask the service on; null while the service is known to be absent.
  [[nodiscard]] sd_bus* bus();

  /// Remembers that the service did not answer.
  void wasAbsent();

 private:
  Bus kind_;
  std::unique_ptr<sd_bus, CloseBus> bus_;
  std::optional<std::chrono::steady_clock::time_point> absentSince_;
};

class LinuxLoginSession {
 public:
  /// Each service is waited for at most 0.1 s a call; one that does not answer tells nothing.
  [[nodiscard]] LoginSession read();

 private:
  /// The object of the session that shows the user's desktop; empty when there is none.
  [[nodiscard]] std::string sessionPath(sd_bus* bus);
  [[nodiscard]] LoginSession readLoginManager();
  [[nodiscard]] std::optional<bool> readScreenSaver();

  OptionalService loginManager_{OptionalService::Bus::system};
  OptionalService screenSaver_{OptionalService::Bus::session};
};

}  // namespace tarqo::lnx
