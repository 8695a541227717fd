// Keys going down and up as devices report them, whoever receives them: even the release of a key
// that the server considers released already.
#pragma once

#include <cstdint>
#include <map>

#include "platform/linux/x11/connection.h"

namespace tarqo::lnx::x11 {

/// Whether a server reports such events. For reading the extensions of a new connection.
[[nodiscard]] bool reportsRawKeys(Server& server);

/// Counts the key events of all keyboards while it lives, those of XTEST included. At most one at a
/// time. Counts nothing on a server that does not report them. Worker thread only.
class RawKeyWatch {
 public:
  explicit RawKeyWatch(Display& display);
  ~RawKeyWatch();
  RawKeyWatch(const RawKeyWatch&) = delete;
  RawKeyWatch& operator=(const RawKeyWatch&) = delete;

  /// How often a key went up more than down so far. A round trip.
  [[nodiscard]] std::map<xcb_keycode_t, int> releases(Server& server) const;

 private:
  void count(const xcb_generic_event_t& event);

  Display& display_;
  std::uint64_t connection_ = 0;
  std::uint8_t extension_ = 0;
  std::map<xcb_keycode_t, int> releases_;
};

}  // namespace tarqo::lnx::x11
