// Typing text and pressing keys.

#include "base/failure.h"
#include "input/bounded_text.h"
#include "input/key_tables.h"
#include "platform/unicode.h"
#include "session/session.h"

namespace tarqo {
namespace {

using namespace std::chrono_literals;

constexpr std::size_t kMaxTextUnits = 2000;
constexpr Duration kTextKeyHeld = 10ms;
constexpr Duration kBetweenTextKeys = 20ms;
constexpr Duration kKeyHeld = 30ms;
constexpr Duration kAfterKey = 50ms;

}  // namespace

std::string boundedText(const Json& args) {
  std::string typed = textMember(args, "text").value_or("");
  if (typed.empty() || unicode::utf16Length(typed) > kMaxTextUnits ||
      unicode::hasControlOrFormat(typed)) {
    fail(failures::kUnboundedText);
  }
  return typed;
}

// Both events exist before the first goes out, so that no key is ever left held down. The target
// must be the one that keystrokes go to when the key goes down; it comes up wherever that is.
void Session::postPair(EventSource* source, const InputEvent& down, const InputEvent& up,
                       std::pair<Duration, Duration> pace) {
  InputEvents& events = platform_.inputEvents;
  const auto first = events.create(source, down);
  const auto second = events.create(source, up);
  if (!first || !second) {
    fail(failures::kNoKeyEvent);
  }
  requireKeysHarmless();
  postToTarget(*first, failures::kNotFrontmost);
  platform_.clock.turn(pace.first);
  events.post(*second);
  platform_.clock.turn(pace.second);
}

void Session::typeUnicode(const std::string& typed) {
  const auto source = platform_.inputEvents.makeSource(typed);
  std::size_t sent = 0;
  try {
    unicode::forEachCluster(typed, [&](std::string_view cluster) {
      requireStillFrontmost();
      postPair(source.get(), TextEvent{std::string(cluster), true},
               TextEvent{std::string(cluster), false}, {kTextKeyHeld, kBetweenTextKeys});
      sent += cluster.size();
    });
  } catch (Failure& failure) {
    // What has gone out stays; a client that repeats the whole text would type it twice.
    failure.addDetail("sent", typed.substr(0, sent));
    throw;
  }
}

void Session::postKey(std::uint16_t code, Modifiers modifiers) {
  const auto source = platform_.inputEvents.makeSource("");
  postPair(source.get(), KeyEvent{code, true, modifiers}, KeyEvent{code, false, modifiers},
           {kKeyHeld, kAfterKey});
}

void Session::pressNamedKey(const Json& args) {
  const auto code = keyCode(textMember(args, "key").value_or(""));
  if (!code) {
    fail(failures::kUnknownKey);
  }
  Modifiers modifiers = 0;
  for (const std::string& name : textListMember(args, "modifiers")) {
    const auto mask = modifierMask(name);
    if (!mask) {
      fail(failures::kUnknownModifier);
    }
    modifiers |= *mask;
  }
  postKey(*code, modifiers);
}

}  // namespace tarqo
