// Listening to the target, and telling from it whether the target reacted and has calmed down.

#include <algorithm>

#include "session/session.h"

namespace tarqo {
namespace {

using namespace std::chrono_literals;

constexpr Duration kPollSlice = 20ms;
constexpr Duration kDefaultLookBack = 3s;

constexpr std::int64_t kDefaultQuietMs = 180;
constexpr std::int64_t kMinQuietMs = 20;
constexpr std::int64_t kMaxQuietMs = 3000;
constexpr std::int64_t kDefaultTimeoutMs = 1500;
constexpr std::int64_t kMinTimeoutMs = 50;
constexpr std::int64_t kMaxTimeoutMs = 10000;

// Bringing an application forward causes these, whether or not the press had an effect.
constexpr std::array<std::string_view, 2> kAnswerNeutral{"AXFocusedUIElementChanged",
                                                         "AXApplicationActivated"};

bool isAnswer(const std::string& name) {
  return std::find(kAnswerNeutral.begin(), kAnswerNeutral.end(), name) == kAnswerNeutral.end();
}

bool anyAnswer(const Journal::Heard& heard) {
  return std::any_of(heard.names.begin(), heard.names.end(), isAnswer);
}

using Milliseconds = std::chrono::duration<double, std::milli>;

Duration milliseconds(double count) {
  return std::chrono::duration_cast<Duration>(Milliseconds(count));
}

// The instant of a moment on the client's clock, in milliseconds since 1970. Far-off moments are
// brought near enough for the steady clock to express.
Instant instantAt(Clock& clock, double epochMs) {
  const double wallMs = Milliseconds(clock.wall().time_since_epoch()).count();
  const double limitMs = Milliseconds(std::chrono::hours(24 * 365 * 50)).count();
  return clock.now() - milliseconds(std::clamp(wallMs - epochMs, -limitMs, limitMs));
}

}  // namespace

void Session::listen(Pid pid) {
  Clock& clock = platform_.clock;
  observer_ = platform_.accessibility.observe(
      pid, [this, &clock](std::string_view name) { journal_.note(name, clock.now()); });
  if (app_) {
    watch(*app_);
  }
}

void Session::watch(const Element& element) {
  if (!observer_) {
    return;
  }
  for (const std::string_view name : WATCHED) {
    (void)observer_->add(element, name);
  }
}

Performed Session::performed(const Element& element, std::string_view action) {
  const Performed performed = platform_.accessibility.perform(element, action);
  if (performed == Performed::acknowledged) {
    journal_.note(kActionAcknowledged, platform_.clock.now());
  }
  return performed;
}

bool Session::pressAnswered(Instant since, double windowMs) {
  if (!observer_) {
    return true;  // Nobody listened, so nothing can be said against the press.
  }
  Clock& clock = platform_.clock;
  const Instant deadline = since + milliseconds(windowMs);
  while (clock.now() < deadline) {
    if (anyAnswer(journal_.lastHeard(since))) {
      return true;
    }
    clock.sleep(kPollSlice);
  }
  return anyAnswer(journal_.lastHeard(since));
}

Json Session::settle(const Json& args) {
  (void)requireApp();
  Clock& clock = platform_.clock;
  const auto clamped = [&](const char* key, std::int64_t otherwise, std::int64_t low,
                           std::int64_t high) {
    const std::int64_t count = integerMember(args, key).value_or(otherwise);
    return std::chrono::milliseconds(std::clamp(count, low, high));
  };
  const Duration quiet = clamped("quietMs", kDefaultQuietMs, kMinQuietMs, kMaxQuietMs);
  const Duration timeout = clamped("timeoutMs", kDefaultTimeoutMs, kMinTimeoutMs, kMaxTimeoutMs);
  const auto sinceMs = numberMember(args, "sinceMs");
  const Instant since =
      sinceMs ? instantAt(clock, *sinceMs) : std::max(actedAt_, clock.now() - kDefaultLookBack);

  const Instant start = clock.now();
  if (!observer_) {
    listen(running_->id.pid);
  }
  if (window_) {
    watch(*window_);
  }
  Journal::Heard heard = journal_.lastHeard(since);
  while (clock.now() < start + timeout && clock.now() - heard.at.value_or(start) < quiet) {
    clock.sleep(kPollSlice);
    heard = journal_.lastHeard(since);
  }
  const Instant end = clock.now();
  return {{"heard", heard.names},
          {"quiet", end >= heard.at.value_or(start) + quiet},
          {"waitedMs", Milliseconds(end - start).count()},
          {"listening", observer_ != nullptr}};
}

}  // namespace tarqo
