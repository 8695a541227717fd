#include "platform/linux/atspi/read/late_objects.h"

#include <algorithm>

#include "platform/linux/base/proc.h"

namespace tarqo::lnx::atspi {
namespace {

using namespace std::chrono_literals;

/// For a further window of an application: toolkits need some 50 ms, on a busy machine ten times
/// that.
constexpr Duration kUsual = 700ms;

/// For the first window of an application that was just started: most connect to the bus after they
/// have shown it, Chromium and Firefox by a second.
constexpr Duration kAfterStart = 1500ms;
constexpr auto kJustStarted = 15s;

}  // namespace

LateObjects::Verdict LateObjects::judge(Pid pid, bool hasObjects,
                                        const std::vector<x11::LocatedWindow>& windows) {
  Verdict verdict;
  forgetOthers(pid, windows);
  if (windows.empty()) {
    return verdict;
  }
  const Instant now = clock_.now();
  const Duration patience = patienceFor(pid, hasObjects);
  for (const x11::LocatedWindow& window : windows) {
    Seen& seen = seen_.try_emplace(window.number, Seen{pid, now}).first->second;
    seen.given = seen.given || now - seen.since >= patience;
    if (seen.given) {
      verdict.bare.push_back(window);
    } else {
      verdict.awaited = true;
    }
  }
  return verdict;
}

void LateObjects::forgetOthers(Pid pid, const std::vector<x11::LocatedWindow>& windows) {
  std::erase_if(seen_, [&](const auto& entry) {
    return entry.second.pid == pid &&
           std::ranges::find(windows, entry.first, &x11::LocatedWindow::number) == windows.end();
  });
}

Duration LateObjects::patienceFor(Pid pid, bool hasObjects) const {
  const bool isKnownToHaveNone =
      !hasObjects && std::ranges::any_of(seen_, [pid](const auto& entry) {
        return entry.second.pid == pid && entry.second.given;
      });
  if (isKnownToHaveNone) {
    return Duration::zero();
  }
  const bool justStarted = processAge(pid).value_or(1h) < kJustStarted;
  return justStarted && !hasObjects ? kAfterStart : kUsual;
}

}  // namespace tarqo::lnx::atspi
