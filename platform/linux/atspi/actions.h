// What can be done with objects: their actions, and the attributes that can be set.
//
// Worker thread only.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/accessibility.h"
#include "platform/linux/atspi/field_typing.h"
#include "platform/linux/atspi/keyboard_focus.h"
#include "platform/linux/atspi/object_attributes.h"
#include "platform/linux/atspi/pending_actions.h"
#include "platform/linux/atspi/read/element.h"
#include "platform/linux/atspi/read/reader.h"

namespace tarqo::lnx {

class Actions {
 public:
  /// All are kept and outlive this.
  Actions(AtspiReader& reader, ObjectAttributes& attributes, AtspiDebts& debts,
          KeyboardFocus& focus, FieldTyping& typing)
      : reader_(reader), attributes_(attributes), debts_(debts), focus_(focus), typing_(typing) {}

  /// The names of the actions that an object offers; empty when it does not answer.
  [[nodiscard]] std::vector<std::string> namesOf(const AtspiElement::Parts& object);

  /// As `Accessibility::perform`, for an object.
  [[nodiscard]] Performed perform(const AtspiElement::Parts& object, std::string_view action);

  /// As `Accessibility::isSettable`, for an object.
  [[nodiscard]] bool isSettable(const AtspiElement::Parts& object, std::string_view name);

  /// As `Accessibility::set`, for an object.
  [[nodiscard]] bool set(const AtspiElement::Parts& object, std::string_view name,
                         const Value& value);

 private:
  using Parts = AtspiElement::Parts;

  [[nodiscard]] bool setText(const Parts& object, const std::string& text);
  [[nodiscard]] bool setNumber(const Parts& object, double number);
  [[nodiscard]] std::optional<WindowNumber> windowNumber(const Parts& window);

  AtspiReader& reader_;
  ObjectAttributes& attributes_;
  AtspiDebts& debts_;
  KeyboardFocus& focus_;
  FieldTyping& typing_;
};

}  // namespace tarqo::lnx
