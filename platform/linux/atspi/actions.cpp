#include "platform/linux/atspi/actions.h"

#include "platform/linux/atspi/translate/attributes.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace tarqo::lnx::atspi {
namespace {

constexpr auto kNumberArrives = std::chrono::milliseconds(250);
constexpr auto kPoll = std::chrono::milliseconds(10);
constexpr double kTolerance = 1e-6;

/// The number that a text stands for; empty when the text has anything else in it.
std::optional<double> numberIn(const std::string& text) {
  double number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size()) {
    return std::nullopt;
  }
  return number;
}

}  // namespace

std::vector<std::string> Actions::namesOf(const ObjectHandle& object) {
  const PropertiesPtr properties = reader_.read(object, Property::basics | Property::actions);
  if (!properties) {
    return {};
  }
  return axActionNames(attributes_.viewOf(object, *properties));
}

Performed Actions::perform(const ObjectHandle& object, std::string_view action) {
  const Instant deadline = reader_.clock().now() + 2 * object.timeout;
  if (action == "AXRaise") {
    const std::optional<WindowNumber> window = windowNumber(object);
    return window && reader_.locator().raise(*window) ? Performed::taken : Performed::refused;
  }
  const PropertiesPtr properties = reader_.read(object, Property::basics | Property::actions);
  if (!properties) {
    return Performed::refused;
  }
  const std::optional<int> index = actionIndex(attributes_.viewOf(object, *properties), action);
  if (!index) {
    return Performed::refused;
  }
  const auto writeIndex = [&index](sd_bus_message* request) {
    sd_bus_message_append(request, "i", *index);
  };
  return pending_.perform(object, reader_.toolkitOf(object),
                          {{kAction, "DoAction"}, writeIndex, true}, deadline);
}

bool Actions::isSettable(const ObjectHandle& object, std::string_view name) {
  const PropertiesPtr properties = reader_.read(object, Property::basics);
  if (!properties) {
    return false;
  }
  if (isWindow(object, *properties) && (name == "AXMinimized" || name == "AXMain")) {
    return true;
  }
  if (name == "AXFocused") {
    return properties->has(State::focusable) && properties->has(Interface::component) &&
           (reader_.toolkitOf(object) != Toolkit::gtk4 || focus_.isGrabbedByClick(*properties));
  }
  return name == "AXValue" && (hasSettableValue(attributes_.viewOf(object, *properties)) ||
                               typing_.isNeededFor(object, *properties));
}

bool Actions::takesTextByKeys(const ObjectHandle& object) {
  const PropertiesPtr properties = reader_.read(object, Property::basics);
  if (!properties || !properties->has(State::focusable) || !properties->has(Interface::text) ||
      isSecure(*properties)) {
    return false;
  }
  const bool isWritten = properties->is(Role::terminal) || properties->has(State::editable);
  return isWritten && !isSettable(object, "AXValue");
}

bool Actions::set(const ObjectHandle& object, std::string_view name, const Value& value) {
  const bool* truth = value.as<bool>();
  if (name == "AXValue") {
    if (const std::string* text = value.as<std::string>()) {
      return setText(object, *text);
    }
    const double* number = value.as<double>();
    return number != nullptr && setNumber(object, *number);
  }
  if (truth == nullptr) {
    return false;
  }
  if (name == "AXFocused") {
    return *truth && focus_.grab(object);
  }
  const std::optional<WindowNumber> window = windowNumber(object);
  if (!window) {
    return false;
  }
  if (name == "AXMinimized") {
    return reader_.locator().setMinimized(*window, *truth);
  }
  return name == "AXMain" && *truth && reader_.locator().raise(*window);
}

bool Actions::setText(const ObjectHandle& object, const std::string& text) {
  const PropertiesPtr properties = reader_.read(object, Property::basics);
  if (!properties) {
    return false;
  }
  // GTK 3 shows a text that a spin button was given, and keeps its number. One that is out of
  // bounds is not taken by any way.
  if (properties->has(Interface::value)) {
    const std::optional<double> number = numberIn(text);
    if (number && setNumber(object, *number)) {
      return awaitNumber(object, *number);
    }
    if (properties->is(Role::spinButton) && !properties->has(Interface::editableText)) {
      return false;
    }
  }
  return setTextOnly(object, *properties, text);
}

/// Pages report a new number a moment after they have taken it.
bool Actions::awaitNumber(const ObjectHandle& object, double number) {
  const Instant deadline = reader_.clock().now() + kNumberArrives;
  for (;;) {
    std::optional<double> now;
    reader_.request(object, [&](Batch& batch) {
      batch.property(object.ref, kValue, "CurrentValue", [&now](Reply reply) {
        now = reply.ok ? readVariantDouble(reply.message) : std::nullopt;
      });
    });
    if (now && std::abs(*now - number) <= kTolerance * std::max(1.0, std::abs(number))) {
      return true;
    }
    if (!now || reader_.clock().now() >= deadline) {
      return false;
    }
    reader_.clock().sleep(kPoll);
  }
}

/// Firefox says yes to a text and ignores it, so it is looked for, and typed when it is not there.
bool Actions::setTextOnly(const ObjectHandle& object, const Properties& properties,
                          const std::string& text) {
  if (typing_.isNeededFor(object, properties)) {
    return typing_.typeOver(object, text);
  }
  const auto writeText = [&text](sd_bus_message* request) {
    sd_bus_message_append(request, "s", text.c_str());
  };
  const std::optional<std::string> before = typing_.contentOf(object);
  const bool isTaken = pending_.performWithinTimeout(
      object, reader_.toolkitOf(object), {{kEditableText, "SetTextContents"}, writeText, false});
  if (!isTaken || !before || *before == text || typing_.awaitOther(object, *before)) {
    return isTaken;
  }
  return typing_.typeOver(object, text);
}

bool Actions::setNumber(const ObjectHandle& object, double number) {
  const auto writeNumber = [number](sd_bus_message* request) {
    sd_bus_message_append(request, "ssv", kValue, "CurrentValue", "d", number);
  };
  return pending_.performWithinTimeout(
      object, reader_.toolkitOf(object),
      {{"org.freedesktop.DBus.Properties", "Set"}, writeNumber, false});
}

std::optional<WindowNumber> Actions::windowNumber(const ObjectHandle& window) {
  const std::vector<Toplevel>& all = reader_.windowsOf(window.pid, window.timeout).toplevels;
  const auto found = std::ranges::find(all, window.ref, &Toplevel::ref);
  if (found == all.end() || !found->window) {
    return std::nullopt;
  }
  return found->window->number;
}

}  // namespace tarqo::lnx::atspi
