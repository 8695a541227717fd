// The accessibility service over AT-SPI.
//
// Worker thread only, but for what `AtspiEvents` delivers. Nothing here ends the process or writes
// anywhere when the accessibility bus is missing or lost; the next call connects again.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/accessibility.h"
#include "platform/input_events.h"
#include "platform/linux/atspi/pending_actions.h"
#include "platform/linux/atspi/read/element.h"
#include "platform/linux/atspi/read/reader.h"
#include "platform/linux/atspi/translate/translate.h"
#include "platform/linux/atspi/wire/events.h"
#include "platform/linux/x11/window_locator.h"

namespace tarqo::lnx {

class LinuxAccessibility final : public Accessibility {
 public:
  /// All are kept and outlive this. Chromium takes text from the keyboard alone, so without one the
  /// values of its fields cannot be set.
  LinuxAccessibility(WindowLocator& locator, AtspiEvents& events, InputEvents* keyboard = nullptr);

  Element application(Pid pid, Duration messagingTimeout) override;
  std::optional<Value> attribute(const Element& element, std::string_view name) override;
  std::vector<std::optional<Value>> attributes(const Element& element,
                                               std::span<const std::string_view> names) override;
  std::vector<std::string> actionNames(const Element& element) override;
  Performed perform(const Element& element, std::string_view action) override;
  bool isEndangeredByKeys(Pid pid) override;
  bool set(const Element& element, std::string_view name, const Value& value) override;
  bool isSettable(const Element& element, std::string_view name) override;
  std::optional<Element> elementAt(Point point) override;
  std::optional<Pid> pidOf(const Element& element) override;
  std::unique_ptr<Observer> observe(Pid pid, NotificationCallback callback) override;
  std::unique_ptr<TreeRead> readTree(const Element& root, const TreeReadLimits& limits) override;

 private:
  using Parts = AtspiElement::Parts;

  [[nodiscard]] AtspiView viewOf(const Parts& object, const AtspiFacts& facts);
  [[nodiscard]] std::vector<std::optional<Value>> silentWindow(
      const Parts& window, std::span<const std::string_view> names);
  [[nodiscard]] std::optional<Value> objectAttribute(const Parts& object, const FactsPtr& facts,
                                                     std::string_view name);

  // Attributes of an application element.
  [[nodiscard]] std::optional<Value> applicationAttribute(const Parts& application,
                                                          std::string_view name);
  [[nodiscard]] std::vector<Element> windowsOf(const Parts& application);
  [[nodiscard]] std::optional<Element> focusedWindow(const Parts& application);
  [[nodiscard]] std::optional<Element> focusedElement(const Parts& application);
  [[nodiscard]] std::optional<Element> menuBar(const Parts& application);
  [[nodiscard]] std::optional<AtspiRef> menuBarBelow(const Parts& window);
  [[nodiscard]] std::optional<AtspiRef> focusedBelow(const Parts& window);

  // Attributes of a window.
  [[nodiscard]] std::optional<Value> windowAttribute(const Parts& window, std::string_view name);
  [[nodiscard]] std::optional<std::string> documentOf(const Parts& window);

  // Attributes that lead to other elements, and places.
  [[nodiscard]] std::optional<Rect> frameOf(const Parts& object, const AtspiFacts& facts);
  [[nodiscard]] bool hasSearchIcon(const Parts& object, const AtspiFacts& facts);
  [[nodiscard]] std::optional<Point> offsetOf(const Parts& object);
  [[nodiscard]] Values childrenOf(const Parts& object, const AtspiFacts& facts);
  [[nodiscard]] std::vector<AtspiRef> shownChildren(const Parts& object, const AtspiFacts& facts);
  [[nodiscard]] std::vector<AtspiRef> contextMenus(const Parts& window);
  [[nodiscard]] bool hangsNowhere(const Parts& menu);
  [[nodiscard]] std::optional<Element> parentOf(const Parts& object, const AtspiFacts& facts);
  [[nodiscard]] Parts asMet(Parts object);

  // Deeds.
  [[nodiscard]] bool setText(const Parts& object, const std::string& text);
  [[nodiscard]] bool setNumber(const Parts& object, double number);
  [[nodiscard]] bool grabFocus(const Parts& object);
  [[nodiscard]] bool accepts(const Parts& object, const AtspiDeed& deed);
  [[nodiscard]] bool isClickedForFocus(const AtspiFacts& facts);
  [[nodiscard]] bool clickForFocus(const Parts& object);
  [[nodiscard]] std::optional<WindowNumber> windowNumber(const Parts& window);

  // Typing over a field.
  struct Content {
    std::string text;             ///< Its beginning, where it is long.
    std::int32_t characters = 0;  ///< Of all of it.
  };
  [[nodiscard]] bool typesText(const Parts& object, const AtspiFacts& facts);
  [[nodiscard]] bool typeOver(const Parts& object, const std::string& text);
  [[nodiscard]] bool takesKeys(const Parts& object);
  [[nodiscard]] bool postPair(EventSource* source, Pid receiver, const InputEvent& down,
                              const InputEvent& up);
  [[nodiscard]] bool awaitFocus(const Parts& object);
  [[nodiscard]] std::optional<Content> contentOf(const Parts& object);
  [[nodiscard]] bool selectAll(const Parts& object, std::int32_t characters);
  [[nodiscard]] bool selects(const Parts& object, std::int32_t characters);
  [[nodiscard]] bool awaitContent(const Parts& object, const std::string& text,
                                  const Content& before);

  // Hit tests.
  [[nodiscard]] std::vector<Parts> hitCandidates(const LocatedWindow& window, Point point);
  [[nodiscard]] std::optional<AtspiRef> popupObject(const Parts& top, const LocatedWindow& popup,
                                                    Point point);
  [[nodiscard]] std::optional<AtspiRef> shownInPopup(const Parts& start, const LocatedWindow& popup,
                                                     Point point);
  [[nodiscard]] std::optional<AtspiRef> confirmedAt(const Parts& start, Point point);
  [[nodiscard]] bool liesAt(const Parts& start, const AtspiRef& ref, Point point);
  [[nodiscard]] std::optional<AtspiRef> deepestAt(const Parts& start, Point point);
  [[nodiscard]] std::optional<AtspiRef> childAt(const Parts& object, Point point);
  [[nodiscard]] std::optional<AtspiRef> placedChildAt(const Parts& object, Point point);

  AtspiEvents& events_;
  InputEvents* keyboard_;
  AtspiBus bus_;
  AtspiReader reader_;
  AtspiDebts debts_;
};

}  // namespace tarqo::lnx
