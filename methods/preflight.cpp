// The "preflight" method: both grants, asked for where they are missing.

#include "methods/methods.h"

namespace tarqo::methods {

Json preflight(Grants& grants, HostFinder& hosts) {
  grants.requireAccessibility();
  grants.requireScreenCapture();
  return {{"accessibility", true}, {"screenCapture", true}, {"host", hosts.host().json()}};
}

}  // namespace tarqo::methods
