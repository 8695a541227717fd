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

/// A service on a bus that may well not exist, or be too busy to answer. One that does not answer
/// is left alone for a while, so that it costs nothing. Worker thread only.
class OptionalService {
 public:
  enum class Bus { system, session };

  explicit OptionalService(Bus bus) : kind_(bus) {}

  /// The bus to ask the service on; null while the service is left alone.
  [[nodiscard]] sd_bus* bus();

  /// How long to wait for an answer: longer for the first one, since there is none to fall back on.
  [[nodiscard]] std::chrono::microseconds patience() const;

  /// Remembers what came of a question, as sd-bus reports it: an answer (0 or more), that the time
  /// was over, or that there is nobody who could answer.
  void heard(int result);

  /// Whether the service was too slow when it was last asked.
  [[nodiscard]] bool isBusy() const { return state_ == State::busy; }

  /// Whether it is too slow and was never seen to answer, nor known to be absent.
  [[nodiscard]] bool neverTold() const { return isBusy() && !hasTold_; }

 private:
  enum class State { unknown, answering, absent, busy };

  Bus kind_;
  std::unique_ptr<sd_bus, CloseBus> bus_;
  State state_ = State::unknown;
  bool hasTold_ = false;
  std::chrono::steady_clock::time_point leftAloneUntil_;
};

class LinuxLoginSession {
 public:
  /// Each service is waited for at most 0.1 s a call, 1 s before its first answer. An absent one
  /// tells nothing. One that is too busy stands by its last answer; the desktop counts as locked
  /// when it has given none.
  [[nodiscard]] LoginSession read();

 private:
  /// None when the service does not tell in time, or is absent.
  [[nodiscard]] std::optional<LoginSession> askLoginManager();
  [[nodiscard]] std::optional<bool> askScreenSaver();

  OptionalService loginManager_{OptionalService::Bus::system};
  OptionalService screenSaver_{OptionalService::Bus::session};
  std::optional<LoginSession> lastLogin_;
  std::optional<bool> lastCovered_;
};

}  // namespace tarqo::lnx
