// The accessibility service over AT-SPI: hands every call to the collaborator that it belongs to.
//
// Worker thread only, but for what `Events` delivers. Nothing here ends the process or writes
// anywhere when the accessibility bus is missing or lost; the next call connects again.
#pragma once

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/accessibility.h"
#include "platform/input_events.h"
#include "platform/linux/atspi/actions.h"
#include "platform/linux/atspi/application_element.h"
#include "platform/linux/atspi/bare_windows.h"
#include "platform/linux/atspi/field_typing.h"
#include "platform/linux/atspi/hit_test.h"
#include "platform/linux/atspi/keyboard_focus.h"
#include "platform/linux/atspi/object_attributes.h"
#include "platform/linux/atspi/pending_actions.h"
#include "platform/linux/atspi/read/notifications.h"
#include "platform/linux/atspi/read/reader.h"
#include "platform/linux/atspi/tree_relations.h"
#include "platform/linux/atspi/wheel_steps.h"
#include "platform/linux/atspi/wire/object_handle.h"
#include "platform/linux/x11/pictured_popups.h"
#include "platform/linux/x11/window_locator.h"

namespace tarqo::lnx::atspi {

class LinuxAccessibility final : public Accessibility {
 public:
  /// All are kept and outlive this. Chromium takes text from the keyboard alone, so without one the
  /// values of its fields cannot be set. `popups` is told when they must be pictured.
  LinuxAccessibility(x11::WindowLocator& locator, Notifications& notifications, Clock& clock,
                     InputEvents* keyboard = nullptr, x11::PicturedPopups* popups = nullptr);

  Element application(Pid pid, Duration messagingTimeout) override;
  std::optional<Value> attribute(const Element& element, std::string_view name) override;
  std::vector<std::optional<Value>> attributes(const Element& element,
                                               std::span<const std::string_view> names) override;
  std::vector<std::string> actionNames(const Element& element) override;
  Performed perform(const Element& element, std::string_view action) override;
  bool isEndangeredByKeys(Pid pid) override;
  std::optional<Element> otherKeyWindow(const Element& window) override;
  bool set(const Element& element, std::string_view name, const Value& value) override;
  bool isSettable(const Element& element, std::string_view name) override;
  bool takesTextByKeys(const Element& element) override;
  std::optional<Size> wheelStep(const Element& element) override;
  std::optional<Element> elementAt(Point point) override;
  std::optional<Pid> pidOf(const Element& element) override;
  std::unique_ptr<Observer> observe(Pid pid, NotificationCallback callback) override;
  std::unique_ptr<TreeRead> readTree(const Element& root, const TreeReadLimits& limits) override;

 private:
  [[nodiscard]] static bool isApplication(const Element& element);
  /// Null for elements of any other kind.
  [[nodiscard]] static const ObjectHandle* bareWindowIn(const Element& element);

  /// What is known of an object; null for applications, bare windows and elements of another
  /// backend.
  [[nodiscard]] const ObjectHandle* beginCall(const Element& element);

  Notifications& notifications_;
  x11::PicturedPopups* popups_;
  Bus bus_;
  Reader reader_;
  PendingActions pending_;
  TreeRelations relations_;
  ApplicationElement application_;
  BareWindows bareWindows_;
  ObjectAttributes attributes_;
  HitTest hitTest_;
  KeyboardFocus focus_;
  FieldTyping typing_;
  Actions actions_;
  WheelSteps wheel_;
};

}  // namespace tarqo::lnx::atspi
