#include "session/session.h"

#include "base/timestamp.h"

namespace tarqo {

void Session::ensureListening() {
  if (!listener.isListening()) {
    listener.listen(target.requirePid(), *target.app());
  }
  if (target.window()) {
    listener.watch(*target.window());
  }
}

std::string Session::timestampNow() const { return timestamp(platform.clock.wall()); }

}  // namespace tarqo
