// Deeds: actions, values, the focus.
#include <algorithm>
#include <charconv>

#include "platform/linux/atspi/linux_accessibility.h"

namespace tarqo::lnx {
namespace {

/// The number that a text is, whole; none when it is more or less than one.
std::optional<double> numberIn(const std::string& text) {
  double number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size()) {
    return std::nullopt;
  }
  return number;
}

}  // namespace

Performed LinuxAccessibility::perform(const Element& element, std::string_view action) {
  reader_.beginCall();
  const AtspiElement* ours = atspiElement(element);
  if (ours == nullptr || ours->isApplication()) {
    return Performed::refused;
  }
  const Parts& object = ours->parts();
  const Instant deadline = std::chrono::steady_clock::now() + 2 * object.timeout;
  if (action == "AXRaise") {
    const std::optional<WindowNumber> window = windowNumber(object);
    return window && reader_.locator().raise(*window) ? Performed::taken : Performed::refused;
  }
  const FactsPtr facts = reader_.learn(object, Fact::kind | Fact::actions);
  if (!facts) {
    return Performed::refused;
  }
  const std::optional<int> index = actionIndex(viewOf(object, *facts), action);
  if (!index) {
    return Performed::refused;
  }
  const auto writeIndex = [&index](sd_bus_message* request) {
    sd_bus_message_append(request, "i", *index);
  };
  return debts_.perform(object, reader_.toolkitOf(object),
                        {{kAction, "DoAction"}, writeIndex, true}, deadline);
}

bool LinuxAccessibility::isEndangeredByKeys(Pid pid) { return debts_.isEndangeredByKeys(pid); }

bool LinuxAccessibility::set(const Element& element, std::string_view name, const Value& value) {
  reader_.beginCall();
  const AtspiElement* ours = atspiElement(element);
  if (ours == nullptr) {
    return false;
  }
  const bool* truth = value.as<bool>();
  if (ours->isApplication()) {
    // The window manager brings an application to the front, when its window is raised.
    return name == "AXFrontmost" && truth != nullptr;
  }
  const Parts& object = ours->parts();
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
    return *truth && grabFocus(object);
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

bool LinuxAccessibility::setText(const Parts& object, const std::string& text) {
  const FactsPtr facts = reader_.learn(object, Fact::kind);
  if (!facts) {
    return false;
  }
  if (facts->is(AtspiRole::spinButton) && !facts->has(AtspiInterface::editableText)) {
    const std::optional<double> number = numberIn(text);
    return number && setNumber(object, *number);
  }
  if (typesText(object, *facts)) {
    return typeOver(object, text);
  }
  const auto writeText = [&text](sd_bus_message* request) {
    sd_bus_message_append(request, "s", text.c_str());
  };
  return accepts(object, {{kEditableText, "SetTextContents"}, writeText, false});
}

bool LinuxAccessibility::setNumber(const Parts& object, double number) {
  const auto writeNumber = [number](sd_bus_message* request) {
    sd_bus_message_append(request, "ssv", kValue, "CurrentValue", "d", number);
  };
  return accepts(object, {{"org.freedesktop.DBus.Properties", "Set"}, writeNumber, false});
}

bool LinuxAccessibility::grabFocus(const Parts& object) {
  const FactsPtr facts = reader_.learn(object, Fact::kind);
  if (facts && hasFocus(*facts, reader_.toolkitOf(object))) {
    return true;  // A field of GTK 3 selects all its text whenever it is given the focus.
  }
  return accepts(object, {{kComponent, "GrabFocus"}, nullptr, false}) ||
         (reader_.toolkitOf(object) == Toolkit::gtk4 && clickForFocus(object));
}

/// Whether an application says within the messaging time-out that it did as asked. A value or the
/// focus sets handlers going as a press does: one may open a dialog and wait in it.
bool LinuxAccessibility::accepts(const Parts& object, const AtspiDeed& deed) {
  const Instant deadline = std::chrono::steady_clock::now() + object.timeout;
  return debts_.perform(object, reader_.toolkitOf(object), deed, deadline) ==
         Performed::acknowledged;
}

std::optional<WindowNumber> LinuxAccessibility::windowNumber(const Parts& window) {
  const std::vector<Toplevel>& all = reader_.windowsOf(window.pid, window.timeout).toplevels;
  const auto found = std::ranges::find(all, window.ref, &Toplevel::ref);
  if (found == all.end() || !found->window) {
    return std::nullopt;
  }
  return found->window->number;
}

}  // namespace tarqo::lnx
