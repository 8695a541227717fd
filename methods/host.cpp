// The "host" method: which application launched a process, by default the helper.

#include <cmath>
#include <cstdint>

#include "methods/methods.h"

namespace tarqo::methods {
namespace {

struct HostArguments {
  std::optional<Pid> pid;
};

// The 32-bit value of a "pid": fractions are cut off, booleans count as 0 and 1.
std::optional<Pid> pidMember(const Json& args) {
  const auto found = args.find("pid");
  if (found == args.end()) {
    return std::nullopt;
  }
  if (found->is_boolean()) {
    return found->get<bool>() ? 1 : 0;
  }
  if (!found->is_number()) {
    return std::nullopt;
  }
  const double number = std::trunc(found->get<double>());
  // No process has an id outside 32 bits; 0 ends the search for a host at once.
  return number >= INT32_MIN && number <= INT32_MAX ? static_cast<Pid>(number) : 0;
}

HostArguments hostArguments(const Json& args) { return {.pid = pidMember(args)}; }

}  // namespace

Json host(HostFinder& hosts, const Json& args) {
  if (const auto host = hosts.responsibleHost(hostArguments(args).pid)) {
    return {{"host", host->json()}, {"known", true}};
  }
  return {{"host", {{"name", HOST_FALLBACK}}}, {"known", false}};
}

}  // namespace tarqo::methods
