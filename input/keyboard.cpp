#include "input/keyboard.h"

#include <utility>

#include "base/failure.h"
#include "input/events.h"
#include "input/key_tables.h"
#include "platform/unicode.h"

namespace tarqo {
namespace {

using namespace std::chrono_literals;

constexpr std::size_t kMaxTextUnits = 2000;
constexpr Duration kTextKeyHeld = 10ms;
constexpr Duration kBetweenTextKeys = 20ms;
constexpr Duration kKeyHeld = 30ms;
constexpr Duration kAfterKey = 50ms;

// Both events exist before the first goes out, so that no key is ever left held down. The target
// must be the one that keystrokes go to when the key goes down; it comes up wherever that is.
void postPair(Session& session, EventSource* source, const InputEvent& down, const InputEvent& up,
              std::pair<Duration, Duration> pace) {
  InputEvents& events = session.platform.inputEvents;
  const auto first = events.create(source, down);
  const auto second = events.create(source, up);
  if (!first || !second) {
    fail(failures::kNoKeyEvent);
  }
  session.target.requireKeysHarmless();
  session.target.requireKeysReachWindow();
  postToTarget(session, *first, failures::kNotFrontmost);
  session.platform.clock.runLoopFor(pace.first);
  events.post(*second);
  session.platform.clock.runLoopFor(pace.second);
}

}  // namespace

std::string boundedText(const std::optional<std::string>& text) {
  std::string typed = text.value_or("");
  if (typed.empty() || unicode::utf16Length(typed) > kMaxTextUnits ||
      unicode::hasControlOrFormat(typed)) {
    fail(failures::kUnboundedText);
  }
  return typed;
}

void typeUnicode(Session& session, const std::string& text) {
  const auto source = session.platform.inputEvents.makeSource(text);
  std::size_t sent = 0;
  try {
    unicode::forEachCluster(text, [&](std::string_view cluster) {
      session.target.requireStillFrontmost();
      postPair(session, source.get(), TextEvent{std::string(cluster), true},
               TextEvent{std::string(cluster), false}, {kTextKeyHeld, kBetweenTextKeys});
      sent += cluster.size();
    });
  } catch (Failure& failure) {
    // What has gone out stays; a client that repeats the whole text would type it twice.
    failure.addDetail("sent", text.substr(0, sent));
    throw;
  }
}

void postKey(Session& session, std::uint16_t code, Modifiers modifiers) {
  const auto source = session.platform.inputEvents.makeSource("");
  postPair(session, source.get(), KeyEvent{code, true, modifiers}, KeyEvent{code, false, modifiers},
           {kKeyHeld, kAfterKey});
}

void pressNamedKey(Session& session, const std::string& key,
                   const std::vector<std::string>& modifiers) {
  const auto code = keyCode(key);
  if (!code) {
    fail(failures::kUnknownKey);
  }
  Modifiers masks = 0;
  for (const std::string& name : modifiers) {
    const auto mask = modifierMask(name);
    if (!mask) {
      fail(failures::kUnknownModifier);
    }
    masks |= *mask;
  }
  postKey(session, *code, masks);
}

}  // namespace tarqo
