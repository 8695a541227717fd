// The "settle" method: waits until the target has been quiet for a while.

#include <algorithm>

#include "methods/methods.h"

namespace tarqo::methods {
namespace {

using namespace std::chrono_literals;

constexpr Duration kPollSlice = 20ms;
constexpr Duration kDefaultLookBack = 3s;

using Milliseconds = std::chrono::duration<double, std::milli>;

struct SettleArguments {
  Duration quiet;
  Duration timeout;
  /// From when on notifications count, on the client's clock, in milliseconds since 1970.
  std::optional<double> sinceMs;
};

SettleArguments settleArguments(const Json& args) {
  using std::chrono::milliseconds;
  return {.quiet = milliseconds(clampedMember(args, "quietMs", 180, {20, 3000})),
          .timeout = milliseconds(clampedMember(args, "timeoutMs", 1500, {50, 10000})),
          .sinceMs = numberMember(args, "sinceMs")};
}

// The instant of a moment on the client's clock. Far-off moments are brought near enough for the
// steady clock to express.
Instant instantAt(Clock& clock, double epochMs) {
  const double wallMs = Milliseconds(clock.wall().time_since_epoch()).count();
  const double limitMs = Milliseconds(std::chrono::hours(24 * 365 * 50)).count();
  const Milliseconds ago(std::clamp(wallMs - epochMs, -limitMs, limitMs));
  return clock.now() - std::chrono::duration_cast<Duration>(ago);
}

}  // namespace

Json settle(Session& session, const Json& args) {
  (void)session.target.requireApp();
  Clock& clock = session.platform.clock;
  const SettleArguments wanted = settleArguments(args);
  const Instant since = wanted.sinceMs ? instantAt(clock, *wanted.sinceMs)
                                       : std::max(session.actedAt, clock.now() - kDefaultLookBack);

  const Instant start = clock.now();
  session.ensureListening();
  Journal::Heard heard = session.listener.heardSince(since);
  while (clock.now() < start + wanted.timeout &&
         clock.now() - heard.at.value_or(start) < wanted.quiet) {
    clock.sleep(kPollSlice);
    heard = session.listener.heardSince(since);
  }
  const Instant end = clock.now();
  return {{"heard", heard.names},
          {"quiet", end >= heard.at.value_or(start) + wanted.quiet},
          {"waitedMs", Milliseconds(end - start).count()},
          {"listening", session.listener.isListening()}};
}

}  // namespace tarqo::methods
