#include "session/session.h"

#include "base/timestamp.h"

namespace tarqo {

void Session::ensureListening() {
  if (!listener.isObserving()) {
    listener.listen(target.requirePid(), *target.app());
  } else if (!listener.watch(*target.app())) {
    return;
  }
  if (target.window()) {
    (void)listener.watch(*target.window());
  }
}

std::string Session::timestampNow() const { return timestamp(platform.clock.wall()); }

}  // namespace tarqo
