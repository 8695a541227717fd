#include "session/session.h"

#include "base/timestamp.h"

namespace tarqo {

Session::Session(const Platform& platform, HostFinder& hosts, Grants& grants)
    : platform_(platform), hosts_(hosts), grants_(grants) {}

std::string Session::timestampNow() { return timestamp(platform_.clock.wall()); }

}  // namespace tarqo
