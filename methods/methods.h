// The methods of the protocol: each takes the request's "args" and gives its "result", or throws a
// `Failure`.
//
// One file each, named after it. The arguments end there as a struct and the result begins there;
// below, nothing reads or writes a request. Worker thread only; docs/protocol.md has what clients
// read of each.
#pragma once

#include "base/json.h"
#include "host/grants.h"
#include "host/responsible_host.h"
#include "platform/platform.h"
#include "session/session.h"

namespace tarqo::methods {

// About the helper and the desktop.
[[nodiscard]] Json host(HostFinder& hosts, const Json& args);
[[nodiscard]] Json preflight(Grants& grants, HostFinder& hosts);
[[nodiscard]] Json listTargets(const Platform& platform);

// About the target.
[[nodiscard]] Json connect(Session& session, const Json& args);
[[nodiscard]] Json observe(Session& session, const Json& args);
[[nodiscard]] Json geometry(Session& session);
[[nodiscard]] Json settle(Session& session, const Json& args);

// Actions on a node of the last observation.
[[nodiscard]] Json click(Session& session, const Json& args);
[[nodiscard]] Json hover(Session& session, const Json& args);
[[nodiscard]] Json showMenu(Session& session, const Json& args);
[[nodiscard]] Json input(Session& session, const Json& args);

}  // namespace tarqo::methods
