// The login session: locked or not, by the session manager of the system and by the screen saver of
// the desktop.
#pragma once

#include <optional>

#include "platform/clock.h"
#include "platform/linux/base/backoff.h"
#include "platform/linux/base/sd_bus.h"
#include "platform/linux/linux_clock.h"
#include "platform/window_server.h"

namespace tarqo::lnx {

/// A service on a bus that may well not exist, or be too busy to answer. A failure is followed by a
/// pause in which it is not called, so that it costs nothing. Worker thread only.
class OptionalService {
 public:
  enum class Bus { system, session };

  /// `clock` is kept and outlives this.
  OptionalService(Bus bus, Clock& clock) : clock_(clock), kind_(bus) {}

  /// Calls a method with two texts, or without arguments when the first is null. Waits for the
  /// answer for at most 0.1 s; for the first answer 1 s, since no earlier one can stand in for it.
  /// Null when there is no answer in time, and during the pause after a failure. Starts no service
  /// that does not run.
  [[nodiscard]] Message call(const MethodCall& method, const char* text1 = nullptr,
                             const char* text2 = nullptr);

  /// Whether the service was too slow when it was last called.
  [[nodiscard]] bool isBusy() const { return state_ == State::busy; }

  /// Whether it is too slow and never answered, nor was known to be absent.
  [[nodiscard]] bool hasNeverAnswered() const { return isBusy() && !hasAnswered_; }

 private:
  enum class State { unknown, answering, absent, busy };

  [[nodiscard]] sd_bus* connection();
  [[nodiscard]] Duration patience() const;
  void note(int result);

  Clock& clock_;
  Bus kind_;
  BusHandle bus_;
  State state_ = State::unknown;
  bool hasAnswered_ = false;  ///< Or was known to be absent.
  Backoff afterFailure_;
};

class LinuxLoginSession {
 public:
  /// On the clock of the system.
  LinuxLoginSession();

  /// `clock` is kept and outlives this.
  explicit LinuxLoginSession(Clock& clock);
  LinuxLoginSession(const LinuxLoginSession&) = delete;
  LinuxLoginSession& operator=(const LinuxLoginSession&) = delete;

  /// Waits for each service for at most 0.1 s a call, 1 s before its first answer. An absent one is
  /// passed over. For one that is too busy its last answer stands; without one the desktop counts
  /// as locked.
  [[nodiscard]] LoginSession read();

 private:
  /// Both are empty when the service is absent or does not answer in time.
  [[nodiscard]] std::optional<LoginSession> readLoginManager();
  [[nodiscard]] std::optional<bool> readScreenSaver();

  LinuxClock systemClock_;
  OptionalService loginManager_;
  OptionalService screenSaver_;
  std::optional<LoginSession> lastLogin_;
  std::optional<bool> lastCovered_;
};

}  // namespace tarqo::lnx
