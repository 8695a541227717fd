// The gate that every operation on the target passes first.

#include "base/failure.h"
#include "session/session.h"

namespace tarqo {

Element Session::requireApp() {
  // The desktop first: a locked screen is the reason to tell even when a grant is missing too.
  const LoginSession login = platform_.windowServer.loginSession();
  if (login.locked == true || login.onConsole == false) {
    fail(failures::kSessionLocked);
  }
  grants_.requireAccessibility();
  if (!app_ || !running_ || platform_.workspace.isTerminated(running_->id)) {
    fail(failures::kAppClosedReconnect);
  }
  return *app_;
}

}  // namespace tarqo
