#include "platform/linux/atspi/field_typing.h"

#include <algorithm>

#include "platform/linux/atspi/translate/view.h"
#include "platform/unicode.h"

namespace tarqo::lnx::atspi {
namespace {

constexpr auto kReadBackPoll = std::chrono::milliseconds(10);

/// Between the events of two characters. A page may handle each of them.
constexpr auto kBetweenKeys = std::chrono::milliseconds(4);

/// For the next keys to pass through the page after it has shown some.
constexpr auto kArrival = std::chrono::milliseconds(500);

/// For all of them. A machine that has too much to do takes long for the first.
constexpr auto kArrivalAtMost = std::chrono::milliseconds(1500);

/// For a field to show what it was set to.
constexpr auto kSettingPatience = std::chrono::milliseconds(250);

/// For a page to report back what is selected in it.
constexpr auto kSelectionPatience = std::chrono::milliseconds(250);

/// What a page may add to what is typed, beside a blank for every character.
constexpr std::int32_t kAddedByPage = 64;

constexpr std::uint16_t kDeleteKey = 117;
constexpr std::uint16_t kAKey = 0;

std::int32_t charactersIn(const std::string& text) {
  return static_cast<std::int32_t>(std::ranges::count_if(
      text, [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U; }));
}

}  // namespace

bool FieldTyping::isNeededFor(const ObjectHandle& object, const Properties& properties) {
  return keyboard_ != nullptr && properties.has(State::editable) &&
         properties.has(State::focusable) && properties.has(Interface::text) &&
         !properties.has(Interface::editableText) && reader_.toolkitOf(object) == Toolkit::chromium;
}

std::optional<std::string> FieldTyping::contentOf(const ObjectHandle& object) {
  const PropertiesPtr properties = reader_.read(object, Property::value);
  return properties && !isSecure(*properties) ? properties->text : std::nullopt;
}

bool FieldTyping::awaitOther(const ObjectHandle& object, const std::string& before) {
  const Instant deadline = reader_.clock().now() + kSettingPatience;
  for (;;) {
    const std::optional<std::string> now = contentOf(object);
    if (!now || *now != before) {
      return true;
    }
    if (reader_.clock().now() >= deadline) {
      return false;
    }
    reader_.clock().sleep(kReadBackPoll);
  }
}

bool FieldTyping::typeOver(const ObjectHandle& object, const std::string& text) {
  const std::optional<Toplevel> top = reader_.toplevelOf(object);
  if (!top || keyboard_ == nullptr) {
    return false;
  }
  ObjectHandle field = object;
  field.window = top->ref;  // Known once, so that no key waits for the way up to it.
  if (!focus_.isInKeyWindow(field) || !focus_.grab(field) || !focus_.await(field)) {
    return false;
  }
  const std::optional<Content> before = measuredContentOf(field);
  return before && selectAll(field, before->characters) && typeKeys(field, text) &&
         awaitContent(field, text, *before);
}

bool FieldTyping::typeKeys(const ObjectHandle& field, const std::string& text) {
  const std::unique_ptr<EventSource> source = keyboard_->makeSource(text);
  bool typed = true;
  const auto press = [&](const InputEvent& down, const InputEvent& up) {
    typed = typed && focus_.postKey(field, source.get(), down, up);
    if (typed) {
      reader_.clock().sleep(kBetweenKeys);
    }
  };
  if (text.empty()) {
    press(KeyEvent{kDeleteKey, true, 0}, KeyEvent{kDeleteKey, false, 0});
  }
  unicode::forEachCluster(text, [&](std::string_view cluster) {
    const std::string character(cluster);
    press(TextEvent{character, true}, TextEvent{character, false});
  });
  return typed;
}

std::optional<FieldTyping::Content> FieldTyping::measuredContentOf(const ObjectHandle& object) {
  const PropertiesPtr properties = reader_.read(object, Property::value);
  std::optional<int> count;
  reader_.request(object, [&](Batch& batch) {
    batch.property(object.ref, kText, "CharacterCount", [&](const Reply& reply) {
      count = reply.ok ? readVariantInt(reply.message) : std::nullopt;
    });
  });
  if (!properties || !properties->text || !count) {
    return std::nullopt;
  }
  return Content{*properties->text, *count};
}

/// Requested selections and posted keys reach the page on different ways, so a selection that it
/// has not reported back may come after the keys. The shortcut for selecting all stays in order
/// with them.
bool FieldTyping::selectAll(const ObjectHandle& object, std::int32_t characters) {
  if (characters == 0) {
    return true;
  }
  reader_.request(object, [&](Batch& batch) {
    Message message = batch.make(object.ref, kText, "SetSelection");
    if (message) {
      sd_bus_message_append(message.get(), "iii", 0, 0, characters);
    }
    batch.send(std::move(message), [](const Reply&) {});
  });
  const Instant deadline = reader_.clock().now() + kSelectionPatience;
  while (reader_.clock().now() < deadline) {
    if (selects(object, characters)) {
      return true;
    }
    reader_.clock().sleep(kReadBackPoll);
  }
  return focus_.postKey(object, nullptr, KeyEvent{kAKey, true, kModifierControl},
                        KeyEvent{kAKey, false, kModifierControl});
}

/// Whether the first so many characters are selected.
bool FieldTyping::selects(const ObjectHandle& object, std::int32_t characters) {
  bool selected = false;
  reader_.request(object, [&](Batch& batch) {
    Message message = batch.make(object.ref, kText, "GetSelection");
    if (message) {
      sd_bus_message_append(message.get(), "i", 0);
    }
    batch.send(std::move(message), [&](const Reply& reply) {
      std::int32_t start = 0;
      std::int32_t end = 0;
      selected = reply.ok && sd_bus_message_read(reply.message, "ii", &start, &end) > 0 &&
                 start == 0 && end == characters;
    });
  });
  return selected;
}

/// Whether the text arrived. A page may change what is typed (it puts blanks into a telephone
/// number), so in the end any content but the old one counts. Of an old text that was too long to
/// be read whole, the length alone shows whether some of it has stayed.
bool FieldTyping::awaitContent(const ObjectHandle& object, const std::string& text,
                               const Content& before) {
  const Instant end = reader_.clock().now() + kArrivalAtMost;
  Instant settled = end;  // When nothing has arrived.
  std::optional<Content> now = measuredContentOf(object);
  while (now && now->text != text && reader_.clock().now() < std::min(settled, end)) {
    reader_.clock().sleep(kReadBackPoll);
    std::optional<Content> next = measuredContentOf(object);
    if (next && next->text != now->text) {
      settled = reader_.clock().now() + kArrival;
    }
    now = std::move(next);
  }
  if (!now || now->text == text) {
    return now.has_value();
  }
  const bool wasCut = charactersIn(before.text) < before.characters;
  const bool isTooLong = now->characters > 2 * charactersIn(text) + kAddedByPage;
  return now->text != before.text && !(wasCut && isTooLong);
}

}  // namespace tarqo::lnx::atspi
