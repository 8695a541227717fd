// The signals that ask a process to end, kept waiting while it has something to put back.
#pragma once

#include <array>
#include <csignal>

namespace tarqo::lnx {

/// While one lives, SIGTERM, SIGINT and SIGHUP are only remembered, unless they are ignored or
/// handled already. Its destructor ends the process by the one that came, if one did. At most one
/// may live at a time.
class EndingSignals {
 public:
  EndingSignals();
  ~EndingSignals();
  EndingSignals(const EndingSignals&) = delete;
  EndingSignals& operator=(const EndingSignals&) = delete;

  /// Whether one has come, and the process should put back what it can and go.
  [[nodiscard]] static bool pending();

 private:
  static constexpr std::array kSignals{SIGTERM, SIGINT, SIGHUP};

  std::array<bool, kSignals.size()> taken_{};
};

}  // namespace tarqo::lnx
