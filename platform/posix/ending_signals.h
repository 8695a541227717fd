// The signals that ask a process to end, kept waiting while it has something to put back.
#pragma once

namespace tarqo {

/// While one lives, SIGTERM, SIGINT and SIGHUP are only remembered, unless they are ignored or
/// handled already. Several may live at once, all of one thread: the destructor of the last ends
/// the process by the signal that came, if one did.
class EndingSignals {
 public:
  EndingSignals();
  ~EndingSignals();
  EndingSignals(const EndingSignals&) = delete;
  EndingSignals& operator=(const EndingSignals&) = delete;

  /// Whether one has come, and the process should put back what it can and go.
  [[nodiscard]] static bool pending();
};

}  // namespace tarqo
